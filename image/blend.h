// Arithmetic on premultiplied pixels.
#pragma once

#include <cstdint>

namespace marbelot {

// a * b / 255, rounded to the nearest; both at most 255.
constexpr std::uint8_t scaled(unsigned a, unsigned b) {
  const unsigned product = a * b + 128;
  return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

}  // namespace marbelot
