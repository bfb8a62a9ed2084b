#include "image/resampler.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

#include "image/exact_math.h"
#include "platform/blend.h"
#include "platform/fast_path.h"

namespace marbelot {
namespace {

constexpr int lobes = 3;
constexpr int weightBits = 14;  // of fraction; the largest weights are below 1.3
// Of fraction between the passes. The weights above 0 add up to less than 1.3, so that overshoots
// reach 330 levels after the first pass and 427 after the second: all fits 16 bits.
constexpr int middleBits = 6;
constexpr int acrossShift = weightBits - middleBits, downShift = weightBits + middleBits;

double lanczos(double x) {
  if (x == 0) return 1;
  if (std::abs(x) >= lobes) return 0;
  const double angle = std::numbers::pi * x;
  return lobes * sinPi(x) * sinPi(x / lobes) / (angle * angle);
}

constexpr int rounded(int sum, int shift) { return (sum + (1 << (shift - 1))) >> shift; }

// As the processor packs numbers.
constexpr std::int16_t saturated(int number) {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(std::clamp<int>(number, Limits::min(), Limits::max()));
}

// --- Across: two old rows to a pair --------------------------------------------------------------

void resizeAcross(const std::uint8_t* const rows[2], const ResamplingWeights& weights,
                  const std::vector<std::int16_t>&, std::int16_t* to) {
  const std::int16_t* weight = weights.values.data();
  for (const int first : weights.first) {
    for (int channel = 0; channel < 4; ++channel) {
      for (int row = 0; row < 2; ++row) {
        int sum = 0;
        for (std::size_t tap = 0; tap < weights.taps; ++tap) {
          sum += weight[tap] * rows[row][4 * (static_cast<std::size_t>(first) + tap) + channel];
        }
        *to++ = saturated(rounded(sum, acrossShift));
      }
    }
    weight += weights.taps;
  }
}

// --- Down: pairs to a new row --------------------------------------------------------------------

using Pairs = std::span<const std::int16_t* const>;

void resizeDown(Pairs pairs, const std::int16_t* weights, std::uint8_t* to, std::int64_t width) {
  for (std::int64_t x = 0; x < width; ++x, to += 4) {
    int sums[4] = {};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      const std::int16_t* pixel = pairs[i] + 8 * x;
      for (int channel = 0; channel < 4; ++channel) {
        sums[channel] +=
            weights[2 * i] * pixel[2 * channel] + weights[2 * i + 1] * pixel[2 * channel + 1];
      }
    }
    const auto level = [&](int channel, int limit) {
      return static_cast<std::uint8_t>(std::clamp(rounded(sums[channel], downShift), 0, limit));
    };
    to[3] = level(3, 255);
    for (int channel = 0; channel < 3; ++channel) to[channel] = level(channel, to[3]);
  }
}

#ifdef MARBELOT_AVX2
// Two new pixels of two rows at a time.
MARBELOT_AVX2 void resizeAcrossFast(const std::uint8_t* const rows[2],
                                    const ResamplingWeights& weights,
                                    const std::vector<std::int16_t>& spread, std::int16_t* to) {
  // Two pixels as 16-bit numbers, channel by channel: the first or the last two of four.
  const __m256i firstTwo = _mm256_setr_epi8(0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1,
                                            0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1);
  const __m256i lastTwo = _mm256_or_si256(firstTwo, _mm256_set1_epi16(8));
  // Row by row as they are packed, to channel by channel.
  const __m256i byChannel = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15,
                                             0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  const __m256i half = _mm256_set1_epi32(1 << (acrossShift - 1));
  const auto* weight = reinterpret_cast<const __m256i*>(spread.data());
  const std::size_t count = weights.first.size();
  for (std::size_t x = 0; x < count; x += 2, to += 16) {
    const int left = weights.first[x], right = weights.first[std::min(x + 1, count - 1)];
    __m256i sums[2] = {half, half};
    for (std::size_t tap = 0; tap < weights.taps; tap += 4, weight += 2) {
#pragma GCC unroll 2
      for (int row = 0; row < 2; ++row) {
        const std::uint8_t* from = rows[row] + 4 * tap;
        const __m256i pixels = _mm256_inserti128_si256(
            _mm256_castsi128_si256(
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 4 * left))),
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 4 * right)), 1);
        sums[row] = _mm256_add_epi32(
            sums[row],
            _mm256_madd_epi16(_mm256_shuffle_epi8(pixels, firstTwo), _mm256_loadu_si256(weight)));
        sums[row] =
            _mm256_add_epi32(sums[row], _mm256_madd_epi16(_mm256_shuffle_epi8(pixels, lastTwo),
                                                          _mm256_loadu_si256(weight + 1)));
      }
    }
    const __m256i packed = _mm256_packs_epi32(_mm256_srai_epi32(sums[0], acrossShift),
                                              _mm256_srai_epi32(sums[1], acrossShift));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_shuffle_epi8(packed, byChannel));
  }
}

struct ResizedDown {
  Pairs pairs;
  const std::int16_t* weights;

  MARBELOT_AVX2 __m256i operator()(std::int64_t x) const {
    const __m256i half = _mm256_set1_epi32(1 << (downShift - 1));
    __m256i sums[4] = {half, half, half, half};  // of two pixels each
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      int both = 0;
      std::memcpy(&both, weights + 2 * i, sizeof both);
      const __m256i twoWeights = _mm256_set1_epi32(both);
      const auto* pixels = reinterpret_cast<const __m256i*>(pairs[i] + 8 * x);
#pragma GCC unroll 4
      for (int two = 0; two < 4; ++two) {
        sums[two] = _mm256_add_epi32(
            sums[two], _mm256_madd_epi16(_mm256_loadu_si256(pixels + two), twoWeights));
      }
    }
#pragma GCC unroll 4
    for (__m256i& sum : sums) sum = _mm256_srai_epi32(sum, downShift);
    const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(sums[0], sums[1]),
                                              _mm256_packs_epi32(sums[2], sums[3]));
    const __m256i inOrder = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    const __m256i pixels = _mm256_permutevar8x32_epi32(bytes, inOrder);
    return _mm256_min_epu8(pixels, alphaOfEach(pixels));
  }
};

