#include "image/mirror.h"
#include "image/pixel_operations.h"
#include "platform/fast_path.h"

namespace marbelot {

Result flip(const Bitmap& picture, FlipAxis axis) {
  Result result = Result::canvas(picture.width(), picture.height());
  if (!result) return result;
  const int height = picture.height();
  for (int y = 0; y < height; ++y) {
    if (axis == FlipAxis::leftRight) {
      mirrorPixels(picture.row(y), result->row(y), picture.width());
    } else {
      copyPixels(picture.row(height - 1 - y), result->row(y), picture.width());
    }
  }
  finishStreaming();
  return result;
}

}  // namespace marbelot
