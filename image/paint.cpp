#include "image/paint.h"

#include <cstring>

#include "platform/blend.h"
#include "platform/fast_path.h"

namespace marbelot {
namespace {

void fillPlain(PixelColor color, std::uint8_t* to, std::int64_t count) {
  for (; count > 0; --count, to += 4) {
    to[0] = color.red;
    to[1] = color.green;
    to[2] = color.blue;
    to[3] = 255;
  }
}

// Pixels as they look on the colour.
void drawOverPlain(PixelColor color, const std::uint8_t* from, std::uint8_t* to,
                   std::int64_t count) {
  for (; count > 0; --count, from += 4, to += 4) {
    const unsigned showing = 255u - from[3];
    to[0] = sum(from[0], scaled(color.red, showing));
    to[1] = sum(from[1], scaled(color.green, showing));
    to[2] = sum(from[2], scaled(color.blue, showing));
    to[3] = 255;
  }
}

void shadePlain(const std::uint8_t* levels, std::uint8_t* to, std::int64_t count) {
  for (; count > 0; --count, to += 4) {
    to[0] = to[1] = to[2] = 0;
    to[3] = *levels++;
  }
}

#ifdef MARBELOT_AVX2
MARBELOT_AVX2_INLINE __m256i spread(PixelColor color) {
  const std::uint8_t bytes[] = {color.red, color.green, color.blue, 255};
  int pixel = 0;
  std::memcpy(&pixel, bytes, 4);
  return _mm256_set1_epi32(pixel);
}

struct Filled {
  __m256i color;
  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t) const { return color; }
};

MARBELOT_AVX2 void fillFast(PixelColor color, std::uint8_t* to, std::int64_t count) {
  if (count < vectorPixels) return fillPlain(color, to, count);
  streamPixels(to, count, Filled{spread(color)});
}

struct DrawnOver {
  __m256i color;
  const std::uint8_t* from;

  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const {
    const __m256i pixels = loadPixels(from + 4 * i);
    const __m256i opaque = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    if (_mm256_testc_si256(pixels, opaque)) return pixels;
    return _mm256_adds_epu8(pixels, scaledByAlpha(color, _mm256_xor_si256(pixels, opaque)));
  }
};

MARBELOT_AVX2 void drawOverFast(PixelColor color, const std::uint8_t* from, std::uint8_t* to,
                                std::int64_t count) {
  if (count < vectorPixels) return drawOverPlain(color, from, to, count);
  streamPixels(to, count, DrawnOver{spread(color), from});
}

struct Shaded {
  const std::uint8_t* levels;
  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const {
    const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(levels + i));
    return _mm256_slli_epi32(_mm256_cvtepu8_epi32(eight), 24);
  }
};

MARBELOT_AVX2 void shadeFast(const std::uint8_t* levels, std::uint8_t* to, std::int64_t count) {
  if (count < vectorPixels) return shadePlain(levels, to, count);
  streamPixels(to, count, Shaded{levels});
}
#endif

}  // namespace

void fillPixels(PixelColor color, std::uint8_t* to, std::int64_t count) {
  MARBELOT_FASTEST(fillPlain, fillFast)(color, to, count);
}

void drawPixelsOver(PixelColor color, const std::uint8_t* from, std::uint8_t* to,
                    std::int64_t count) {
  MARBELOT_FASTEST(drawOverPlain, drawOverFast)(color, from, to, count);
}

void shadePixels(const std::uint8_t* levels, std::uint8_t* to, std::int64_t count) {
  MARBELOT_FASTEST(shadePlain, shadeFast)(levels, to, count);
}

}  // namespace marbelot
