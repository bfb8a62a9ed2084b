#include "image/transpose.h"

#include <cstring>

#include "platform/fast_path.h"

namespace marbelot {
namespace {

using From = Rows<const std::uint8_t>;
using To = Rows<std::uint8_t>;

void transposePlain(From from, std::int64_t rows, std::int64_t columns, To to) {
  for (std::int64_t c = 0; c < columns; ++c) {
    for (std::int64_t r = 0; r < rows; ++r) {
      std::memcpy(to.first + c * to.step + 4 * r, from.first + r * from.step + 4 * c, 4);
    }
  }
}

#ifdef MARBELOT_AVX2
constexpr std::int64_t block = 16;  // pixels: a cache line

// Rows r and r + 4 of eight, four pixels of each.
MARBELOT_AVX2_INLINE __m256i halves(const std::uint8_t* from, std::ptrdiff_t step) {
  return _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 4 * step)), 1);
}

// Four columns of eight rows, as vectors.
MARBELOT_AVX2_INLINE void columnsOf(const std::uint8_t* from, std::ptrdiff_t step,
                                    __m256i* columns) {
  const __m256i row0 = halves(from, step), row1 = halves(from + step, step);
  const __m256i row2 = halves(from + 2 * step, step), row3 = halves(from + 3 * step, step);
  const __m256i low01 = _mm256_unpacklo_epi32(row0, row1),
                high01 = _mm256_unpackhi_epi32(row0, row1);
  const __m256i low23 = _mm256_unpacklo_epi32(row2, row3),
                high23 = _mm256_unpackhi_epi32(row2, row3);
  columns[0] = _mm256_unpacklo_epi64(low01, low23);
  columns[1] = _mm256_unpackhi_epi64(low01, low23);
  columns[2] = _mm256_unpacklo_epi64(high01, high23);
  columns[3] = _mm256_unpackhi_epi64(high01, high23);
}

// Whole lines go past the caches where they are lines of the cache.
template <bool streams>
MARBELOT_AVX2 void transposeBlock(From from, To to) {
  for (std::int64_t c = 0; c < block; c += 4) {
    __m256i left[4], right[4];
    columnsOf(from.first + 4 * c, from.step, left);
    columnsOf(from.first + 4 * c + 8 * from.step, from.step, right);
    for (int i = 0; i < 4; ++i) {
      auto* line = reinterpret_cast<__m256i*>(to.first + (c + i) * to.step);
      if (streams) {
        _mm256_stream_si256(line, left[i]);
        _mm256_stream_si256(line + 1, right[i]);
      } else {
        _mm256_storeu_si256(line, left[i]);
        _mm256_storeu_si256(line + 1, right[i]);
      }
    }
  }
}

MARBELOT_AVX2 void transposeFast(From from, std::int64_t rows, std::int64_t columns, To to) {
  const bool lines = reinterpret_cast<std::uintptr_t>(to.first) % 64 == 0 && to.step % 64 == 0;
  const auto transpose = lines ? transposeBlock<true> : transposeBlock<false>;
  const std::int64_t wholeRows = rows / block * block, wholeColumns = columns / block * block;
  for (std::int64_t r = 0; r < wholeRows; r += block) {
    for (std::int64_t c = 0; c < wholeColumns; c += block) {
      transpose({from.first + r * from.step + 4 * c, from.step},
                {to.first + c * to.step + 4 * r, to.step});
    }
  }
  transposePlain({from.first + wholeRows * from.step, from.step}, rows - wholeRows, columns,
                 {to.first + 4 * wholeRows, to.step});
  transposePlain({from.first + 4 * wholeColumns, from.step}, wholeRows, columns - wholeColumns,
                 {to.first + wholeColumns * to.step, to.step});
}
#endif

}  // namespace

void transposePixels(From from, std::int64_t rows, std::int64_t columns, To to) {
  MARBELOT_FASTEST(transposePlain, transposeFast)(from, rows, columns, to);
}

}  // namespace marbelot
