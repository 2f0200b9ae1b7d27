#pragma once

// Corvane's windows on a Wayland session, where a client cannot place its own windows: the panel
// must float above the application, centred and undecorated, never tiled beside it. Each
// compositor family is asked in the way it offers, once when Corvane starts:
//   - sway (and i3-compatible wlroots compositors): window rules for Corvane's process over the
//     compositor's IPC socket ($SWAYSOCK): floating and centred, the panel without a border;
//   - KWin: a script of its own, loaded over the session bus, that centres each of Corvane's
//     windows on the screen of the window in front when it maps, and keeps the panel above
//     (left to itself KWin places a new window by its own policy, off centre over some
//     applications);
//   - any other (GNOME): nothing to ask; its windows float, the compositor places them and gives
//     a new one the keyboard.

#include <QString>

namespace corvane::WaylandWindows {

// The panel's title (PeekPanel), by which the compositors' rules tell it from Corvane's other
// windows.
inline constexpr char panelTitle[] = "Corvane";

// Asks the compositor to place the windows of process `pid`, Corvane's own, as above; logs what
// was done. Never waits for the compositor.
void arrange(qint64 pid);

// One IPC command to sway at `socketPath`; the reply's JSON, or an empty text when it failed.
QByteArray swayCommand(const QByteArray& socketPath, const QByteArray& command);

// Whether the compositor frames windows itself (KWin and sway offer it; GNOME Shell does not, and
// Corvane's windows then draw their own title bar). Asked on a connection of its own, once, as
// Corvane starts; true when there is no Wayland display to ask.
bool compositorDrawsFrames();

} // namespace corvane::WaylandWindows
