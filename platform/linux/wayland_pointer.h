// Where the pointer of a Wayland desktop is, which tells it to nobody but the window below it.
#pragma once

#include <chrono>
#include <optional>

namespace marbelot {

// In the compositor's points, from the top left.
struct WaylandPointerPlace {
  struct Box {
    int x = 0, y = 0, width = 0, height = 0;
  };
  int x = 0, y = 0;
  Box usable;   // the part of its screen that no bar covers
  Box desktop;  // all screens
};

// Puts clear surfaces over all screens, bars included, until one of them is told. Nothing without a
// Wayland desktop that lets programs do so, when it does not answer within `limit`, or when there
// is no pointer.
std::optional<WaylandPointerPlace> findWaylandPointer(std::chrono::milliseconds limit);

}  // namespace marbelot