MARBELOT_AVX2 void resizeDownFast(Pairs pairs, const std::int16_t* weights, std::uint8_t* to,
                                  std::int64_t width) {
  if (width < vectorPixels) return resizeDown(pairs, weights, to, width);
  streamPixels(to, width, ResizedDown{pairs, weights});
}

// Of two new pixels by turns, two weights for each of four channels.
std::vector<std::int16_t> spreadWeights(const ResamplingWeights& weights) {
  std::vector<std::int16_t> spread;
  const std::size_t count = weights.first.size();
  spread.reserve((count + 1) / 2 * weights.taps * 8);
  for (std::size_t x = 0; x < count; x += 2) {
    for (std::size_t tap = 0; tap < weights.taps; tap += 2) {
      for (const std::size_t pixel : {x, std::min(x + 1, count - 1)}) {
        const std::int16_t* two = weights.values.data() + pixel * weights.taps + tap;
        for (int channel = 0; channel < 4; ++channel) spread.insert(spread.end(), two, two + 2);
      }
    }
  }
  return spread;
}
#endif

constexpr std::size_t roundedUp(std::size_t number, std::size_t unit) {
  return (number + unit - 1) / unit * unit;
}

}  // namespace

ResamplingWeights::ResamplingWeights(const SampledAxis& axis, int side, Begin where) {
  const double widening = std::max(axis.step, 1.0);
  const double reach = lobes * widening;
  const auto needed = static_cast<std::size_t>(std::ceil(2 * reach));
  taps = where == Begin::even ? roundedUp(needed + 1, 2) : roundedUp(needed, 4);
  first.resize(static_cast<std::size_t>(axis.count));
  values.resize(first.size() * taps);
  std::vector<double> exact(taps);
  for (std::size_t i = 0; i < first.size(); ++i) {
    const double placed = axis.start + (static_cast<double>(i) + 0.5) * axis.step - 0.5;
    // A pixel that the picture hardly touches may have its middle far outside, where all weights
    // are so small that their shares of the sum would be huge.
    const double middle = std::clamp(placed, -0.5, side - 0.5);
    int begin = std::max(0, static_cast<int>(std::floor(middle - reach)) + 1);
    begin = where == Begin::even ? begin / 2 * 2
                                 : std::max(0, std::min(begin, side - static_cast<int>(taps)));
    first[i] = begin;
    double sum = 0;
    for (std::size_t tap = 0; tap < taps; ++tap) {
      const double old = begin + static_cast<double>(tap);
      exact[tap] = old < side ? lanczos((old - middle) / widening) : 0;
      sum += exact[tap];
    }
    // Each weight is rounded with what its neighbours were rounded by, so that no error adds up.
    double before = 0;
    int written = 0;
    for (std::size_t tap = 0; tap < taps; ++tap) {
      assert(std::abs(exact[tap] / sum) < 2);
      before += exact[tap] / sum;
      const int upTo = static_cast<int>(std::floor(before * (1 << weightBits) + 0.5));
      values[i * taps + tap] = static_cast<std::int16_t>(upTo - written);
      written = upTo;
    }
  }
}

Resampler::Resampler(const Bitmap& picture, const SampledAxis& across, const SampledAxis& down)
    : picture_(picture),
      across_(across, picture.width(), ResamplingWeights::Begin::within),
      down_(down, picture.height(), ResamplingWeights::Begin::even),
      resizeAcross_(resizeAcross),
      resizeDown_(resizeDown),
      pairLength_(roundedUp(across_.first.size(), 2) * 8),
      pairs_(down_.taps / 2 * pairLength_),
      inUse_(down_.taps / 2) {
#ifdef MARBELOT_AVX2
  if (!usesFastPath()) return;
  resizeAcross_ = resizeAcrossFast;
  resizeDown_ = resizeDownFast;
  spread_ = spreadWeights(across_);
#endif
}

const std::uint8_t* Resampler::oldRow(int y, std::vector<std::uint8_t>& padded) const {
  const std::uint8_t* row = picture_.row(std::min(y, picture_.height() - 1));
  const auto width = static_cast<std::size_t>(picture_.width());
  if (width >= across_.taps) return row;
  padded.resize(4 * across_.taps);
  std::memcpy(padded.data(), row, 4 * width);
  return padded.data();
}

void Resampler::row(int y, std::uint8_t* to) {
  const auto index = static_cast<std::size_t>(y);
  const auto first = static_cast<std::size_t>(down_.first[index]) / 2;
  const auto place = [&](std::size_t pair) {
    return pairs_.data() + pair % inUse_.size() * pairLength_;
  };
  for (pairsDone_ = std::max(pairsDone_, first); pairsDone_ < first + inUse_.size(); ++pairsDone_) {
    const int old = static_cast<int>(2 * pairsDone_);
    const std::uint8_t* rows[] = {oldRow(old, padded_[0]), oldRow(old + 1, padded_[1])};
    resizeAcross_(rows, across_, spread_, place(pairsDone_));
  }
  for (std::size_t i = 0; i < inUse_.size(); ++i) inUse_[i] = place(first + i);
  resizeDown_(inUse_, down_.values.data() + index * down_.taps, to,
              static_cast<std::int64_t>(across_.first.size()));
}

}  // namespace marbelot
