#pragma once

// The panel's placement as a pure function: which screen, and the panel's frame on it. The screen
// rule is shared with the secondary windows' centerOnActiveScreen().

#include <QList>
#include <QPointF>
#include <QRectF>
#include <optional>

namespace corvane {

struct ScreenFrames {
    QRectF frame;        // the whole screen
    QRectF visibleFrame; // without panels and docks (Qt's available geometry)
};

// The screen under `pointer`: the first whose frame holds the pointer (a point on the right or
// bottom edge is outside), else the main screen (`mainScreen`, an index or -1), else the first;
// null when there are no screens. The overlay and the secondary windows both use it.
const ScreenFrames* screenUnderPointer(const QList<ScreenFrames>& screens, int mainScreen,
                                       QPointF pointer);

// The screens as the platform has them now; `mainScreen` gets the primary one's index (-1: none).
QList<ScreenFrames> currentScreens(int* mainScreen);

// The panel's frame for a pointer at `pointer`, on screenUnderPointer(); none when there are no
// screens.
std::optional<QRectF> panelFrame(const QList<ScreenFrames>& screens, int mainScreen,
                                 QPointF pointer);

} // namespace corvane
