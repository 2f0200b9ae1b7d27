#include "WindowPlacement.h"

#include <QCursor>
#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>
#include <QWindow>
#include <cmath>

namespace corvane {

std::optional<QPoint> centeredOrigin(QSize frameSize, QPoint pointer,
                                     const QList<ScreenArea>& screens, int primary)
{
    if (screens.isEmpty())
        return std::nullopt;
    const ScreenArea* target = nullptr;
    for (const ScreenArea& screen : screens) {
        if (screen.frame.contains(pointer)) { // left and top edges in, right and bottom out
            target = &screen;
            break;
        }
    }
    if (!target)
        target = &screens.at(primary >= 0 && primary < screens.size() ? primary : 0);
    const QRect& area = target->visible;
    return QPoint(
        static_cast<int>(std::lround(area.x() + area.width() / 2.0 - frameSize.width() / 2.0)),
        static_cast<int>(std::lround(area.y() + area.height() / 2.0 - frameSize.height() / 2.0)));
}

void fitToContent(QWindow& window, const QQuickItem* content)
{
    if (!content)
        return;
    const QSize fitting(static_cast<int>(std::ceil(content->implicitWidth())),
                        static_cast<int>(std::ceil(content->implicitHeight())));
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
    QList<ScreenArea> screens;
    const QList<QScreen*> all = QGuiApplication::screens();
    int primary = 0;
    for (QScreen* screen : all) {
        if (screen == QGuiApplication::primaryScreen())
            primary = static_cast<int>(screens.size());
        screens.append({screen->geometry(), screen->availableGeometry()});
    }
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
