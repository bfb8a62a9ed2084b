#include <algorithm>

#include "image/paint.h"
#include "image/pixel_operations.h"
#include "platform/fast_path.h"

namespace marbelot {

Result addBorder(const Bitmap& picture, PixelColor color) {
  const std::int64_t width = picture.width(), height = picture.height();
  const std::int64_t shorter = std::min(width, height);
  const std::int64_t border = shorter < 240 ? 6 : shorter / 40;
  Result result = Result::canvas(width + 2 * border, height + 2 * border);
  if (!result) return result;
  for (int y = 0; y < result->height(); ++y) {
    std::uint8_t* row = result->row(y);
    if (y < border || y >= border + height) {
      fillPixels(color, row, result->width());
      continue;
    }
    fillPixels(color, row, border);
    drawPixelsOver(color, picture.row(static_cast<int>(y - border)), row + 4 * border, width);
    fillPixels(color, row + 4 * (border + width), border);
  }
  finishStreaming();
  return result;
}

}  // namespace marbelot
