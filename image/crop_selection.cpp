#include "image/crop_selection.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace marbelot {
namespace {

constexpr double screenShare = 0.8;
constexpr Size leastView{320, 240};
constexpr double leastSelection = 4;
// What sums of fractions of a point are off by; no pixel is selected by that.
constexpr double tolerance = 1e-6;

}  // namespace

Size cropViewSize(int width, int height, const Rect& visibleFrame) {
  const double w = width, h = height;
  const double scale =
      std::min({screenShare * visibleFrame.width / std::max(w, 1.0),
                (screenShare * visibleFrame.height - cropBarHeight) / std::max(h, 1.0), 1.0});
  return {std::max(w * scale, leastView.width), std::max(h * scale, leastView.height)};
}

Rect cropImageRectangle(int width, int height, Size bounds) {
  const double scale = std::min(bounds.width / width, bounds.height / height);
  const double w = width * scale, h = height * scale;
  return {(bounds.width - w) / 2, (bounds.height - h) / 2, w, h};
}

Rect spanned(Point a, Point b) {
  return {std::min(a.x, b.x), std::min(a.y, b.y), std::abs(a.x - b.x), std::abs(a.y - b.y)};
}

std::optional<PixelRect> selectedPixels(const Rect& selection, const Rect& shown, int width,
                                        int height) {
  const Rect part = selection.intersection(shown);
  if (part.width <= leastSelection || part.height <= leastSelection) return std::nullopt;
  const double factor = width / shown.width;
  const double left = factor * (part.x - shown.x), right = left + factor * part.width;
  const double bottom = height - factor * (part.y - shown.y), top = bottom - factor * part.height;
  const auto down = [](double value, int most) {
    return std::clamp(static_cast<int>(std::floor(value + tolerance)), 0, most);
  };
  const auto up = [](double value, int most) {
    return std::clamp(static_cast<int>(std::ceil(value - tolerance)), 0, most);
  };
  const int x = down(left, width - 1), y = down(top, height - 1);
  return PixelRect{x, y, std::max(up(right, width) - x, 1), std::max(up(bottom, height) - y, 1)};
}

Result cut(const Bitmap& picture, const PixelRect& part) {
  Result result = Result::canvas(part.width, part.height);
  if (!result) return result;
  const std::size_t bytes = static_cast<std::size_t>(part.width) * Bitmap::pixelBytes;
  for (int y = 0; y < part.height; ++y) {
    std::memcpy(result->row(y),
                picture.row(part.y + y) + static_cast<std::size_t>(part.x) * Bitmap::pixelBytes,
                bytes);
  }
  return result;
}

}  // namespace marbelot
