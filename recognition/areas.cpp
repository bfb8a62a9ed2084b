#include "recognition/areas.h"

#include <algorithm>
#include <cstdlib>

namespace marbelot {

Areas::Areas(const Plane<std::uint32_t>& plane, int shortestRun, int step) : step_(step) {
  std::size_t above = 0;
  for (int y = 0; y < plane.height; ++y) {
    const std::size_t first = runs_.size();
    addRow(plane, y, shortestRun);
    touch(plane, above, first);
    above = first;
  }
  measure();
}

bool Areas::join(std::uint32_t a, std::uint32_t b) const {
  const auto near = [&](int shift) {
    return std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)) <=
           step_;
  };
  return a == b || (near(0) && near(8) && near(16));
}

// While the areas are still growing, a run's `area` is another run of the same one, or itself.
void Areas::addRow(const Plane<std::uint32_t>& plane, int y, int shortestRun) {
  const std::uint32_t* const row = plane.values.data() + plane.at(0, y);
  for (int x = 0; x < plane.width;) {
    int end = x + 1;
    while (end < plane.width && join(row[end - 1], row[end])) ++end;
    if (end - x >= shortestRun)
      runs_.push_back({y, x, end, static_cast<std::uint32_t>(runs_.size())});
    x = end;
  }
  contacts_.resize(runs_.size());
}

void Areas::touch(const Plane<std::uint32_t>& plane, std::size_t above, std::size_t first) {
  const auto touches = [&](const Run& upper, const Run& lower) {
    const int end = std::min(upper.end, lower.end);
    for (int x = std::max(upper.start, lower.start); x < end; ++x)
      if (join(plane.values[plane.at(x, upper.y)], plane.values[plane.at(x, lower.y)])) return true;
    return false;
  };
  std::size_t upper = above;
  for (std::size_t i = first; i < runs_.size(); ++i) {
    while (upper < first && runs_[upper].end <= runs_[i].start) ++upper;
    for (std::size_t k = upper; k < first && runs_[k].start < runs_[i].end; ++k) {
      if (!touches(runs_[k], runs_[i])) continue;
      ++contacts_[i];
      const std::uint32_t a = rootOf(static_cast<std::uint32_t>(k));
      const std::uint32_t b = rootOf(static_cast<std::uint32_t>(i));
      runs_[std::max(a, b)].area = std::min(a, b);
    }
  }
}

std::uint32_t Areas::rootOf(std::uint32_t run) {
  while (runs_[run].area != run) {
    runs_[run].area = runs_[runs_[run].area].area;
    run = runs_[run].area;
  }
  return run;
}

// From now on `area` is the position in areas_.
void Areas::measure() {
  for (std::uint32_t i = 0; i < runs_.size(); ++i) {
    Run& run = runs_[i];
    // The first run of an area is its root, so its area has been numbered already.
    const bool isRoot = run.area == i;
    run.area = isRoot ? static_cast<std::uint32_t>(areas_.size()) : runs_[run.area].area;
    if (isRoot) areas_.emplace_back();
    Area& area = areas_[run.area];
    area.left = std::min(area.left, run.start);
    area.right = std::max(area.right, run.end);
    area.top = std::min(area.top, run.y);
    area.bottom = std::max(area.bottom, run.y + 1);
    area.pixels += run.end - run.start;
    ++area.runs;
    area.contacts += contacts_[i];
  }
  contacts_ = {};
}

}  // namespace marbelot
