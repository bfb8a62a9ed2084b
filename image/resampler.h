// Pictures in another size: Lanczos with three lobes, widened when shrinking so that every pixel of
// the source counts. On premultiplied values as they are; integers throughout.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/bitmap.h"

namespace marbelot {

// One axis: where the middles of a row of new pixels lie on the picture, in its pixels. The middle
// of new pixel i is at `start + (i + 0.5) * step`.
struct SampledAxis {
  int count = 0;     // of new pixels
  double start = 0;  // within 0 and the picture's side, or near
  double step = 1;   // above 0
};

class Resampler {
 public:
  // Keeps a reference to the picture.
  Resampler(const Bitmap& picture, const SampledAxis& across, const SampledAxis& down);

  // Writes row `y` of the new picture. Rows are asked for from top to bottom.
  void row(int y, std::uint8_t* to);

 private:
  // The weights of one axis: each new pixel is a sum over `taps` old ones.
  struct Weights {
    Weights(const SampledAxis& axis, int side);
    const std::int16_t* of(int pixel) const { return values.data() + std::size_t(pixel) * taps; }

    std::size_t taps = 0;
    std::vector<int> first;            // the first old pixel for each new one
    std::vector<std::int16_t> values;  // `taps` for each new pixel; they add up to one
  };

  const Bitmap& picture_;
  Weights across_, down_;
  std::vector<std::int16_t> rows_;  // the last rows that were narrowed, old row i at i % taps
  int done_ = 0;                    // how many old rows were narrowed
};

}  // namespace marbelot
