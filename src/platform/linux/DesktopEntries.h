#pragma once

// The installed freedesktop desktop entries: application ids, localised names, icons and
// StartupWMClass, read from $XDG_DATA_HOME and $XDG_DATA_DIRS "applications" folders.

#include <QHash>
#include <QString>
#include <optional>

namespace corvane {

struct DesktopEntry {
    QString id; // file name without ".desktop"
    QString name;
    QString icon;
    QString startupWMClass;
};

class DesktopEntries {
public:
    static const DesktopEntries& installed();
    explicit DesktopEntries(const QStringList& folders);

    std::optional<DesktopEntry> byId(const QString& id) const;
    // StartupWMClass first, then the entry id, both case-insensitively.
    std::optional<DesktopEntry> byWindowClass(const QString& wmClass) const;

    // One entry's [Desktop Entry] group, with the Name for the current locale.
    static std::optional<DesktopEntry> read(const QString& path);

private:
    QHash<QString, DesktopEntry> m_byId;
};

} // namespace corvane
