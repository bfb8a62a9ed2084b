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

constexpr std::size_t roundedUp(std::size_t number, std::size_t unit) {
  return (number + unit - 1) / unit * unit;
}

// As the processor packs numbers.
constexpr std::int16_t saturated(int number) {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(std::clamp<int>(number, Limits::min(), Limits::max()));
}

// --- Across: old rows to pairs -------------------------------------------------------------------

void resizeAcross(const RowsAtOnce& rows, const ResamplingWeights& weights,
                  std::vector<PixelBlock>&, std::int16_t* const to[2]) {
  for (std::size_t row = 0; row < RowsAtOnce::count; ++row) {
    for (std::size_t x = 0; x < weights.first.size(); ++x) {
      const auto first = static_cast<std::size_t>(weights.first[x]);
      const std::int16_t* weight = weights.values.data() + x * weights.taps;
      const std::size_t taps = std::min(weights.taps, rows.width - first);
      for (std::size_t channel = 0; channel < 4; ++channel) {
        int sum = 0;
        for (std::size_t tap = 0; tap < taps; ++tap) {
          sum += weight[tap] * rows.pixels[row][4 * (first + tap) + channel];
        }
        to[row / 2][8 * x + 2 * channel + row % 2] = saturated(rounded(sum, acrossShift));
      }
    }
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
// The pixels from `begin` to before `end`: unpacked once, one serves all new ones it is part of.
MARBELOT_AVX2_INLINE void unpackRows(const RowsAtOnce& rows, std::size_t begin, std::size_t end,
                                     PixelBlock* to) {
  const __m128i firstTwo = _mm_setr_epi8(0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1);
  const __m128i lastTwo = _mm_or_si128(firstTwo, _mm_set1_epi16(8));
  std::size_t x = begin;
  for (; x + 4 <= end; x += 4, to += 2) {
#pragma GCC unroll 4
    for (std::size_t row = 0; row < RowsAtOnce::count; ++row) {
      const auto four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows.pixels[row] + 4 * x));
      _mm_store_si128(reinterpret_cast<__m128i*>(to[0].values[row]),
                      _mm_shuffle_epi8(four, firstTwo));
      _mm_store_si128(reinterpret_cast<__m128i*>(to[1].values[row]),
                      _mm_shuffle_epi8(four, lastTwo));
    }
  }
  for (; x < end; ++x) {
    for (std::size_t row = 0; row < RowsAtOnce::count; ++row) {
      for (std::size_t channel = 0; channel < 4; ++channel) {
        to[(x - begin) % 4 / 2].values[row][2 * channel + x % 2] =
            rows.pixels[row][4 * x + channel];
      }
    }
  }
}

MARBELOT_AVX2 void resizeAcrossFast(const RowsAtOnce& rows, const ResamplingWeights& weights,
                                    std::vector<PixelBlock>& blocks, std::int16_t* const to[2]) {
  // Channel by channel of a row, then of the next, to both rows by turns.
  const __m256i byTurns = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0,
                                           1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  constexpr std::size_t pieceLength = 64;  // new pixels whose old ones the first cache holds
  const std::int16_t* weight = weights.values.data();
  const std::size_t count = weights.first.size();
  for (std::size_t x = 0; x < count;) {
    const std::size_t pieceEnd = std::min(x + pieceLength, count);
    const auto begin = static_cast<std::size_t>(weights.first[x]);
    const std::size_t end = static_cast<std::size_t>(weights.first[pieceEnd - 1]) + weights.taps;
    blocks.resize((end - begin) / 2);
    unpackRows(rows, begin, std::min(end, rows.width), blocks.data());
    for (; x < pieceEnd; ++x) {
      const PixelBlock* block =
          blocks.data() + (static_cast<std::size_t>(weights.first[x]) - begin) / 2;
      __m256i firstRows = _mm256_set1_epi32(1 << (acrossShift - 1)), lastRows = firstRows;
#pragma GCC unroll 4
      for (std::size_t tap = 0; tap < weights.taps; tap += 2, weight += 2, ++block) {
        int both = 0;
        std::memcpy(&both, weight, sizeof both);
        const __m256i twoWeights = _mm256_set1_epi32(both);
        const auto* pixels = reinterpret_cast<const __m256i*>(block);
        firstRows = _mm256_add_epi32(firstRows, _mm256_madd_epi16(pixels[0], twoWeights));
        lastRows = _mm256_add_epi32(lastRows, _mm256_madd_epi16(pixels[1], twoWeights));
      }
      const __m256i packed = _mm256_packs_epi32(_mm256_srai_epi32(firstRows, acrossShift),
                                                _mm256_srai_epi32(lastRows, acrossShift));
      const __m256i pairs =
          _mm256_shuffle_epi8(_mm256_permute4x64_epi64(packed, 0b11011000), byTurns);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to[0] + 8 * x), _mm256_castsi256_si128(pairs));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to[1] + 8 * x),
                       _mm256_extracti128_si256(pairs, 1));
    }
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
#endif

}  // namespace

