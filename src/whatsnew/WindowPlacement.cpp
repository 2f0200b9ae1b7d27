#include "WindowPlacement.h"

#include <QCursor>
#include <QQuickItem>
#include <QWindow>
#include <cmath>

namespace corvane {

std::optional<QPoint> centeredOrigin(QSize frameSize, QPointF pointer,
                                     const QList<ScreenFrames>& screens, int primary)
{
    const ScreenFrames* target = screenUnderPointer(screens, primary, pointer);
    if (!target)
        return std::nullopt;
    const QRectF& area = target->visibleFrame;
    return QPoint(static_cast<int>(std::lround(area.center().x() - frameSize.width() / 2.0)),
                  static_cast<int>(std::lround(area.center().y() - frameSize.height() / 2.0)));
}

void fitToContent(QWindow& window, const QQuickItem* content)
{
    if (!content)
        return;
    // A title bar the window draws itself sits above the content.
    const qreal height = content->implicitHeight() + content->property("titleBarHeight").toReal();
    const QSize fitting(static_cast<int>(std::ceil(content->implicitWidth())),
                        static_cast<int>(std::ceil(height)));
    if (fitting.width() <= 1 || fitting.height() <= 1)
        return;
    // A window of fixed size: the content decides it.
    window.setMinimumSize(fitting);
    window.setMaximumSize(fitting);
    window.resize(fitting);
}

void centerOnActiveScreen(QWindow& window, const QQuickItem* content)
{
    fitToContent(window, content);
    int primary = -1;
    const QList<ScreenFrames> screens = currentScreens(&primary);
    // The window manager's frame is known once a window has been mapped; before that, the frame
    // of the last window placed stands in for it.
    static QMargins lastKnownMargins;
    QMargins margins = window.frameMargins();
    if (margins.isNull())
        margins = lastKnownMargins;
    else
        lastKnownMargins = margins;
    const QSize frameSize = window.size().grownBy(margins);
    if (const auto origin = centeredOrigin(frameSize, QCursor::pos(), screens, primary))
        // The client area's position: window managers (openbox among them) place a framed
        // window by it, whatever gravity the frame-inclusive position asks for.
        window.setPosition(*origin + QPoint(margins.left(), margins.top()));
}

} // namespace corvane
