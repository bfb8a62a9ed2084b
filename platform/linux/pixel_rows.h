// What codecs do to rows of pixels: red, green, blue and alpha, 8 bits each. `from` and `to` may be
// the same row.
#pragma once

#include <cstdint>

namespace marbelot {

// 16 bits to 8, to the nearest.
inline std::uint8_t to8(unsigned word) {
  return static_cast<std::uint8_t>((word * 255 + 32895) >> 16);
}

// Puts a full alpha behind each three bytes.
void addAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels);

// Multiplies the colours by alpha, to the nearest.
void premultiply(const std::uint8_t* from, std::uint8_t* to, int pixels);
// Divides them by it; a colour above its alpha, which nothing has, becomes full. Premultiplying
// what comes out gives what went in.
void unpremultiply(const std::uint8_t* from, std::uint8_t* to, int pixels);

// The same, in the obvious way.
void addAlphaSimply(const std::uint8_t* from, std::uint8_t* to, int pixels);
void premultiplySimply(const std::uint8_t* from, std::uint8_t* to, int pixels);
void unpremultiplySimply(const std::uint8_t* from, std::uint8_t* to, int pixels);

}  // namespace marbelot
