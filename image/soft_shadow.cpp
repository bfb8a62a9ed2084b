#include "image/soft_shadow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "image/exact_math.h"
#include "platform/fast_path.h"

namespace marbelot {
namespace {

constexpr double reach = 4;         // standard deviations beyond which a Gaussian is nothing
constexpr double gridPerSigma = 3;  // grid points
constexpr double arcsPerSigma = 6;  // pieces of a corner's arc

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
  const double quarterArc = rect.radius * std::numbers::pi / 2;
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

void mixLines(const float* line, std::int64_t length, const std::array<float, 4>& weights,
              std::uint8_t* to, std::int64_t count) {
  for (std::int64_t x = 0; x < count; ++x) {
    const float level = line[x] * weights[0] + line[x + length] * weights[1] +
                        line[x + 2 * length] * weights[2] + line[x + 3 * length] * weights[3];
    const float above = std::max(level, 0.0f) + 0.5f;
    to[x] = static_cast<std::uint8_t>(above);
  }
}

#ifdef MARBELOT_AVX2
MARBELOT_AVX2 void mixLinesFast(const float* line, std::int64_t length,
                                const std::array<float, 4>& weights, std::uint8_t* to,
                                std::int64_t count) {
  std::int64_t x = 0;
  for (; x + 8 <= count; x += 8) {
    __m256 level = _mm256_setzero_ps();
    for (std::int64_t i = 0; i < 4; ++i) {
      level = _mm256_add_ps(
          level, _mm256_mul_ps(_mm256_loadu_ps(line + x + i * length), _mm256_set1_ps(weights[i])));
    }
    level = _mm256_add_ps(_mm256_max_ps(level, _mm256_setzero_ps()), _mm256_set1_ps(0.5f));
    const __m256i levels = _mm256_cvttps_epi32(level);
    const __m128i words =
        _mm_packus_epi32(_mm256_castsi256_si128(levels), _mm256_extracti128_si256(levels, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to + x), _mm_packus_epi16(words, words));
  }
  mixLines(line + x, length, weights, to + x, count - x);
}
#endif

}  // namespace

// One point before the first place and two after the last, for the cubics.
SoftShadow::Grid::Grid(double from, double to, double sigma)
    : start(from - sigma / gridPerSigma),
      step(sigma / gridPerSigma),
      count(static_cast<std::size_t>(std::ceil((to - from) / step)) + 4) {}

SoftShadow::Grid::Cubic SoftShadow::Grid::cubic(double at) const {
  const double place = std::clamp((at - start) / step, 1.0, static_cast<double>(count) - 3);
  const auto second = static_cast<std::size_t>(place);
  const double x = place - static_cast<double>(second);
  return {second - 1,
          {-x * (x - 1) * (x - 2) / 6, (x + 1) * (x - 1) * (x - 2) / 2, -(x + 1) * x * (x - 2) / 2,
           (x + 1) * x * (x - 1) / 6}};
}

SoftShadow::SoftShadow(const RoundedRect& rect, const Shadow& shadow, std::int64_t width,
                       std::int64_t height)
    : left_((static_cast<double>(width) - rect.width) / 2),
      top_((static_cast<double>(height) - rect.height) / 2 + shadow.down),
      height_(rect.height),
      across_(-left_, std::min(rect.width / 2, rect.radius + reach * shadow.sigma), shadow.sigma),
      down_(-top_, std::min(rect.height / 2, rect.radius + reach * shadow.sigma), shadow.sigma),
      width_(width),
      columns_(
          std::min(static_cast<std::int64_t>(left_ + across_.at(across_.count)), (width + 1) / 2)),
      row_(static_cast<std::size_t>(width)) {
  const auto values = blurred(rect, shadow);
  for (std::size_t y = 0; y < down_.count; ++y) {
    for (std::int64_t x = 0; x < columns_; ++x) {
      const auto cubic =
          across_.cubic(std::min(static_cast<double>(x) + 0.5 - left_, rect.width / 2));
      const double* value = values.data() + y * across_.count + cubic.first;
      double level = 0;
      for (std::size_t i = 0; i < 4; ++i) level += cubic.weights[i] * value[i];
      stretched_.push_back(static_cast<float>(level));
    }
  }
}

// The levels at the points of the grid, row by row.
std::vector<double> SoftShadow::blurred(const RoundedRect& rect, const Shadow& shadow) const {
  std::vector<double> values(down_.count * across_.count);
  std::vector<double> line(across_.count);
  for (const Slab& slab : slabs(rect, shadow.sigma)) {
    for (std::size_t x = 0; x < across_.count; ++x) {
      line[x] = 255 * shadow.opacity *
                shareBetween(slab.inset, rect.width - slab.inset, across_.at(x), shadow.sigma);
    }
    for (std::size_t y = 0; y < down_.count; ++y) {
      const double share = shareBetween(slab.top, slab.bottom, down_.at(y), shadow.sigma);
      for (std::size_t x = 0; x < across_.count; ++x) {
        values[y * across_.count + x] += share * line[x];
      }
    }
  }
  return values;
}

const std::uint8_t* SoftShadow::row(std::int64_t y, std::int64_t sides) {
  const double below = static_cast<double>(y) + 0.5 - top_;
  // Rows that are all far from the ends are alike.
  const double place = std::min({below, height_ - below, down_.at(down_.count - 3)});
  if (place == rowOf_ && sides <= sides_) return row_.data();
  rowOf_ = place;
  sides_ = sides;
  const auto cubic = down_.cubic(place);
  std::array<float, 4> weights{};
  std::transform(cubic.weights.begin(), cubic.weights.end(), weights.begin(),
                 [](double weight) { return static_cast<float>(weight); });
  const std::int64_t changing = std::min(sides, columns_);
  const auto mix = MARBELOT_FASTEST(mixLines, mixLinesFast);
  const float* line = stretched_.data() + cubic.first * static_cast<std::size_t>(columns_);
  mix(line, columns_, weights, row_.data(), changing);
  // From there to the middle nothing changes; the right half mirrors the left one.
  const auto from = row_.begin(), middle = from + std::min(sides, (width_ + 1) / 2);
  if (changing > 0)
    std::fill(from + changing, middle, row_[static_cast<std::size_t>(changing - 1)]);
  const auto mirrored = std::min(middle - from, static_cast<std::ptrdiff_t>(width_ / 2));
  std::reverse_copy(from, from + mirrored, row_.end() - mirrored);
  return row_.data();
}

}  // namespace marbelot
