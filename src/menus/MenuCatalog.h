#pragma once

// The crawled-menu records: plain values with memberwise equality, the command's identity (`id`)
// and its derived `titles` and `breadcrumb`.

#include <QList>
#include <QString>
#include <QStringList>

namespace corvane {

// Unicode canonical equivalence: a title typed as "é" or as "e" + U+0301 is the same title.
bool canonicallyEqual(const QString& a, const QString& b);

struct PathStep {
    QString title;      // exactly as the application reported it; never empty
    int occurrence = 0; // rank among earlier siblings with an equal title

    friend bool operator==(const PathStep& a, const PathStep& b)
    {
        return a.occurrence == b.occurrence && canonicallyEqual(a.title, b.title);
    }
};

struct ShortcutKeys {
    QStringList modifiers; // in display order
    QString key;           // empty: no shortcut

    static const ShortcutKeys none;

    friend bool operator==(const ShortcutKeys& a, const ShortcutKeys& b);
};

struct MenuCommand {
    QList<PathStep> path;
    ShortcutKeys shortcut;
    bool enabled = true;
    bool isChecked = false;

    // Titles joined by U+001F, each followed by "#n" when its occurrence n is 1 or more.
    QString id() const;
    QStringList titles() const;
    // The titles between the top-level menu and the item, joined by " ▸ ".
    QString breadcrumb() const;

    friend bool operator==(const MenuCommand& a, const MenuCommand& b) = default;
};

struct MenuSection {
    QString title;
    QList<MenuCommand> commands;

    friend bool operator==(const MenuSection& a, const MenuSection& b)
    {
        return canonicallyEqual(a.title, b.title) && a.commands == b.commands;
    }
};

struct MenuCatalog {
    QString bundleID;
    QString appName;
    QList<MenuSection> sections;

    friend bool operator==(const MenuCatalog& a, const MenuCatalog& b)
    {
        return canonicallyEqual(a.bundleID, b.bundleID) && canonicallyEqual(a.appName, b.appName) &&
               a.sections == b.sections;
    }
};

// A path written by a user: each title as it stands, or "TITLE#N" for occurrence N.
QList<PathStep> pathFromTitles(const QStringList& titles);

inline constexpr QChar idSeparator = QChar(0x1F);
inline constexpr auto breadcrumbSeparator = u" \u25B8 ";

} // namespace corvane
