#pragma once

// Part 5.2's `place()` rule as a pure function: which screen, and the panel's frame on it.

#include <QList>
#include <QPointF>
#include <QRectF>
#include <optional>

namespace corvane {

struct ScreenFrames {
    QRectF frame;        // the whole screen
    QRectF visibleFrame; // without panels and docks (Qt's available geometry)
};

// The frame for a pointer at `pointer`: on the first screen whose frame holds the pointer (a
// point on the right or bottom edge is outside), else on the main screen (`mainScreen`, an index
// or -1), else on the first; none when there are no screens.
std::optional<QRectF> panelFrame(const QList<ScreenFrames>& screens, int mainScreen,
                                 QPointF pointer);

} // namespace corvane
