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

// The rule chain, first hit wins; pure apart from reading /proc/PID/environ. `executable` is the
// process's program (the canonical path of /proc/PID/exe): of several desktop entries for one
// window class it picks the one that runs it, and when no window could be read (a lookup that
// missed under load) it names the application, so that a process on screen always has an id.
RunningApp resolve(qint64 pid, const std::optional<WindowHints>& window,
                   const DesktopEntries& entries, const QString& fallbackName = {},
                   const QString& executable = {});

// The canonical path of the process's program, or "" when it cannot be read.
QString executableOf(qint64 pid);
// How long ago the process started; absent when /proc does not say.
std::optional<double> secondsSinceStart(qint64 pid);

// The hints of the first top-level window (_NET_CLIENT_LIST) of the process, if the X server
// (DISPLAY) can be reached and has one.
std::optional<WindowHints> windowHints(qint64 pid);

// The process's top-level windows (_NET_CLIENT_LIST), in the window manager's order; none without
// an X server.
QList<quint32> topLevelWindows(qint64 pid);

// The applications with a window on screen, one per application id, by name; process `except`
// (Corvane) left out.
QList<RunningApp> runningApplications(qint64 except);
// The name and icon of an application id, from its desktop entry (the id itself when none).
RunningApp describe(const QString& appId);

inline RunningApp forProcess(qint64 pid, const QString& fallbackName = {})
{
    return resolve(pid, windowHints(pid), DesktopEntries::installed(), fallbackName,
                   executableOf(pid));
}

} // namespace corvane::AppIdentity
