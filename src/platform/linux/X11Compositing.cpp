#include "X11Compositing.h"

#include <QGuiApplication>
#include <QWindow>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace corvane::X11Compositing {

namespace {

Display* display()
{
    const auto* x11 =
        qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->display() : nullptr;
}

} // namespace

bool isActive()
{
    Display* x = display();
    if (!x)
        return false;
    const QByteArray selection = "_NET_WM_CM_S" + QByteArray::number(DefaultScreen(x));
    return XGetSelectionOwner(x, XInternAtom(x, selection.constData(), False)) != None;
}

void requestBlurBehind(QWindow& window)
{
    Display* x = display();
    if (!x)
        return;
    XChangeProperty(x, Window(window.winId()),
                    XInternAtom(x, "_KDE_NET_WM_BLUR_BEHIND_REGION", False), XA_CARDINAL, 32,
                    PropModeReplace, nullptr, 0);
    XFlush(x);
}

} // namespace corvane::X11Compositing
