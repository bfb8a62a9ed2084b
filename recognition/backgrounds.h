// What text stands on. A screen is made of flat areas: pages, panels, buttons. Each glyph makes a
// hole in the area behind it, so an area with several holes is a background, whichever of the two
// is the brighter one.
#pragma once

#include <cstdint>

#include "platform/bitmap.h"
#include "recognition/areas.h"

namespace marbelot {

// How much each pixel differs from the background it stands on: 0 nothing, 255 as black and white.
// Transparent pictures are laid on the ground that what is drawn stands out from.
Plane<std::uint8_t> inkOf(const Bitmap& bitmap);

}  // namespace marbelot
