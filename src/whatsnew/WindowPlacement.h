#pragma once

// centerOnActiveScreen(): a secondary window takes the size its content asks for and is centred in
// the available area of the screen under the pointer.

#include "overlay/PanelPlacement.h"

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <optional>

class QQuickItem;
class QWindow;

namespace corvane {

// Step 1: fixes `window`'s size to `content`'s implicit size when both sides exceed 1 point.
void fitToContent(QWindow& window, const QQuickItem* content);

// Sizes `window` to `content`'s implicit size (when both sides exceed 1) and centres it on the
// screen under the pointer; with no screen at all it stays where it is.
void centerOnActiveScreen(QWindow& window, const QQuickItem* content);

// Step 3 and 4 for any screens: the origin that centres a frame of `frameSize` in the visible
// area of the screen under `pointer` (screenUnderPointer(), shared with the overlay); absent
// when there is no screen.
std::optional<QPoint> centeredOrigin(QSize frameSize, QPointF pointer,
                                     const QList<ScreenFrames>& screens, int primary);

} // namespace corvane
