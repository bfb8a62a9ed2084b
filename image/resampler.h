// Pictures in another size: Lanczos with three lobes, widened when shrinking so that every pixel of
// the source counts. On premultiplied values as they are; integers throughout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/bitmap.h"

namespace marbelot {

// One axis: where the middles of a row of new pixels lie on the picture, in its pixels. The middle
// of new pixel i is at `start + (i + 0.5) * step`; beyond the picture its outermost pixels go on.
struct SampledAxis {
  int count = 0;  // of new pixels
  double start = 0;
  double step = 1;  // above 0
};

// Each new pixel of an axis is a sum over `taps` old ones, from `first` on.
struct ResamplingWeights {
  ResamplingWeights(const SampledAxis& axis, int side);

  std::size_t taps = 0;    // even
  std::vector<int> first;  // for each new pixel; even. Weights of taps beyond the side are 0.
  std::vector<std::int16_t>
      values;  // `taps` for each new pixel; they add up to 1 << 14, each below 2 << 14
};

// Rows of the picture that are resized across together.
struct RowsAtOnce {
  static constexpr std::size_t count = 4;
  const std::uint8_t* pixels[count];
  std::size_t width;  // in pixels
};

// Two neighbouring pixels of each of those rows: the channels of both by turns.
struct alignas(32) PixelBlock {
  std::int16_t values[RowsAtOnce::count][8];
};

class Resampler {
 public:
  // Keeps a reference to the picture.
  Resampler(const Bitmap& picture, const SampledAxis& across, const SampledAxis& down);

  // Writes row `y` of the new picture. Rows are asked for from top to bottom.
  void row(int y, std::uint8_t* to);

 private:
  // Makes two pairs of old rows as wide as the new picture.
  using Across = void (*)(const RowsAtOnce& rows, const ResamplingWeights& weights,
                          std::vector<PixelBlock>& blocks, std::int16_t* const to[2]);
  // A new row of `width` pixels, from pairs of rows and two weights for each pair.
  using Down = void (*)(std::span<const std::int16_t* const> pairs, const std::int16_t* weights,
                        std::uint8_t* to, std::int64_t width);

  const Bitmap& picture_;
  ResamplingWeights across_, down_;
  Across resizeAcross_;
  Down resizeDown_;
  std::vector<PixelBlock> blocks_;  // old rows as the fast path wants them
  // Old rows made as wide as the new picture, two and two: pair i, which stands at i modulo the
  // places for pairs, has the channels of rows 2i and 2i + 1 by turns.
  std::size_t pairLength_, pairPlaces_;
  std::vector<std::int16_t> pairs_;
  std::size_t pairsDone_ = 0;
  std::vector<const std::int16_t*> inUse_;  // the pairs for a new row
};

}  // namespace marbelot
