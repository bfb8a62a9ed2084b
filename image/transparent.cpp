#include <cstdlib>
#include <cstring>

#include "image/pixel_operations.h"
#include "platform/fast_path.h"

namespace marbelot {
namespace {

constexpr int tolerance = 40;  // levels

void clearNear(const std::uint8_t* reference, const std::uint8_t* from, std::uint8_t* to,
               std::int64_t count) {
  for (; count > 0; --count, from += 4, to += 4) {
    const bool near = std::abs(from[0] - reference[0]) <= tolerance &&
                      std::abs(from[1] - reference[1]) <= tolerance &&
                      std::abs(from[2] - reference[2]) <= tolerance;
    if (near) {
      std::memset(to, 0, 4);
    } else {
      std::memcpy(to, from, 4);
    }
  }
}

#ifdef MARBELOT_AVX2
struct NearCleared {
  const std::uint8_t* from;
  __m256i reference;

  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const {
    const __m256i pixels = loadPixels(from + 4 * i);
    const __m256i difference =
        _mm256_or_si256(_mm256_subs_epu8(pixels, reference), _mm256_subs_epu8(reference, pixels));
    // What exceeds the tolerance; none of alpha, whose tolerance is 255.
    const __m256i excess = _mm256_subs_epu8(
        difference, _mm256_set1_epi32(static_cast<int>(0xFF000000u | tolerance * 0x010101u)));
    const __m256i near = _mm256_cmpeq_epi32(excess, _mm256_setzero_si256());
    return _mm256_andnot_si256(near, pixels);
  }
};

MARBELOT_AVX2 void clearNearFast(const std::uint8_t* reference, const std::uint8_t* from,
                                 std::uint8_t* to, std::int64_t count) {
  if (count < vectorPixels) return clearNear(reference, from, to, count);
  int pixel = 0;
  std::memcpy(&pixel, reference, 4);
  streamPixels(to, count, NearCleared{from, _mm256_set1_epi32(pixel)});
}
#endif

}  // namespace

Result makeTransparent(const Bitmap& picture, Background background) {
  static constexpr std::uint8_t white[] = {255, 255, 255, 0}, black[] = {0, 0, 0, 0};
  const std::uint8_t* reference = background == Background::white   ? white
                                  : background == Background::black ? black
                                                                    : picture.data();
  Result result = Result::canvas(picture.width(), picture.height());
  if (!result) return result;
  const auto clear = MARBELOT_FASTEST(clearNear, clearNearFast);
  for (int y = 0; y < picture.height(); ++y) {
    clear(reference, picture.row(y), result->row(y), picture.width());
  }
  finishStreaming();
  return result;
}

}  // namespace marbelot
