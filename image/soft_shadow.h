// The shadow of a rounded rectangle: its picture blurred by a Gaussian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "image/rounded_rect.h"

namespace marbelot {

struct Shadow {
  double sigma = 0;    // of the Gaussian, pixels
  double down = 0;     // how far it falls below the rectangle, pixels
  double opacity = 0;  // of its black where nothing else is, 0 to 1
};

// A blurred picture is so smooth that it is computed exactly only on a coarse grid and drawn by
// cubic interpolation, to within a quarter of a level.
class SoftShadow {
 public:
  // The rectangle is centred on a canvas of this size in pixels.
  SoftShadow(const RoundedRect& rect, const Shadow& shadow, std::int64_t width,
             std::int64_t height);

  // The alpha levels of a row, of which only the first and the last `sides` columns can be relied
  // on: the rest is behind the rectangle. Holds until the next call.
  const std::uint8_t* row(std::int64_t y, std::int64_t sides);

 private:
  // Points at the same distance from one another, and cubics through their values.
  struct Grid {
    double start = 0, step = 1;  // distances from an edge
    std::size_t count = 0;

    Grid(double from, double to, double sigma);
    double at(std::size_t i) const { return start + static_cast<double>(i) * step; }
    // Four weights for the points from `first` on.
    struct Cubic {
      std::size_t first;
      std::array<double, 4> weights;
    };
    Cubic cubic(double at) const;
  };
  std::vector<double> blurred(const RoundedRect& rect, const Shadow& shadow) const;

  double left_, top_, height_;    // of the shadow's rectangle, on the canvas
  Grid across_, down_;            // from the left edge; from the nearer of the top and the bottom
  std::int64_t width_, columns_;  // of the canvas; those from the left where a row still changes
  std::vector<float> stretched_;  // the levels of those columns for each row of the grid
  std::vector<std::uint8_t> row_;
  double rowOf_ = 0;
  std::int64_t sides_ = 0;
};

}  // namespace marbelot
