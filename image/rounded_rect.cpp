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

Coverage::Coverage(const RoundedRect& rect, std::int64_t width, std::int64_t height)
    : rect_(rect),
      width_(width),
      height_(height),
      left_((static_cast<double>(width) - rect.width) / 2),
      top_((static_cast<double>(height) - rect.height) / 2),
      right_(left_ + rect.width),
      bottom_(top_ + rect.height) {}

float Coverage::Row::at(std::int64_t x, std::int64_t width) const {
  x = std::min(x, width - 1 - x);
  if (x < begin) return 0;
  return x < innerBegin() ? ramp[static_cast<std::size_t>(x - begin)] : inner;
}

// Of the pixel's square.
double Coverage::shareOf(std::int64_t x, std::int64_t y) const {
  const auto column = static_cast<double>(x), line = static_cast<double>(y);
  const double fromX = std::max(column, left_), toX = std::min(column + 1, right_);
  const double fromY = std::max(line, top_), toY = std::min(line + 1, bottom_);
  if (fromX >= toX || fromY >= toY) return 0;
  const auto fromSide = [this](double at) { return std::min(at - left_, right_ - at); };
  const auto fromEnd = [this](double at) { return std::min(at - top_, bottom_ - at); };
  double covered = 0;
  if (fromSide((fromX + toX) / 2) < fromEnd((fromY + toY) / 2)) {
    const double strip = (toY - fromY) / strips;
    for (int i = 0; i < strips; ++i) {
      const double inset = rect_.inset(fromEnd(fromY + (i + 0.5) * strip));
      covered += overlap(fromX, toX, left_ + inset, right_ - inset) * strip;
    }
  } else {
    const double strip = (toX - fromX) / strips;
    for (int i = 0; i < strips; ++i) {
      const double inset = rect_.inset(fromSide(fromX + (i + 0.5) * strip));
      covered += overlap(fromY, toY, top_ + inset, bottom_ - inset) * strip;
    }
  }
  return covered;
}

const Coverage::Row& Coverage::row(std::int64_t y) {
  y = std::min(y, height_ - 1 - y);
  if (y == rowOf_) return row_;
  rowOf_ = y;
  const std::int64_t half = (width_ + 1) / 2;  // with the middle column
  const auto share = [&](std::int64_t x) { return static_cast<float>(shareOf(x, y)); };
  // The edge draws in most at the end of the row that is nearer to the top.
  const double below = static_cast<double>(y) - top_;
  const auto column = [&](double at) {
    return std::clamp(static_cast<std::int64_t>(at), std::int64_t{0}, half);
  };
  row_.begin = below + 1 <= 0 ? half : column(std::floor(left_ + rect_.inset(below + 1)));
  const auto inner = column(std::ceil(left_ + rect_.inset(std::max(0.0, below))));
  row_.ramp.clear();
  for (std::int64_t x = row_.begin; x < inner; ++x) row_.ramp.push_back(share(x));
  row_.inner = inner < half ? share(inner) : 0;
  return row_;
}

}  // namespace marbelot
