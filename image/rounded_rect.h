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

// How much of each pixel a rounded rectangle covers.
class Coverage {
 public:
  // The rectangle is centred on a canvas of this size in pixels.
  Coverage(const RoundedRect& rect, int width, int height);

  // A row is the same from left to right as from right to left: nothing up to `begin`, then `ramp`,
  // then `inner` up to the middle.
  struct Row {
    int begin = 0;
    std::vector<std::uint8_t> ramp;
    std::uint8_t inner = 0;

    int innerBegin() const { return begin + static_cast<int>(ramp.size()); }
    std::uint8_t at(int x, int width) const;
  };
  const Row& row(int y);

 private:
  double shareOf(int x, int y) const;

  RoundedRect rect_;
  int width_, height_;
  double left_, top_, right_, bottom_;
  Row row_;
  int rowOf_ = -1;
};

}  // namespace marbelot
