// Three, two, one in the middle of the screen, before a picture of it is taken.
#pragma once

#include <functional>
#include <memory>

#include "platform/platform.h"

namespace marbelot {

// Main thread only; the platform outlives it.
class Countdown {
 public:
  explicit Countdown(Platform& platform) : platform_(platform) {}

  // Shows each number for a second, and runs `action` a moment after the last one has gone from the
  // screen. Takes the place of a countdown that is running.
  void run(int from, std::function<void()> action);
  void cancel();

 private:
  void show(int value);
  void hide();

  Platform& platform_;
  std::unique_ptr<Window> countdownWindow_;  // made for the first countdown
  std::function<void()> action_;
  Task next_;
};

}  // namespace marbelot
