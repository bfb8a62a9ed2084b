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
  enum class Begin {
    within,  // never beyond the side, unless that is shorter than the taps
    even     // begins at even pixels, and may end beyond the side, where all weights are 0
  };
  ResamplingWeights(const SampledAxis& axis, int side, Begin where);

  std::size_t taps;        // a multiple of 4 when within, else even
  std::vector<int> first;  // for each new pixel
  std::vector<std::int16_t>
      values;  // `taps` for each new pixel; they add up to 1 << 14, each below 2 << 14
};

class Resampler {
 public:
  // Keeps a reference to the picture.
  Resampler(const Bitmap& picture, const SampledAxis& across, const SampledAxis& down);

  // Writes row `y` of the new picture. Rows are asked for from top to bottom.
  void row(int y, std::uint8_t* to);

 private:
  // Two old rows made as wide as the new picture.
  using Across = void (*)(const std::uint8_t* const rows[2], const ResamplingWeights& weights,
                          const std::vector<std::int16_t>& spread, std::int16_t* to);
  // A new row of `width` pixels, from pairs of rows and two weights for each pair.
  using Down = void (*)(std::span<const std::int16_t* const> pairs, const std::int16_t* weights,
                        std::uint8_t* to, std::int64_t width);

  const std::uint8_t* oldRow(int y, std::vector<std::uint8_t>& padded) const;

  const Bitmap& picture_;
  ResamplingWeights across_, down_;
  Across resizeAcross_;
  Down resizeDown_;
  std::vector<std::int16_t> spread_;  // the weights across as the fast path wants them
  std::size_t pairLength_;
  // Old rows made as wide as the new picture, two and two: pair i, which stands at i modulo the
  // pairs in use, has the channels of rows 2i and 2i + 1 by turns.
  std::vector<std::int16_t> pairs_;
  std::size_t pairsDone_ = 0;
  std::vector<const std::int16_t*> inUse_;  // the pairs for a new row
  std::vector<std::uint8_t> padded_[2];     // rows that are shorter than the taps
};

}  // namespace marbelot
