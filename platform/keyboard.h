// Key presses as windows and monitors tell them.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/main_queue.h"

namespace marbelot {

// Places on the keyboard that features know, numbered as in Apple's Carbon header
// HIToolbox/Events.h; a backend of another system translates.
enum class KeyCode : std::uint16_t {
  returnKey = 36,
  enter = 76,  // of the number pad; told as `returnKey`
  tab = 48,
  space = 49,
  escape = 53,
  leftArrow = 123,
  rightArrow = 124,
  downArrow = 125,
  upArrow = 126,
  other = 0xffff,
};

struct KeyEvent {
  KeyCode code = KeyCode::other;
  bool command = false;  // Control on Linux
  bool control = false;
  bool option = false;  // Alt
  bool shift = false;
  bool isRepeat = false;
};

// Sees keys pressed while the handle lives. Main thread only.
class KeyMonitors {
 public:
  virtual ~KeyMonitors() = default;
  // Keys that go to a window of this program, before the window has them. True takes the key away
  // from it.
  [[nodiscard]] virtual Task addLocal(std::function<bool(const KeyEvent&)> pressed) = 0;
  // Keys that go to other programs, which have them all the same. Nothing is told where the system
  // keeps them from us.
  [[nodiscard]] virtual Task addGlobal(std::function<void(const KeyEvent&)> pressed) = 0;
};

}  // namespace marbelot
