// The areas of one value in a plane of pixels, or of values that shade into each other, and their
// shapes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace marbelot {

// Values of pixels, rows top first without gaps.
template <class Value>
struct Plane {
  int width = 0;   // pixels
  int height = 0;  // pixels
  std::vector<Value> values;

  std::size_t at(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
  }
};

// Neighbouring pixels of a row that belong together.
struct Run {
  int y, start, end;
  std::uint32_t area;  // in Areas::areas()
};

// Runs that touch each other from row to row.
struct Area {
  int left = std::numeric_limits<int>::max(), right = 0;
  int top = std::numeric_limits<int>::max(), bottom = 0;
  std::int64_t pixels = 0;
  std::int64_t runs = 0, contacts = 0;

  int width() const { return right - left; }
  int height() const { return bottom - top; }
  // As runs and contacts are the nodes and edges of a connected graph in the plane.
  std::int64_t holes() const { return contacts - runs + 1; }
};

class Areas {
 public:
  // Of the runs that are at least that long; photos consist of shorter ones. Pixels that touch each
  // other belong together if none of the three lower bytes of their values differs by more than
  // `step`.
  Areas(const Plane<std::uint32_t>& plane, int shortestRun, int step);

  const std::vector<Run>& runs() const { return runs_; }
  const std::vector<Area>& areas() const { return areas_; }

 private:
  bool join(std::uint32_t a, std::uint32_t b) const;
  void addRow(const Plane<std::uint32_t>& plane, int y, int shortestRun);
  void touch(const Plane<std::uint32_t>& plane, std::size_t above, std::size_t first);
  std::uint32_t rootOf(std::uint32_t run);
  void measure();

  int step_;
  std::vector<Run> runs_;
  std::vector<std::uint32_t> contacts_;  // of each run with the row above
  std::vector<Area> areas_;
};

}  // namespace marbelot
