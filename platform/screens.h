// The screens and the pointer. Main thread only.
#pragma once

#include <functional>
#include <vector>

#include "platform/geometry.h"
#include "platform/main_queue.h"

namespace marbelot {

struct Screen {
  Rect frame;         // of all of it
  Rect visibleFrame;  // without menu bar, Dock and panels
  double scale = 1;   // pixels per point
  bool operator==(const Screen&) const = default;
};

class Screens {
 public:
  virtual ~Screens() = default;
  // The main screen first; empty when there is none.
  virtual std::vector<Screen> all() const = 0;
  virtual Point pointer() const = 0;
  // Calls `changed` after a screen came, went or changed, until the handle is dropped.
  [[nodiscard]] virtual Task onChange(std::function<void()> changed) = 0;
};

}  // namespace marbelot
