#pragma once

// The panel's glass: the card is translucent only where a compositor draws transparency (an owner
// of the _NET_WM_CM_Sn selection), with the blur-behind hint _KDE_NET_WM_BLUR_BEHIND_REGION for
// window managers that honour it. Main thread; uses the X connection of the Qt application.

class QWindow;

namespace corvane::X11Compositing {

// A compositing manager runs on the default screen now.
bool isActive();
// Asks for the whole window to be blurred behind (an empty region means the whole window).
void requestBlurBehind(QWindow& window);

} // namespace corvane::X11Compositing
