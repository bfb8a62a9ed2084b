// The choice between an operation's plain code and the same for processors with AVX2. Both give the
// same bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
// Functions that only a fast path calls.
#define MARBELOT_AVX2 [[gnu::target("avx2")]]
#define MARBELOT_AVX2_INLINE [[gnu::target("avx2"), gnu::always_inline]] inline
#define MARBELOT_FASTEST(plain, fast) (marbelot::usesFastPath() ? (fast) : (plain))
#else
#define MARBELOT_FASTEST(plain, fast) (plain)
#endif

namespace marbelot {

// Whether the processor has what the fast paths need.
bool usesFastPath();

// Lets tests compare: all code is plain while there is one of these.
class PlainPathOnly {
 public:
  PlainPathOnly();
  ~PlainPathOnly();
  PlainPathOnly(const PlainPathOnly&) = delete;
  PlainPathOnly& operator=(const PlainPathOnly&) = delete;
};

// Fast paths write results past the caches, and processors may be late to show other threads what
// was written so: every operation calls this before it hands out its result.
void finishStreaming();

// Copies pixels to a result, which is not looked at soon.
void copyPixels(const std::uint8_t* from, std::uint8_t* to, std::int64_t count);

#if defined(__x86_64__)
inline constexpr std::int64_t vectorPixels = 8;

MARBELOT_AVX2_INLINE __m256i loadPixels(const std::uint8_t* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

MARBELOT_AVX2_INLINE void storePixels(std::uint8_t* to, __m256i pixels) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), pixels);
}

// Writes the pixels from `begin` to before `end`, at least vectorPixels; `eight(i)` is the vector
// of those from pixel i on. The last vectors may overlap.
template <typename Eight>
MARBELOT_AVX2_INLINE void writePixels(std::uint8_t* to, std::int64_t begin, std::int64_t end,
                                      const Eight& eight) {
  for (std::int64_t i = begin; i + vectorPixels < end; i += vectorPixels) {
    storePixels(to + 4 * i, eight(i));
  }
  storePixels(to + 4 * (end - vectorPixels), eight(end - vectorPixels));
}

// Writes `count` pixels, at least vectorPixels, past the caches, which a whole picture does not fit
// into. Only whole cache lines go there: one that ordinary stores have touched would be slow.
template <typename Eight>
MARBELOT_AVX2_INLINE void streamPixels(std::uint8_t* to, std::int64_t count, const Eight& eight) {
  constexpr std::int64_t linePixels = 16;
  const auto before = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(to) / 4 % 16);
  const auto lineFrom = [before](std::int64_t i) {
    return (before + i + linePixels - 1) / linePixels * linePixels - before;
  };
  const std::int64_t begin = before == 0 ? 0 : lineFrom(vectorPixels);
  const std::int64_t rest = (before + count) % linePixels;
  // The last line's beginning that leaves a vector's pixels behind it: all but one pixel of a line
  // less, rounded up, is rounded down.
  const std::int64_t end = rest == 0 ? count : lineFrom(count - vectorPixels - linePixels + 1);
  if (end <= begin) return writePixels(to, 0, count, eight);
  if (begin > 0) writePixels(to, 0, begin, eight);
  for (std::int64_t i = begin; i < end; i += linePixels) {
    auto* line = reinterpret_cast<__m256i*>(to + 4 * i);
    _mm256_stream_si256(line, eight(i));
    _mm256_stream_si256(line + 1, eight(i + vectorPixels));
  }
  if (end < count) writePixels(to, end, count, eight);
}
#endif

}  // namespace marbelot
