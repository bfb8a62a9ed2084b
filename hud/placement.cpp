#include "hud/placement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace marbelot {
namespace {

constexpr double edgeMargin = 16;
constexpr double leastMargin = 8;
constexpr double gap = 8;
constexpr Rect areaWithoutScreen{0, 0, 1440, 900};

// The lower bound wins where both cannot be kept.
double clamped(double value, double low, double high) {
  return std::max(std::min(value, high), low);
}

Point clampedTo(const Rect& area, Size panel, Point origin, double margin) {
  return {clamped(origin.x, area.x + margin, area.maxX() - panel.width - margin),
          clamped(origin.y, area.y + margin, area.maxY() - panel.height - margin)};
}

}  // namespace

int placementOf(std::int64_t stored) {
  return stored >= 0 && stored < placementCount ? static_cast<int>(stored) : topRightPlacement;
}

Rect screenArea(const std::vector<Screen>& screens, Point pointer) {
  if (screens.empty()) return areaWithoutScreen;
  const auto at = std::find_if(screens.begin(), screens.end(), [&](const Screen& screen) {
    return screen.frame.contains(pointer);
  });
  return at == screens.end() ? screens.front().visibleFrame : at->visibleFrame;
}

Rect screenAreaOf(const std::vector<Screen>& screens, const Rect& frame) {
  if (screens.empty()) return areaWithoutScreen;
  const Screen* best = &screens.front();
  double most = 0;
  for (const Screen& screen : screens) {
    const Rect common = screen.frame.intersection(frame);
    if (common.width * common.height <= most) continue;
    most = common.width * common.height;
    best = &screen;
  }
  return best->visibleFrame;
}

Point originForPlacement(Size panel, int placement, const Rect& area) {
  const std::array<double, 3> x{area.x + edgeMargin, area.midX() - panel.width / 2,
                                area.maxX() - panel.width - edgeMargin};
  const std::array<double, 3> y{area.maxY() - panel.height - edgeMargin,
                                area.midY() - panel.height / 2, area.y + edgeMargin};
  return clampedTo(
      area, panel,
      {x[static_cast<std::size_t>(placement % 3)], y[static_cast<std::size_t>(placement / 3)]},
      leastMargin);
}

Point originBeside(Size panel, int placement, const Rect& area, const std::vector<Rect>& taken) {
  const Point place = originForPlacement(panel, placement, area);
  std::vector<double> columns{place.x}, rows{place.y};
  for (const Rect& other : taken) {
    columns.insert(columns.end(), {other.x - gap - panel.width, other.maxX() + gap});
    rows.insert(rows.end(), {other.y - gap - panel.height, other.maxY() + gap});
  }
  const auto isFree = [&](Point origin) {
    const Rect frame{origin.x, origin.y, panel.width, panel.height};
    return originWithin(area, panel, origin) == origin &&
           std::none_of(taken.begin(), taken.end(),
                        [&](const Rect& other) { return !other.intersection(frame).isEmpty(); });
  };
  Point best = place;
  double nearest = std::numeric_limits<double>::infinity();
  for (const double x : columns) {
    for (const double y : rows) {
      const double distance = std::hypot(x - place.x, y - place.y);
      if (distance >= nearest || !isFree({x, y})) continue;
      nearest = distance;
      best = {x, y};
    }
  }
  return best;
}

Point originWithin(const Rect& area, Size panel, Point origin) {
  return clampedTo(area, panel, origin, leastMargin);
}

int nextCorner(int placement) {
  constexpr std::array<int, 4> clockwise{0, 2, 8, 6};
  const auto at = std::find(clockwise.begin(), clockwise.end(), placement);
  if (at == clockwise.end() || at + 1 == clockwise.end()) return clockwise.front();
  return *(at + 1);
}

std::optional<int> placementAfterKey(int placement, KeyCode key) {
  int column = placement % 3, row = placement / 3;
  switch (key) {
    case KeyCode::leftArrow:
      column = std::max(column, 1) - 1;
      break;
    case KeyCode::rightArrow:
      column = std::min(column, 1) + 1;
      break;
    case KeyCode::upArrow:
      row = std::max(row, 1) - 1;
      break;
    case KeyCode::downArrow:
      row = std::min(row, 1) + 1;
      break;
    default:
      return std::nullopt;
  }
  return row * 3 + column;
}

}  // namespace marbelot
