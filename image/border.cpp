#include <algorithm>

#include "image/blend.h"
#include "image/pixel_operations.h"

namespace marbelot {
namespace {

void fill(std::uint8_t* to, std::int64_t width, Color color) {
  for (std::int64_t x = 0; x < width; ++x, to += 4) {
    to[0] = color.red;
    to[1] = color.green;
    to[2] = color.blue;
    to[3] = 255;
  }
}

// The row as it looks on the colour.
void drawOver(Color color, const std::uint8_t* from, std::uint8_t* to, int width) {
  for (int x = 0; x < width; ++x, from += 4, to += 4) {
    const unsigned showing = 255u - from[3];
    to[0] = static_cast<std::uint8_t>(from[0] + scaled(color.red, showing));
    to[1] = static_cast<std::uint8_t>(from[1] + scaled(color.green, showing));
    to[2] = static_cast<std::uint8_t>(from[2] + scaled(color.blue, showing));
    to[3] = 255;
  }
}

}  // namespace

Result addBorder(const Bitmap& picture, Color color) {
  const std::int64_t width = picture.width(), height = picture.height();
  const std::int64_t shorter = std::min(width, height);
  const std::int64_t border = shorter < 240 ? 6 : shorter / 40;
  Result result = Result::canvas(width + 2 * border, height + 2 * border);
  if (!result) return result;
  for (int y = 0; y < result->height(); ++y) {
    std::uint8_t* row = result->row(y);
    if (y < border || y >= border + height) {
      fill(row, result->width(), color);
      continue;
    }
    fill(row, border, color);
    drawOver(color, picture.row(static_cast<int>(y - border)), row + 4 * border, picture.width());
    fill(row + 4 * (border + width), border, color);
  }
  return result;
}

}  // namespace marbelot
