// Points, sizes and rectangles of the screen, in points. The origin is the bottom left corner, of
// the main screen or of the window, and y grows up.
#pragma once

#include <algorithm>

namespace marbelot {

struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

struct Size {
  double width = 0;
  double height = 0;
  bool operator==(const Size&) const = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool operator==(const Rect&) const = default;

  double maxX() const { return x + width; }
  double maxY() const { return y + height; }
  double midX() const { return x + width / 2; }
  double midY() const { return y + height / 2; }
  Point origin() const { return {x, y}; }
  Size size() const { return {width, height}; }
  bool isEmpty() const { return width <= 0 || height <= 0; }

  // The left and lower edges belong to it, the right and upper ones do not.
  bool contains(Point point) const {
    return point.x >= x && point.x < maxX() && point.y >= y && point.y < maxY();
  }
  // Larger by `by` on every side.
  Rect enlarged(double by) const { return {x - by, y - by, width + 2 * by, height + 2 * by}; }
  // Empty, at the origin, when they have nothing in common.
  Rect intersection(const Rect& other) const {
    const double left = std::max(x, other.x), right = std::min(maxX(), other.maxX());
    const double bottom = std::max(y, other.y), top = std::min(maxY(), other.maxY());
    return right > left && top > bottom ? Rect{left, bottom, right - left, top - bottom} : Rect{};
  }
  // The smallest that holds both; an empty one adds nothing.
  Rect unionWith(const Rect& other) const {
    if (isEmpty()) return other;
    if (other.isEmpty()) return *this;
    const double left = std::min(x, other.x), bottom = std::min(y, other.y);
    return {left, bottom, std::max(maxX(), other.maxX()) - left,
            std::max(maxY(), other.maxY()) - bottom};
  }
};

}  // namespace marbelot
