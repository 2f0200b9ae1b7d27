#include "PeekPanel.h"

#include "platform/linux/WaylandWindows.h"

#include <QGuiApplication>
#include <QPainterPath>
#include <QRegion>
#include <xcb/xcb.h>

namespace corvane {

PeekPanel::PeekPanel(bool translucent)
    : m_translucent(translucent), m_wayland(QGuiApplication::platformName() == u"wayland")
{
    // On X11 the panel is not the window manager's (override-redirect, as a pop-up menu is): it
    // is placed and raised here, never enters the taskbar, and no window manager can activate
    // it. A managed one was activated by KWin on the focus change a keyboard grab makes, taking
    // _NET_ACTIVE_WINDOW from the application in front. On Wayland the compositor decides; a
    // panel that refused focus there would never hear the trigger's release.
    setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
             (m_wayland ? Qt::WindowFlags()
                        : Qt::WindowDoesNotAcceptFocus | Qt::BypassWindowManagerHint));
    // A transparent colour asks for an alpha channel (an ARGB visual): the rounded card drawn by
    // the root view is then the only shape. An opaque window skips clearing to transparent on
    // every frame; the root view gives it the card's colour (OverlayRoot.qml).
    if (translucent)
        setColor(Qt::transparent);
    setGeometry(0, 0, 900, 600); // replaced by placement before the first display
    setTitle(QString::fromLatin1(WaylandWindows::panelTitle));
}

void PeekPanel::showNow()
{
    show();
    raise();
    // Qt's offscreen platform answers the X11 interface too, with no connection.
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (xcb_connection_t* connection = x11 ? x11->connection() : nullptr)
        xcb_flush(connection);
}

void PeekPanel::cutToCard()
{
    // Asked on every presentation; the X server (and the window manager, which may redraw on
    // a shape change) hears of the mask only when it changes.
    if (m_translucent || m_cutSize == size())
        return;
    m_cutSize = size();
    QPainterPath card;
    card.addRoundedRect(QRectF(QPointF(0, 0), size()), cornerRadius, cornerRadius);
    setMask(QRegion(card.toFillPolygon().toPolygon()));
}

bool PeekPanel::event(QEvent* event)
{
    if (event->type() == QEvent::Enter)
        m_hovered = true;
    else if (event->type() == QEvent::Leave || event->type() == QEvent::Hide)
        m_hovered = false;
    return QQuickWindow::event(event);
}

bool PeekPanel::takeKeyboard(bool take)
{
    if (m_wayland) {
        m_hasKeyboard = take && isExposed();
        if (m_hasKeyboard)
            requestActivate();
        return m_hasKeyboard;
    }
    if (!take) {
        if (m_hasKeyboard)
            setKeyboardGrabEnabled(false);
        m_hasKeyboard = false;
        setFlag(Qt::WindowDoesNotAcceptFocus, true);
        return false;
    }
    // A keyboard grab needs a mapped window.
    if (!isExposed())
        return false;
    setFlag(Qt::WindowDoesNotAcceptFocus, false);
    m_hasKeyboard = m_hasKeyboard || setKeyboardGrabEnabled(true);
    return m_hasKeyboard;
}

} // namespace corvane
