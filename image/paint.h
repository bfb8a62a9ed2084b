// Runs of pixels of a result.
#pragma once

#include <cstdint>

#include "image/color.h"

namespace marbelot {

void fillPixels(PixelColor color, std::uint8_t* to, std::int64_t count);
// Pixels as they look on the colour.
void drawPixelsOver(PixelColor color, const std::uint8_t* from, std::uint8_t* to,
                    std::int64_t count);
// Black of these alpha levels.
void shadePixels(const std::uint8_t* levels, std::uint8_t* to, std::int64_t count);

}  // namespace marbelot
