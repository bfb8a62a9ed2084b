#include "platform/linux/pixel_rows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/blend.h"
#include "platform/fast_path.h"

namespace marbelot {

void addAlphaSimply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x, from += 3, to += 4) {
    std::memcpy(to, from, 3);
    to[3] = 255;
  }
}

void premultiplySimply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x, from += 4, to += 4) {
    for (int channel = 0; channel < 3; ++channel) to[channel] = scaled(from[channel], from[3]);
    to[3] = from[3];
  }
}

void dropAlphaSimply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x) std::memcpy(to + 3 * x, from + 4 * x, 4);
}

void unpremultiplySimply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x, from += 4, to += 4) {
    const unsigned alpha = from[3];
    for (int channel = 0; channel < 3; ++channel) {
      to[channel] = static_cast<std::uint8_t>(
          alpha == 0 ? 0
                     : (2 * 255 * std::min<unsigned>(from[channel], alpha) + alpha) / (2 * alpha));
    }
    to[3] = from[3];
  }
}

#ifdef MARBELOT_AVX2
namespace {

MARBELOT_AVX2_INLINE __m256i opaque() { return _mm256_set1_epi32(static_cast<int>(0xFF000000u)); }

struct AlphaAdded {
  const std::uint8_t* from;

  // Of 24 bytes the first and the last sixteen.
  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const {
    const auto* eight = reinterpret_cast<const __m128i*>(from + 3 * i);
    const auto* lastFour = reinterpret_cast<const __m128i*>(from + 3 * i + 8);
    const __m256i colors = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(eight)),
                                                   _mm_loadu_si128(lastFour), 1);
    const __m256i places = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, 4,
                                            5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1);
    return _mm256_or_si256(_mm256_shuffle_epi8(colors, places), opaque());
  }
};

MARBELOT_AVX2 void addAlphaFast(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  if (pixels < vectorPixels) return addAlphaSimply(from, to, pixels);
  streamPixels(to, pixels, AlphaAdded{from});
}

struct Premultiplied {
  const std::uint8_t* from;

  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const {
    const __m256i pixels = loadPixels(from + 4 * i);
    if (_mm256_testc_si256(pixels, opaque())) return pixels;
    return scaledByAlpha(_mm256_or_si256(pixels, opaque()), pixels);
  }
};

MARBELOT_AVX2 void premultiplyFast(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  if (pixels < vectorPixels) return premultiplySimply(from, to, pixels);
  streamPixels(to, pixels, Premultiplied{from});
}

// Eight pixels at a time, of which the last four are written past the next eight's place.
MARBELOT_AVX2 void dropAlphaFast(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  const __m256i places = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0,
                                          1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  int x = 0;
  for (; x + 10 <= pixels; x += 8) {
    const __m256i colors = _mm256_shuffle_epi8(loadPixels(from + 4 * x), places);
    auto* const eight = reinterpret_cast<__m128i*>(to + 3 * x);
    auto* const lastFour = reinterpret_cast<__m128i*>(to + 3 * x + 12);
    _mm_storeu_si128(eight, _mm256_castsi256_si128(colors));
    _mm_storeu_si128(lastFour, _mm256_extracti128_si256(colors, 1));
  }
  dropAlphaSimply(from + 4 * x, to + 3 * x, pixels - x);
}

// 255 / alpha for the colours, 1 for alpha itself.
struct alignas(16) Factors {
  std::array<float, 3> colors;
  float alpha;
};
constexpr std::array<Factors, 256> factorsOf = [] {
  std::array<Factors, 256> factors{};
  for (int alpha = 0; alpha < 256; ++alpha) {
    const float factor = alpha == 0 ? 0 : 255.0F / static_cast<float>(alpha);
    factors[static_cast<std::size_t>(alpha)] = {{factor, factor, factor}, 1};
  }
  return factors;
}();

struct Unpremultiplied {
  const std::uint8_t* from;

  MARBELOT_AVX2_INLINE __m256i two(const std::uint8_t* pixels) const {
    // A half for rounding, and more than the factors' error; less than what a quotient can lack.
    const __m256 rounding = _mm256_set1_ps(0.501F);
    const __m256 values = _mm256_cvtepi32_ps(
        _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixels))));
    const __m256 factors = _mm256_set_m128(_mm_load_ps(factorsOf[pixels[7]].colors.data()),
                                           _mm_load_ps(factorsOf[pixels[3]].colors.data()));
    return _mm256_cvttps_epi32(_mm256_add_ps(_mm256_mul_ps(values, factors), rounding));
  }

  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const {
    const __m256i pixels = loadPixels(from + 4 * i);
    if (_mm256_testc_si256(pixels, opaque())) return pixels;
    const std::uint8_t* const eight = from + 4 * i;
    const __m256i byTurns =
        _mm256_packus_epi16(_mm256_packs_epi32(two(eight), two(eight + 8)),
                            _mm256_packs_epi32(two(eight + 16), two(eight + 24)));
    return _mm256_permutevar8x32_epi32(byTurns, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
  }
};

MARBELOT_AVX2 void unpremultiplyFast(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  if (pixels < vectorPixels) return unpremultiplySimply(from, to, pixels);
  writePixels(to, 0, pixels, Unpremultiplied{from});
}

}  // namespace
#endif

void addAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  MARBELOT_FASTEST(addAlphaSimply, addAlphaFast)(from, to, pixels);
}

void premultiply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  MARBELOT_FASTEST(premultiplySimply, premultiplyFast)(from, to, pixels);
}

void dropAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  MARBELOT_FASTEST(dropAlphaSimply, dropAlphaFast)(from, to, pixels);
}

void unpremultiply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  MARBELOT_FASTEST(unpremultiplySimply, unpremultiplyFast)(from, to, pixels);
}

}  // namespace marbelot
