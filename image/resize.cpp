#include <algorithm>
#include <cmath>

#include "image/bands.h"
#include "image/pixel_operations.h"
#include "image/resampler.h"
#include "platform/fast_path.h"

namespace marbelot {
namespace {

std::int64_t pixelsOf(const Bitmap& bitmap) {
  return std::int64_t{bitmap.width()} * bitmap.height();
}

}  // namespace

Result resizeTo(const Bitmap& picture, std::int64_t width, std::int64_t height) {
  Result result = Result::canvas(width, height);
  if (!result) return result;
  const auto axis = [](int from, int to) {
    return SampledAxis{to, 0, static_cast<double>(from) / to};
  };
  const auto across = axis(picture.width(), result->width());
  const auto down = axis(picture.height(), result->height());
  inBands(result->height(), std::max(pixelsOf(picture), pixelsOf(*result)),
          [&](int begin, int end) {
            Resampler resampler(picture, across, down);
            for (int y = begin; y < end; ++y) resampler.row(y, result->row(y));
            finishStreaming();
          });
  return result;
}

Result resize(const Bitmap& picture, double factor) {
  const double width = factor * picture.width(), height = factor * picture.height();
  constexpr double limit = 0x1p63;  // of 64-bit integers
  if (!(std::abs(width) < limit && std::abs(height) < limit)) return Result::refusal();
  return resizeTo(picture, std::max<std::int64_t>(1, static_cast<std::int64_t>(width)),
                  std::max<std::int64_t>(1, static_cast<std::int64_t>(height)));
}

}  // namespace marbelot
