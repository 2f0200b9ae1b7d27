#include "PanelPlacement.h"

#include "platform/InputMonitors.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace corvane {

const ScreenFrames* screenUnderPointer(const QList<ScreenFrames>& screens, int mainScreen,
                                       QPointF pointer)
{
    if (screens.isEmpty())
        return nullptr;
    const auto under = std::find_if(screens.begin(), screens.end(), [&](const ScreenFrames& s) {
        return containsPoint(s.frame, pointer);
    });
    if (under != screens.end())
        return &*under;
    return mainScreen >= 0 && mainScreen < screens.size() ? &screens[mainScreen] : &screens.first();
}

QList<ScreenFrames> currentScreens(int* mainScreen)
{
    QList<ScreenFrames> frames;
    *mainScreen = -1;
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen == QGuiApplication::primaryScreen())
            *mainScreen = int(frames.size());
        frames.append({QRectF(screen->geometry()), QRectF(screen->availableGeometry())});
    }
    return frames;
}

std::optional<QRectF> panelFrame(const QList<ScreenFrames>& screens, int mainScreen,
                                 QPointF pointer)
{
    const ScreenFrames* under = screenUnderPointer(screens, mainScreen, pointer);
    if (!under)
        return std::nullopt;
    const ScreenFrames& screen = *under;
    // Centred in the visible frame, at most 940 × 640; no lower bound.
    const QRectF v = screen.visibleFrame;
    const qreal w = std::min(0.74 * v.width(), 940.0);
    const qreal h = std::min(0.78 * v.height(), 640.0);
    return QRectF(v.center().x() - w / 2, v.center().y() - h / 2, w, h);
}

} // namespace corvane
