// Arithmetic on premultiplied pixels.
#pragma once

#include <cstdint>

#include "platform/fast_path.h"

namespace marbelot {

// a * b / 255, rounded to the nearest; both at most 255.
constexpr std::uint8_t scaled(unsigned a, unsigned b) {
  const unsigned product = a * b + 128;
  return static_cast<std::uint8_t>((product + (product >> 8)) >> 8);
}

// At most 255, whatever a damaged picture holds.
constexpr std::uint8_t sum(unsigned a, unsigned b) {
  return static_cast<std::uint8_t>(a + b < 255 ? a + b : 255);
}

#ifdef MARBELOT_AVX2
// The alpha of each pixel in all of its channels.
MARBELOT_AVX2_INLINE __m256i alphaOfEach(__m256i pixels) {
  const __m256i alphas = _mm256_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15, 3,
                                          3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15);
  return _mm256_shuffle_epi8(pixels, alphas);
}

// `scaled` for every byte of `pixels` with the alpha of the pixel of `alphas` in the same place.
MARBELOT_AVX2_INLINE __m256i scaledByAlpha(__m256i pixels, __m256i alphas) {
  const __m256i zero = _mm256_setzero_si256(), half = _mm256_set1_epi16(128);
  const __m256i spread = alphaOfEach(alphas);
  __m256i low = _mm256_add_epi16(
      _mm256_mullo_epi16(_mm256_unpacklo_epi8(pixels, zero), _mm256_unpacklo_epi8(spread, zero)),
      half);
  __m256i high = _mm256_add_epi16(
      _mm256_mullo_epi16(_mm256_unpackhi_epi8(pixels, zero), _mm256_unpackhi_epi8(spread, zero)),
      half);
  low = _mm256_srli_epi16(_mm256_add_epi16(low, _mm256_srli_epi16(low, 8)), 8);
  high = _mm256_srli_epi16(_mm256_add_epi16(high, _mm256_srli_epi16(high, 8)), 8);
  return _mm256_packus_epi16(low, high);
}
#endif

}  // namespace marbelot
