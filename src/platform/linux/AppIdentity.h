#pragma once

// The identity of a running application: its application id, name and icon, resolved from its X
// windows, its environment and the desktop entries.

#include "DesktopEntries.h"
#include "platform/RunningApp.h"

namespace corvane::AppIdentity {

// What the X server says about one top-level window.
struct WindowHints {
    QString gtkApplicationId; // _GTK_APPLICATION_ID
    QString kdeDesktopFile;   // _KDE_NET_WM_DESKTOP_FILE
    QString wmClass;          // the class part of WM_CLASS
};

// The rule chain, first hit wins; pure apart from reading /proc/PID/environ.
RunningApp resolve(qint64 pid, const std::optional<WindowHints>& window,
                   const DesktopEntries& entries, const QString& fallbackName = {});

// The hints of the first top-level window (_NET_CLIENT_LIST) of the process, if the X server
// (DISPLAY) can be reached and has one.
std::optional<WindowHints> windowHints(qint64 pid);

inline RunningApp forProcess(qint64 pid, const QString& fallbackName = {})
{
    return resolve(pid, windowHints(pid), DesktopEntries::installed(), fallbackName);
}

} // namespace corvane::AppIdentity
