#include "platform/linux/png_filters.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace marbelot {
namespace {

enum Filter { none, sub, up, average, paeth };

void addAbove(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) row[i] = static_cast<std::uint8_t>(row[i] + above[i]);
}

#if defined(__SSE2__)

// A pixel in a register; of one of three bytes the fourth is the next one's.
__m128i load(const std::uint8_t* from) {
  int value = 0;
  std::memcpy(&value, from, 4);
  return _mm_cvtsi32_si128(value);
}

void store(std::uint8_t* to, __m128i value, std::size_t bytes) {
  const int pixel = _mm_cvtsi128_si32(value);
  std::memcpy(to, &pixel, bytes);
}

// Replaces every pixel by step(pixel, place). Whole registers are written, also for pixels of three
// bytes, because that is several times faster: each pixel is read before its first byte is lost.
template <std::size_t pixel, class Step>
void forEachPixel(std::uint8_t* row, std::size_t bytes, Step step) {
  __m128i next = load(row);
  std::size_t i = 0;
  for (; i + pixel < bytes; i += pixel) {
    const __m128i now = next;
    next = load(row + i + pixel);
    store(row + i, step(now, i), 4);
  }
  store(row + i, step(next, i), pixel);
}

template <std::size_t pixel>
void undoSub(std::uint8_t* row, std::size_t bytes) {
  __m128i left = _mm_setzero_si128();
  forEachPixel<pixel>(row, bytes, [&](__m128i now, std::size_t) {
    left = _mm_add_epi8(left, now);
    return left;
  });
}

// Averages are rounded down, but the instruction rounds up: so of the complements.
template <std::size_t pixel>
void undoAverage(std::uint8_t* row, const std::uint8_t* aboveRow, std::size_t bytes) {
  const __m128i ones = _mm_set1_epi8(-1);
  __m128i left = ones;
  forEachPixel<pixel>(row, bytes, [&](__m128i now, std::size_t i) {
    left = _mm_sub_epi8(_mm_avg_epu8(left, _mm_xor_si128(load(aboveRow + i), ones)), now);
    return _mm_xor_si128(left, ones);
  });
}

// Bytes in lanes of 16 bits. The predictor is the smaller of left and above unless the larger
// exceeds 3 * corner - left - above, and the larger unless that exceeds the smaller, else the
// corner: so the corner and what is between, of which few steps wait for the pixel before.
__m128i paethStep(__m128i now, __m128i left, __m128i above, __m128i corner) {
  const __m128i corner3 = _mm_add_epi16(corner, _mm_add_epi16(corner, corner));
  const __m128i limit = _mm_sub_epi16(_mm_sub_epi16(corner3, left), above);
  const __m128i smaller = _mm_min_epi16(left, above);
  const __m128i larger = _mm_max_epi16(left, above);
  const __m128i toSmaller =
      _mm_andnot_si128(_mm_cmpgt_epi16(larger, limit), _mm_sub_epi8(smaller, corner));
  const __m128i toLarger =
      _mm_andnot_si128(_mm_cmpgt_epi16(limit, smaller), _mm_sub_epi8(larger, corner));
  return _mm_add_epi8(_mm_add_epi8(now, corner), _mm_add_epi8(toSmaller, toLarger));
}

__m128i widened(__m128i bytes) { return _mm_unpacklo_epi8(bytes, _mm_setzero_si128()); }

template <std::size_t pixel>
void undoPaeth(std::uint8_t* row, const std::uint8_t* aboveRow, std::size_t bytes) {
  __m128i left = _mm_setzero_si128();
  __m128i corner = left;
  forEachPixel<pixel>(row, bytes, [&](__m128i now, std::size_t i) {
    const __m128i above = widened(load(aboveRow + i));
    left = paethStep(widened(now), left, above, corner);
    corner = above;
    return _mm_packus_epi16(left, left);
  });
}

// Two rows in the two halves of a register, the lower row one pixel behind: what stands above its
// pixel is what the upper row has just become. Half the steps, as each waits for the one before.
template <std::size_t pixel>
void undoPaethTwice(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* aboveRow,
                    std::size_t bytes) {
  __m128i left = _mm_setzero_si128();
  __m128i above = left;
  __m128i now = widened(load(row));
  const auto step = [&](std::size_t i) {
    const __m128i corner = above;
    above = _mm_unpacklo_epi64(widened(load(aboveRow + i)), left);
    left = paethStep(now, left, above, corner);
    now = widened(_mm_unpacklo_epi32(load(row + i + pixel), load(below + i)));
    return _mm_packus_epi16(left, left);
  };
  const auto storeBelow = [below](std::size_t i, __m128i both, std::size_t count) {
    store(below + i, _mm_srli_si128(both, 4), count);
  };
  __m128i both = step(0);
  std::size_t i = pixel;
  for (; i < bytes; i += pixel) {
    store(row + i - pixel, both, 4);
    both = step(i);
    storeBelow(i - pixel, both, 4);
  }
  store(row + bytes - pixel, both, pixel);
  storeBelow(bytes - pixel, step(bytes), pixel);
}

template <std::size_t pixel>
bool unfilterQuickly(int filter, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
  switch (filter) {
    case sub:
      undoSub<pixel>(row, bytes);
      return true;
    case average:
      undoAverage<pixel>(row, above, bytes);
      return true;
    case paeth:
      undoPaeth<pixel>(row, above, bytes);
      return true;
    default:
      return false;
  }
}

#endif

}  // namespace

bool unfilterSimply(int filter, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                    std::size_t pixel) {
  for (std::size_t i = 0; i < bytes; ++i) {
    const int left = i < pixel ? 0 : row[i - pixel];
    const int corner = i < pixel ? 0 : above[i - pixel];
    int guess = 0;
    switch (filter) {
      case none:
        return true;
      case sub:
        guess = left;
        break;
      case up:
        guess = above[i];
        break;
      case average:
        guess = (left + above[i]) / 2;
        break;
      case paeth:
        guess = paethPredictor(left, above[i], corner);
        break;
      default:
        return false;
    }
    row[i] = static_cast<std::uint8_t>(row[i] + guess);
  }
  return true;
}

#if defined(__SSE2__)
bool unfilterTwo(int filter, int filterBelow, std::uint8_t* row, std::uint8_t* below,
                 const std::uint8_t* above, std::size_t bytes, std::size_t pixel) {
  if (filter != paeth || filterBelow != paeth || (pixel != 3 && pixel != 4)) return false;
  pixel == 3 ? undoPaethTwice<3>(row, below, above, bytes)
             : undoPaethTwice<4>(row, below, above, bytes);
  return true;
}
#else
bool unfilterTwo(int, int, std::uint8_t*, std::uint8_t*, const std::uint8_t*, std::size_t,
                 std::size_t) {
  return false;
}
#endif

bool unfilter(int filter, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
              std::size_t pixel) {
  if (filter == none) return true;
  if (filter == up) {
    addAbove(row, above, bytes);
    return true;
  }
#if defined(__SSE2__)
  if (pixel == 3 && unfilterQuickly<3>(filter, row, above, bytes)) return true;
  if (pixel == 4 && unfilterQuickly<4>(filter, row, above, bytes)) return true;
#endif
  return unfilterSimply(filter, row, above, bytes, pixel);
}

}  // namespace marbelot
