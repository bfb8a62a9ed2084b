// What codecs do to rows of pixels: red, green, blue and alpha, 8 bits each. `from` and `to` do not
// overlap.
#pragma once

#include <cstdint>

namespace marbelot {

// 16 bits to 8, to the nearest.
inline std::uint8_t to8(unsigned word) {
  return static_cast<std::uint8_t>((word * 255 + 32895) >> 16);
}

// To rows of a bitmap, which are not looked at soon: finishStreaming() when all are done.
// Puts a full alpha behind each three bytes.
void addAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels);
// Multiplies the colours by alpha, to the nearest.
void premultiply(const std::uint8_t* from, std::uint8_t* to, int pixels);

// From rows of a bitmap.
// Leaves out every fourth byte. Writes one byte past the last pixel.
void dropAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels);
// Divides the colours by alpha; a colour above its alpha, which nothing has, becomes full.
// Premultiplying what comes out gives what went in.
void unpremultiply(const std::uint8_t* from, std::uint8_t* to, int pixels);

// The same, in the obvious way.
void addAlphaSimply(const std::uint8_t* from, std::uint8_t* to, int pixels);
void premultiplySimply(const std::uint8_t* from, std::uint8_t* to, int pixels);
void dropAlphaSimply(const std::uint8_t* from, std::uint8_t* to, int pixels);
void unpremultiplySimply(const std::uint8_t* from, std::uint8_t* to, int pixels);

}  // namespace marbelot
