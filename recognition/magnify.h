// Enlarging a page smoothly.
#pragma once

#include "recognition/areas.h"
#include "recognition/prepared_page.h"

namespace marbelot {

struct Rows {
  int top, bottom;
};

// Cubically, by a factor that may also be a little below 1, with a blank margin of `margin` pixels
// of the result around it.
Page magnified(const Plane<std::uint8_t>& gray, Rows part, double scale, int margin);

}  // namespace marbelot
