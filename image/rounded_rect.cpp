#include "image/rounded_rect.h"

#include <algorithm>
#include <cmath>

namespace marbelot {
namespace {

// Strips that a pixel at a corner is cut into. Their lengths are exact, and the edge is never steep
// across them, so the sum is too, to a thousandth.
constexpr int strips = 16;

double overlap(double from, double to, double begin, double end) {
  return std::max(0.0, std::min(to, end) - std::max(from, begin));
}

}  // namespace

double RoundedRect::inset(double distance) const {
  const double up = radius - distance;
  return up <= 0 ? 0 : radius - std::sqrt(std::max(0.0, radius * radius - up * up));
}

Coverage::Coverage(const RoundedRect& rect, int width, int height)
    : rect_(rect),
      width_(width),
      height_(height),
      left_((width - rect.width) / 2),
      top_((height - rect.height) / 2),
      right_(left_ + rect.width),
      bottom_(top_ + rect.height) {}

std::uint8_t Coverage::Row::at(int x, int width) const {
  x = std::min(x, width - 1 - x);
  if (x < begin) return 0;
  return x < innerBegin() ? ramp[static_cast<std::size_t>(x - begin)] : inner;
}

// Of the pixel's square.
double Coverage::shareOf(int x, int y) const {
  const double fromX = std::max<double>(x, left_), toX = std::min<double>(x + 1, right_);
  const double fromY = std::max<double>(y, top_), toY = std::min<double>(y + 1, bottom_);
  if (fromX >= toX || fromY >= toY) return 0;
  const auto fromSide = [this](double at) { return std::min(at - left_, right_ - at); };
  const auto fromEnd = [this](double at) { return std::min(at - top_, bottom_ - at); };
  const double middleX = (fromX + toX) / 2, middleY = (fromY + toY) / 2;
  double sum = 0;
  if (fromSide(middleX) < fromEnd(middleY)) {
    const double strip = (toY - fromY) / strips;
    for (int i = 0; i < strips; ++i) {
      const double inset = rect_.inset(fromEnd(fromY + (i + 0.5) * strip));
      sum += overlap(fromX, toX, left_ + inset, right_ - inset) * strip;
    }
  } else {
    const double strip = (toX - fromX) / strips;
    for (int i = 0; i < strips; ++i) {
      const double inset = rect_.inset(fromSide(fromX + (i + 0.5) * strip));
      sum += overlap(fromY, toY, top_ + inset, bottom_ - inset) * strip;
    }
  }
  return sum;
}

const Coverage::Row& Coverage::row(int y) {
  y = std::min(y, height_ - 1 - y);
  if (y == rowOf_) return row_;
  rowOf_ = y;
  const int half = (width_ + 1) / 2;
  const auto level = [&](int x) {
    return static_cast<std::uint8_t>(std::floor(shareOf(x, y) * 255 + 0.5));
  };
  // The inset is largest where the row comes nearest to the top, smallest where it is farthest.
  const double nearest = std::max(0.0, y - top_), farthest = std::max(0.0, y + 1 - top_);
  const auto column = [&](double at) { return std::clamp(static_cast<int>(at), 0, half); };
  row_.begin = y + 1 <= top_ ? half : column(std::floor(left_ + rect_.inset(farthest)));
  const int end = std::max(row_.begin, column(std::ceil(left_ + rect_.inset(nearest))));
  row_.ramp.clear();
  for (int x = row_.begin; x < end; ++x) row_.ramp.push_back(level(x));
  row_.inner = end < half ? level(end) : 0;
  return row_;
}

}  // namespace marbelot
