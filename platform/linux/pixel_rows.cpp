#include "platform/linux/pixel_rows.h"

#include <algorithm>
#include <array>
#include <cstring>

#if defined(__SSE2__)
#include <tmmintrin.h>
#endif

namespace marbelot {

void premultiplySimply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x, from += 4, to += 4) {
    const unsigned alpha = from[3];
    for (int channel = 0; channel < 3; ++channel)
      to[channel] = static_cast<std::uint8_t>((from[channel] * alpha + 127) / 255);
    to[3] = from[3];
  }
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

void addAlphaSimply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x, from += 3, to += 4) {
    std::memcpy(to, from, 3);
    to[3] = 255;
  }
}

#if defined(__SSE2__)

namespace {

// Four pixels at a time, where the processor can shuffle bytes: all of the last fifteen years.
__attribute__((target("ssse3"))) int addAlphaByShuffling(const std::uint8_t* from, std::uint8_t* to,
                                                         int pixels) {
  const __m128i places = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000));
  int x = 0;
  for (; x + 6 <= pixels; x += 4) {  // sixteen bytes are read for twelve
    const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 3 * x));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 4 * x),
                     _mm_or_si128(_mm_shuffle_epi8(four, places), opaque));
  }
  return x;
}

// Two pixels in words: each colour times its alpha and alpha times 255, divided by 255.
__m128i premultiplied(__m128i pixels) {
  const __m128i alphaLanes = _mm_set_epi16(-1, 0, 0, 0, -1, 0, 0, 0);
  const __m128i full = _mm_set_epi16(255, 0, 0, 0, 255, 0, 0, 0);
  __m128i alpha = _mm_shufflelo_epi16(pixels, _MM_SHUFFLE(3, 3, 3, 3));
  alpha = _mm_shufflehi_epi16(alpha, _MM_SHUFFLE(3, 3, 3, 3));
  const __m128i factors = _mm_or_si128(_mm_andnot_si128(alphaLanes, alpha), full);
  const __m128i product = _mm_add_epi16(_mm_mullo_epi16(pixels, factors), _mm_set1_epi16(128));
  return _mm_srli_epi16(_mm_add_epi16(product, _mm_srli_epi16(product, 8)), 8);
}

// 255 / alpha for the colours, 1 for alpha itself.
struct alignas(16) Factors {
  float colors[3];
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

}  // namespace

void addAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  const int x = __builtin_cpu_supports("ssse3") ? addAlphaByShuffling(from, to, pixels) : 0;
  addAlphaSimply(from + 3 * x, to + 4 * x, pixels - x);
}

void premultiply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  const __m128i zero = _mm_setzero_si128();
  int x = 0;
  for (; x + 4 <= pixels; x += 4) {
    const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 4 * x));
    const __m128i low = premultiplied(_mm_unpacklo_epi8(four, zero));
    const __m128i high = premultiplied(_mm_unpackhi_epi8(four, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 4 * x), _mm_packus_epi16(low, high));
  }
  premultiplySimply(from + 4 * x, to + 4 * x, pixels - x);
}

void unpremultiply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  const __m128i zero = _mm_setzero_si128();
  // A half for rounding, and more than the factors' error; less than what a quotient can lack.
  const __m128 rounding = _mm_set1_ps(0.501F);
  for (int x = 0; x < pixels; ++x) {
    int pixel = 0;
    std::memcpy(&pixel, from + 4 * x, 4);
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(pixel), zero);
    const __m128 values = _mm_cvtepi32_ps(_mm_unpacklo_epi16(words, zero));
    const __m128 factors = _mm_load_ps(factorsOf[from[4 * x + 3]].colors);
    const __m128i quotients = _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(values, factors), rounding));
    const __m128i packed = _mm_packs_epi32(quotients, quotients);
    pixel = _mm_cvtsi128_si32(_mm_packus_epi16(packed, packed));
    std::memcpy(to + 4 * x, &pixel, 4);
  }
}

#else

void addAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  addAlphaSimply(from, to, pixels);
}

void premultiply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  premultiplySimply(from, to, pixels);
}

void unpremultiply(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  unpremultiplySimply(from, to, pixels);
}

#endif

}  // namespace marbelot