ResamplingWeights::ResamplingWeights(const SampledAxis& axis, int side) {
  const double widening = std::max(axis.step, 1.0);
  const double reach = lobes * widening;
  const auto middle = [&](std::size_t i) {
    const double placed = axis.start + (static_cast<double>(i) + 0.5) * axis.step - 0.5;
    // A pixel that the picture hardly touches may have its middle far outside, where all weights
    // are so small that their shares of the sum would be huge.
    return std::clamp(placed, -0.5, side - 0.5);
  };
  first.resize(static_cast<std::size_t>(axis.count));
  for (std::size_t i = 0; i < first.size(); ++i) {
    const int begin = std::max(0, static_cast<int>(std::floor(middle(i) - reach)) + 1);
    const int end = std::min(side, static_cast<int>(std::ceil(middle(i) + reach)));
    first[i] = begin / 2 * 2;
    taps = std::max(taps, roundedUp(static_cast<std::size_t>(end - first[i]), 2));
  }
  values.resize(first.size() * taps);
  std::vector<double> exact(taps);
  for (std::size_t i = 0; i < first.size(); ++i) {
    // A whole number of times smaller, all new pixels but the outermost have the same weights.
    if (i > 0 && first[i] + static_cast<int>(taps) <= side &&
        middle(i) - first[i] == middle(i - 1) - first[i - 1]) {
      std::copy_n(values.begin() + (i - 1) * taps, taps, values.begin() + i * taps);
      continue;
    }
    double sum = 0;
    for (std::size_t tap = 0; tap < taps; ++tap) {
      const double old = first[i] + static_cast<double>(tap);
      exact[tap] = old < side ? lanczos((old - middle(i)) / widening) : 0;
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
      across_(across, picture.width()),
      down_(down, picture.height()),
      resizeAcross_(MARBELOT_FASTEST(resizeAcross, resizeAcrossFast)),
      resizeDown_(MARBELOT_FASTEST(resizeDown, resizeDownFast)),
      pairLength_(across_.first.size() * 8),
      pairPlaces_(down_.taps / 2 + 1),
      pairs_(pairPlaces_ * pairLength_),
      inUse_(down_.taps / 2) {}

void Resampler::row(int y, std::uint8_t* to) {
  const auto index = static_cast<std::size_t>(y);
  const auto first = static_cast<std::size_t>(down_.first[index]) / 2;
  const auto place = [&](std::size_t pair) {
    return pairs_.data() + pair % pairPlaces_ * pairLength_;
  };
  for (pairsDone_ = std::max(pairsDone_, first); pairsDone_ < first + inUse_.size();
       pairsDone_ += 2) {
    RowsAtOnce rows = {.pixels = {}, .width = static_cast<std::size_t>(picture_.width())};
    for (std::size_t row = 0; row < RowsAtOnce::count; ++row) {
      const auto old = static_cast<int>(2 * pairsDone_ + row);
      rows.pixels[row] = picture_.row(std::min(old, picture_.height() - 1));
    }
    std::int16_t* const pairs[] = {place(pairsDone_), place(pairsDone_ + 1)};
    resizeAcross_(rows, across_, blocks_, pairs);
  }
  for (std::size_t i = 0; i < inUse_.size(); ++i) inUse_[i] = place(first + i);
  resizeDown_(inUse_, down_.values.data() + index * down_.taps, to,
              static_cast<std::int64_t>(across_.first.size()));
}

}  // namespace marbelot
