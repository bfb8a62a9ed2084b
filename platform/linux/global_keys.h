// The keys that are pressed anywhere on the X server. Nobody else gets less of them.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <optional>

#include "platform/keyboard.h"
#include "platform/linux/x11_connection.h"

namespace marbelot {

class GlobalKeys {
 public:
  // Nothing is told on servers without XInput 2.
  explicit GlobalKeys(std::function<void(const KeyEvent&)> pressed);

 private:
  bool listen();
  void read();
  // None for keys that only change what others mean.
  std::optional<KeyEvent> eventOf(std::uint8_t keycode, bool isRepeat);

  const std::function<void(const KeyEvent&)> pressed_;
  X11Connection connection_{{}};
  std::uint8_t opcode_ = 0;  // of XInput
  std::optional<QSocketNotifier> readable_;
};

}  // namespace marbelot
