// The shadow of a rounded rectangle: its picture blurred by a Gaussian.
#pragma once

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
  SoftShadow(const RoundedRect& rect, const Shadow& shadow, int width, int height);

  // The left half of a row (the middle column included): its alpha levels, one for each pixel up to
  // where they stop changing; the last holds from there to the middle.
  const std::vector<std::uint8_t>& row(int y);

 private:
  struct Grid {
    double start = 0, step = 1;  // grid point i is at start + i * step from the edge
    std::size_t count = 0;
    Grid(double from, double to, double sigma);
  };
  // The blurred rectangle at the grid's points, times 255 and the opacity; row by row.
  std::vector<double> blurred(const RoundedRect& rect, const Shadow& shadow) const;

  double left_, top_, height_;  // of the shadow's rectangle
  Grid across_, down_;   // distances from the left edge, and from the nearer of top and bottom
  std::size_t columns_;  // how many pixels of a row are drawn
  std::vector<float> stretched_;  // `columns_` for each row of the grid
  std::vector<std::uint8_t> row_;
};

}  // namespace marbelot
