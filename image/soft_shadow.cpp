#include "image/soft_shadow.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "image/exact_math.h"

namespace marbelot {
namespace {

constexpr double reach = 4;         // standard deviations beyond which a Gaussian is nothing
constexpr double gridPerSigma = 3;  // grid points
constexpr double arcsPerSigma = 6;  // pieces of a corner's arc

// The polynomial through four values at -1, 0, 1 and 2, as their weights at `at`.
std::array<double, 4> cubicWeights(double at) {
  return {-at * (at - 1) * (at - 2) / 6, (at + 1) * (at - 1) * (at - 2) / 2,
          -(at + 1) * at * (at - 2) / 2, (at + 1) * at * (at - 1) / 6};
}

// What the bell curve around `middle` has between two places.
double shareBetween(double from, double to, double middle, double sigma) {
  return normalShareBelow((to - middle) / sigma) - normalShareBelow((from - middle) / sigma);
}

// A rounded rectangle as a pile of plain ones, so thin at the corners that blurring hides the
// steps.
struct Slab {
  double top, bottom, inset;
};
std::vector<Slab> slabs(const RoundedRect& rect, double sigma) {
  std::vector<Slab> slabs;
  const double quarterArc = rect.radius * 1.5707963267948966;
  const int arcs = static_cast<int>(std::ceil(quarterArc / sigma * arcsPerSigma));
  double top = 0;
  for (int i = 0; i < arcs; ++i) {
    const double bottom = rect.radius * (1 - cosPi((i + 1.0) / arcs / 2));
    const double inset = rect.radius * (1 - sinPi((i + 0.5) / arcs / 2));
    slabs.push_back({top, bottom, inset});
    slabs.push_back({rect.height - bottom, rect.height - top, inset});
    top = bottom;
  }
  slabs.push_back({rect.radius, rect.height - rect.radius, 0});
  return slabs;
}

}  // namespace

// One point more before the first place and two after the last, for the interpolation.
SoftShadow::Grid::Grid(double from, double to, double sigma)
    : start(from - sigma / gridPerSigma),
      step(sigma / gridPerSigma),
      count(static_cast<std::size_t>(std::ceil((to - from) / step)) + 4) {}

SoftShadow::SoftShadow(const RoundedRect& rect, const Shadow& shadow, int width, int height)
    : left_((width - rect.width) / 2),
      top_((height - rect.height) / 2 + shadow.down),
      height_(rect.height),
      across_(-left_, std::min(rect.width / 2, rect.radius + reach * shadow.sigma), shadow.sigma),
      down_(-top_, std::min(rect.height / 2, rect.radius + reach * shadow.sigma), shadow.sigma),
      columns_(static_cast<std::size_t>(
          std::min(std::ceil(left_ + rect.radius + reach * shadow.sigma), (width + 1.0) / 2))),
      stretched_(columns_ * down_.count),
      row_(columns_) {
  const auto values = blurred(rect, shadow);
  for (std::size_t x = 0; x < columns_; ++x) {
    const double from = std::min(static_cast<double>(x) + 0.5 - left_, rect.width / 2);
    const double at = (from - across_.start) / across_.step;
    const auto index = std::min(static_cast<std::size_t>(at), across_.count - 3);
    const auto weights = cubicWeights(at - static_cast<double>(index));
    for (std::size_t y = 0; y < down_.count; ++y) {
      const double* value = values.data() + y * across_.count + index - 1;
      double sum = 0;
      for (std::size_t i = 0; i < 4; ++i) sum += weights[i] * value[i];
      stretched_[y * columns_ + x] = static_cast<float>(sum);
    }
  }
  (void)height;
}

std::vector<double> SoftShadow::blurred(const RoundedRect& rect, const Shadow& shadow) const {
  std::vector<double> values(down_.count * across_.count);
  std::vector<double> line(across_.count);
  for (const Slab& slab : slabs(rect, shadow.sigma)) {
    for (std::size_t x = 0; x < across_.count; ++x) {
      line[x] = shareBetween(slab.inset, rect.width - slab.inset,
                             across_.start + static_cast<double>(x) * across_.step, shadow.sigma);
    }
    for (std::size_t y = 0; y < down_.count; ++y) {
      const double share = shareBetween(
          slab.top, slab.bottom, down_.start + static_cast<double>(y) * down_.step, shadow.sigma);
      for (std::size_t x = 0; x < across_.count; ++x) {
        values[y * across_.count + x] += 255 * shadow.opacity * share * line[x];
      }
    }
  }
  return values;
}

const std::vector<std::uint8_t>& SoftShadow::row(int y) {
  const double middle = y + 0.5 - top_;
  const double from = std::min(
      {middle, height_ - middle, down_.start + static_cast<double>(down_.count - 3) * down_.step});
  const double at = std::max(1.0, (from - down_.start) / down_.step);
  const auto index = std::min(static_cast<std::size_t>(at), down_.count - 3);
  std::array<float, 4> weights{};
  const auto exact = cubicWeights(at - static_cast<double>(index));
  std::transform(exact.begin(), exact.end(), weights.begin(),
                 [](double weight) { return static_cast<float>(weight); });
  const float* line = stretched_.data() + (index - 1) * columns_;
  for (std::size_t x = 0; x < columns_; ++x) {
    const float sum = line[x] * weights[0] + line[x + columns_] * weights[1] +
                      line[x + 2 * columns_] * weights[2] + line[x + 3 * columns_] * weights[3];
    row_[x] = static_cast<std::uint8_t>(std::max(0.0f, sum) + 0.5f);
  }
  return row_;
}

}  // namespace marbelot
