// Rounded rectangles in the middle of a canvas, with smooth edges.
#pragma once

#include <cstdint>
#include <vector>

namespace marbelot {

struct RoundedRect {
  double width = 0, height = 0;  // pixels
  double radius = 0;             // of the corners, at most half of the shorter side

  // How far the left and right edges draw in at a distance below the top edge or above the bottom
  // one; the same for the top and bottom edges at a distance from a side.
  double inset(double distance) const;
};

// How much of each pixel a rounded rectangle covers: 0 to 1.
class Coverage {
 public:
  // The rectangle is centred on a canvas of this size in pixels.
  Coverage(const RoundedRect& rect, std::int64_t width, std::int64_t height);

  // A row is the same from left to right as from right to left: nothing up to `begin`, then `ramp`,
  // then `inner` up to the middle.
  struct Row {
    std::int64_t begin = 0;
    std::vector<float> ramp;
    float inner = 0;

    std::int64_t innerBegin() const { return begin + static_cast<std::int64_t>(ramp.size()); }
    // In column x of a row of this width.
    float at(std::int64_t x, std::int64_t width) const;
  };
  // Holds until the next call.
  const Row& row(std::int64_t y);

 private:
  double shareOf(std::int64_t x, std::int64_t y) const;

  RoundedRect rect_;
  std::int64_t width_, height_;
  double left_, top_, right_, bottom_;
  Row row_;
  std::int64_t rowOf_ = -1;
};

}  // namespace marbelot
