#pragma once

// A running application: its process id, application id, name and icon. Compared by process id
// only, so that a restarted application with the same id is another one.

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
