// Whether the screenshot folder can be read, and what the user is told when it cannot.
#pragma once

#include <functional>
#include <string>

#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

class ScreenshotAccess {
 public:
  ScreenshotAccess(Platform& platform, Shell& shell, ActionTable& actions);

  // The application's state, open to its menus and its tests.
  // As the last probe found it; assumed until there was one.
  bool screenshotFolderReadable = true;
  // What is wrong, with the folder's name; empty while it is readable.
  std::string problem;

  // Called after each probe.
  std::function<void()> onProbed;

  // Lists the folder in the background and rebuilds the menu when the answer is a new one.
  void probe();
  void openScreenshotAccessSettings();

 private:
  Platform& platform_;
  Shell& shell_;
  Task probe_;
  bool probing_ = false;
};

}  // namespace marbelot
