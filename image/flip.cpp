#include <algorithm>
#include <cstring>

#include "image/pixel_operations.h"

namespace marbelot {
namespace {

void mirrorRow(const std::uint8_t* from, std::uint8_t* to, int width) {
  for (int x = 0; x < width; ++x) std::memcpy(to + 4 * (width - 1 - x), from + 4 * x, 4);
}

}  // namespace

Result flip(const Bitmap& picture, FlipAxis axis) {
  Result result = Result::canvas(picture.width(), picture.height());
  if (!result) return result;
  const int height = picture.height();
  for (int y = 0; y < height; ++y) {
    if (axis == FlipAxis::leftRight) {
      mirrorRow(picture.row(y), result->row(y), picture.width());
    } else {
      std::memcpy(result->row(height - 1 - y), picture.row(y), result->bytesPerRow());
    }
  }
  return result;
}

}  // namespace marbelot
