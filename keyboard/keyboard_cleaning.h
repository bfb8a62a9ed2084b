// Keyboard cleaning: a dark window over all screens that swallows every key until Escape has been
// pressed three times.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// Swallows all keys and counts Escape.
class KeyboardBlockView : public CanvasDelegate {
 public:
  std::function<void()> onEsc = [] {};

  void draw(Painter& painter, Size bounds) override;
  bool keyDown(const KeyEvent& key) override;
  bool performKeyEquivalent(const KeyEvent& key) override { return keyDown(key); }
};

// Main thread only; the platform and the shell outlive it.
class KeyboardCleaning {
 public:
  KeyboardCleaning(Platform& platform, Shell& shell, ActionTable& actions);

  bool keyboardBlocked = false;
  int escCount = 0;

  void toggleKeyboardBlock();

  // The application's state, open to its tests.
  std::unique_ptr<Window> blockWindow;  // while the keyboard is blocked
  KeyboardBlockView blockView;
  Task escResetWork;

 private:
  void start();
  void end();
  void escapePressed();
  void updateLabel();
  void coverScreens();
  WindowDescription keyboardBlockWindow(const Rect& all);
  std::vector<View> views(const Rect& all);

  Platform& platform_;
  Shell& shell_;
  std::string leftOut_;  // what the system lets through all the same
  Task closing_, screens_;
};

}  // namespace marbelot
