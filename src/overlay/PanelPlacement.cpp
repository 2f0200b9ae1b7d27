#include "PanelPlacement.h"

#include "platform/InputMonitors.h"

#include <algorithm>

namespace corvane {

std::optional<QRectF> panelFrame(const QList<ScreenFrames>& screens, int mainScreen,
                                 QPointF pointer)
{
    if (screens.isEmpty())
        return std::nullopt;
    const auto under = std::find_if(screens.begin(), screens.end(), [&](const ScreenFrames& s) {
        return containsPoint(s.frame, pointer);
    });
    const ScreenFrames& screen = under != screens.end() ? *under
                                 : mainScreen >= 0 && mainScreen < screens.size()
                                     ? screens[mainScreen]
                                     : screens.first();
    // Centred in the visible frame, at most 940 × 640; no lower bound.
    const QRectF v = screen.visibleFrame;
    const qreal w = std::min(0.74 * v.width(), 940.0);
    const qreal h = std::min(0.78 * v.height(), 640.0);
    return QRectF(v.center().x() - w / 2, v.center().y() - h / 2, w, h);
}

} // namespace corvane
