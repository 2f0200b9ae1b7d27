#pragma once

// Corvane's windows on a Wayland session, where a client cannot place its own windows: the panel
// must float above the application, centred and undecorated, never tiled beside it. Each
// compositor family is asked in the way it offers, once when Corvane starts:
//   - sway (and i3-compatible wlroots compositors): a window rule for Corvane's process over the
//     compositor's IPC socket ($SWAYSOCK): floating, no border, centred;
//   - any other (GNOME, KDE Plasma): nothing to ask; their windows float, the compositor places
//     them and gives a new one the keyboard.

#include <QString>

namespace corvane::WaylandWindows {

// Asks the compositor to float the windows of process `pid`; returns a line for the log saying
// what was done.
QString keepFloating(qint64 pid);

// One IPC command to sway at `socketPath`; the reply's JSON, or an empty text when it failed.
QByteArray swayCommand(const QByteArray& socketPath, const QByteArray& command);

} // namespace corvane::WaylandWindows
