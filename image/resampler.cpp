#include "image/resampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "image/exact_math.h"

namespace marbelot {
namespace {

constexpr int lobes = 3;
constexpr int weightBits = 14;   // weights of at most about 1.2, in 16 bits
constexpr int narrowedBits = 6;  // of fraction between the passes: up to 511, enough for overshoots

double lanczos(double x) {
  if (x == 0) return 1;
  if (std::abs(x) >= lobes) return 0;
  const double angle = std::numbers::pi * x;
  return lobes * sinPi(x) * sinPi(x / lobes) / (angle * angle);
}

std::uint8_t clamped(int value, int limit) {
  return static_cast<std::uint8_t>(std::clamp(value, 0, limit));
}

}  // namespace

Resampler::Weights::Weights(const SampledAxis& axis, int side) {
  const double widening = std::max(axis.step, 1.0);
  taps = static_cast<std::size_t>(std::min<double>(std::ceil(2 * lobes * widening) + 1, side));
  first.resize(static_cast<std::size_t>(axis.count));
  values.resize(first.size() * taps);
  std::vector<double> exact(taps);
  for (std::size_t i = 0; i < first.size(); ++i) {
    const double middle = axis.start + (static_cast<double>(i) + 0.5) * axis.step - 0.5;
    first[i] = static_cast<int>(std::clamp(std::floor(middle - lobes * widening) + 1, 0.0,
                                           static_cast<double>(side) - static_cast<double>(taps)));
    double sum = 0;
    for (std::size_t tap = 0; tap < taps; ++tap) {
      exact[tap] = lanczos((first[i] + static_cast<double>(tap) - middle) / widening);
      sum += exact[tap];
    }
    // Each weight is rounded with what its neighbours were rounded by, so that no error adds up.
    double before = 0;
    std::int64_t written = 0;
    for (std::size_t tap = 0; tap < taps; ++tap) {
      before += exact[tap] / sum;
      const auto upTo = static_cast<std::int64_t>(std::floor(before * (1 << weightBits) + 0.5));
      values[i * taps + tap] = static_cast<std::int16_t>(upTo - written);
      written = upTo;
    }
  }
}

Resampler::Resampler(const Bitmap& picture, const SampledAxis& across, const SampledAxis& down)
    : picture_(picture),
      across_(across, picture.width()),
      down_(down, picture.height()),
      rows_(down_.taps * across_.first.size() * 4) {}

void Resampler::row(int y, std::uint8_t* to) {
  const std::size_t width = across_.first.size();
  const int first = down_.first[static_cast<std::size_t>(y)];
  for (done_ = std::max(done_, first); done_ < first + static_cast<int>(down_.taps); ++done_) {
    std::int16_t* narrowed =
        rows_.data() + static_cast<std::size_t>(done_) % down_.taps * width * 4;
    for (std::size_t x = 0; x < width; ++x) {
      const std::uint8_t* from = picture_.row(done_) + 4 * across_.first[x];
      const std::int16_t* weights = across_.of(static_cast<int>(x));
      int sums[4] = {};
      for (std::size_t tap = 0; tap < across_.taps; ++tap, from += 4) {
        for (int channel = 0; channel < 4; ++channel) sums[channel] += weights[tap] * from[channel];
      }
      constexpr int shift = weightBits - narrowedBits;
      for (int sum : sums)
        *narrowed++ = static_cast<std::int16_t>((sum + (1 << (shift - 1))) >> shift);
    }
  }
  const std::int16_t* weights = down_.of(y);
  for (std::size_t x = 0; x < width; ++x, to += 4) {
    int sums[4] = {};
    for (std::size_t tap = 0; tap < down_.taps; ++tap) {
      const std::size_t row = (static_cast<std::size_t>(first) + tap) % down_.taps;
      const std::int16_t* narrowed = rows_.data() + (row * width + x) * 4;
      for (int channel = 0; channel < 4; ++channel)
        sums[channel] += weights[tap] * narrowed[channel];
    }
    constexpr int shift = weightBits + narrowedBits;
    const auto rounded = [](int sum) { return (sum + (1 << (shift - 1))) >> shift; };
    to[3] = clamped(rounded(sums[3]), 255);
    for (int channel = 0; channel < 3; ++channel) {
      to[channel] = clamped(rounded(sums[channel]), to[3]);  // premultiplied: never above alpha
    }
  }
}

}  // namespace marbelot
