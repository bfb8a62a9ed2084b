// Keeps a panel while the pointer rests on it, and lets it go when the pointer is away.
#pragma once

#include <functional>
#include <optional>

#include "platform/main_queue.h"
#include "platform/screens.h"
#include "platform/window.h"

namespace marbelot {

// Main thread only; everything it is given outlives it.
class PointerWatch {
 public:
  // `away` is called once, after which nothing is watched.
  PointerWatch(MainQueue& queue, const Screens& screens, std::function<void()> away)
      : queue_(queue), screens_(screens), away_(std::move(away)) {}

  // Watches the window. Until the pointer has been on it for the first time, it stays for
  // `seconds`, or, with none, as long as it takes.
  void start(const Window& window, std::optional<double> seconds);
  void stop();
  // The pointer goes elsewhere on the panel's behalf, as into a menu of it: it stays until the
  // pointer has come back and gone away again.
  void hold();

  // The application's state, open to its tests.
  Task previewHUDWatch;  // looks where the pointer is
  Task previewHUDWork;   // the hiding to come

  // Whether the pointer is on the window, or so near that it is meant.
  static bool isOn(const Window& window, const Screens& screens);

 private:
  void tick();

  MainQueue& queue_;
  const Screens& screens_;
  const std::function<void()> away_;
  const Window* window_ = nullptr;
  bool held_ = false;
  bool wasOn_ = false;
};

}  // namespace marbelot
