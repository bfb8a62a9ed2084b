// The place that all panels share, and what moves them from one place to another.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "hud/placement.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it.
class HUDPlacement {
  Platform& platform_;

 public:
  HUDPlacement(Platform& platform, ActionTable& actions);
  HUDPlacement(const HUDPlacement&) = delete;
  HUDPlacement& operator=(const HUDPlacement&) = delete;

  Setting<std::int64_t> hudPopupPlacement{platform_.defaults, "hudPopupPlacement",
                                          topRightPlacement};

  int placement() const { return placementOf(hudPopupPlacement); }
  // Where a panel of this size belongs at present: its place, or beside what stands there already.
  // `panel` itself, if it is open, does not.
  Point origin(Size size, const Window* panel = nullptr) const;
  Rect area() const;

  // While the handle lives, the window is an open panel: the arrow keys and "cycleHUDPlacement"
  // move it, others stand beside it, and it is put back in place when its screen goes away.
  [[nodiscard]] Task follow(Window& window);
  // The frame of what panels stand beside though it is none of them; none while it is hidden.
  std::function<std::optional<Rect>()> standing;

  void cycleHUDPlacement();
  // Moves the open panels when it is an arrow key, and tells whether it was one.
  bool onArrow(KeyCode key);

  // Watches for keys in windows of the program; they are acted on only while a panel is open.
  void installLocalMonitor();

  // The application's state, open to its tests.
  std::optional<Task> hudArrowLocalMonitor, hudArrowGlobalMonitor;

 private:
  bool areKeysTaken() const;
  Point beside(Size size, std::vector<Rect> taken) const;
  void store(int placement, bool animated);
  void placeAll(bool animated);
  void screensChanged();
  void updateMonitors();

  std::map<int, Window*> open_;  // the oldest first
  int lastId_ = 0;
  std::shared_ptr<char> alive_ = std::make_shared<char>();
  Task screens_;
};

}  // namespace marbelot
