#pragma once

// A running application as PLATFORM.md defines it (the spec's NSRunningApplication): compared
// by process id only.

#include <QString>
#include <optional>

namespace corvane {

struct RunningApp {
    qint64 pid = 0;
    std::optional<QString> appId; // the freedesktop desktop-entry id without ".desktop"
    QString name;                 // the localised name, or the WM_CLASS class
    QString iconName;             // an icon-theme name, or empty

    bool isSameProcess(const RunningApp& other) const { return pid == other.pid; }
};

} // namespace corvane
