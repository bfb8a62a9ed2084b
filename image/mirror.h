#pragma once

#include <cstdint>

namespace marbelot {

// Copies a row of pixels with left and right exchanged.
void mirrorPixels(const std::uint8_t* from, std::uint8_t* to, std::int64_t count);

}  // namespace marbelot
