// Byte scans at memory speed. Text in which nothing is to be found is all they ever look at.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/ascii.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace marbelot::detection {

struct DigitClass {
  static bool has(char c) { return isDigit(c); }
#ifdef __SSE2__
  static __m128i mask(__m128i bytes) {
    const __m128i value = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
    return _mm_cmpeq_epi8(_mm_min_epu8(value, _mm_set1_epi8(9)), value);
  }
#endif
};

struct LinkClass {
  static bool has(char c) { return c == '.' || c == ':' || c == '@'; }
#ifdef __SSE2__
  static __m128i mask(__m128i bytes) {
    return _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('.')),
                        _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(':')),
                                     _mm_cmpeq_epi8(bytes, _mm_set1_epi8('@'))));
  }
#endif
};

// The first byte of the class in [from, end), or `end`.
template <typename Class>
std::size_t findByte(std::string_view text, std::size_t from, std::size_t end) {
#ifdef __SSE2__
  while (end - from >= 16) {
    const auto* bytes = reinterpret_cast<const __m128i*>(text.data() + from);
    const auto hits = static_cast<unsigned>(_mm_movemask_epi8(Class::mask(_mm_loadu_si128(bytes))));
    if (hits != 0) return from + static_cast<std::size_t>(std::countr_zero(hits));
    from += 16;
  }
#endif
  while (from < end && !Class::has(text[from])) ++from;
  return from;
}

}  // namespace marbelot::detection
