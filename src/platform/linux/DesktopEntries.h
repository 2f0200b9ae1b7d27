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
    QString program; // the program its Exec line runs, as written there
};

class DesktopEntries {
public:
    static const DesktopEntries& installed();
    explicit DesktopEntries(const QStringList& folders);

    std::optional<DesktopEntry> byId(const QString& id) const;
    // StartupWMClass first, then the entry id, both case-insensitively. Of several entries that
    // claim the class (an editor and its client program, say), the one whose Exec runs
    // `executable` (the process's own, canonical path) wins; else the first by id.
    std::optional<DesktopEntry> byWindowClass(const QString& wmClass,
                                              const QString& executable = {}) const;
    // The entry whose Exec runs `executable`, if one does.
    std::optional<DesktopEntry> byExecutable(const QString& executable) const;

    // Whether `entry`'s Exec line runs the program at the canonical path `executable`.
    static bool runs(const DesktopEntry& entry, const QString& executable);

    // One entry's [Desktop Entry] group, with the Name for the current locale.
    static std::optional<DesktopEntry> read(const QString& path);

private:
    QHash<QString, DesktopEntry> m_byId;
    QStringList m_ids; // sorted: every search goes the same way on every start
};

} // namespace corvane
