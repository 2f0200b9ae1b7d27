#pragma once

// The light and dark palettes of the previews and screenshots: the desktop's palette is what
// Corvane really uses; these stand in for a light and a dark desktop where there is none.

#include <QPalette>

namespace corvane {

QPalette previewPalette(bool dark);

} // namespace corvane
