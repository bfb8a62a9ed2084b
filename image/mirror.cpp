#include "image/mirror.h"

#include <cstring>

#include "platform/fast_path.h"

namespace marbelot {
namespace {

void mirrorPlain(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
  for (std::int64_t x = 0; x < count; ++x) std::memcpy(to + 4 * x, from + 4 * (count - 1 - x), 4);
}

#ifdef MARBELOT_AVX2
struct Mirrored {
  const std::uint8_t* from;
  std::int64_t count;

  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const {
    const __m256i reversed = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0);
    return _mm256_permutevar8x32_epi32(loadPixels(from + 4 * (count - vectorPixels - i)), reversed);
  }
};

MARBELOT_AVX2 void mirrorFast(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
  if (count < vectorPixels) return mirrorPlain(from, to, count);
  streamPixels(to, count, Mirrored{from, count});
}
#endif

}  // namespace

void mirrorPixels(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
  MARBELOT_FASTEST(mirrorPlain, mirrorFast)(from, to, count);
}

}  // namespace marbelot
