// The pictures that were taken on command: their folder, their menu and what its items do.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "image/newest_images.h"
#include "platform/menu.h"
#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// The folder of captures, which need not exist: whoever only looks for captures does not make it,
// or a new user's pictures folder with it, in which the desktop would then save its screenshots.
std::string capturesFolder();
// The same, made if it can be.
std::string madeCapturesFolder();

// Main thread only; everything it is given outlives it. The actions on one picture take its path
// and serve any image file.
class CaptureHistory {
 public:
  CaptureHistory(Platform& platform, Shell& shell, ActionTable& actions);

  // Files that the actions were asked to take away have gone, or could not.
  std::function<void()> onTrashed;

  // Looks in the background what the folder holds by now.
  void refresh() { captures_.refresh(capturesFolder()); }
  // The newest captures as they are known.
  std::shared_ptr<Menu> menu() const;

 private:
  void copyHistory(const std::string& path);
  void clearHistory();
  void trash(std::vector<std::string> paths);

  Platform& platform_;
  Shell& shell_;
  NewestImages captures_;
  Task copying_;
  Task clearing_;
  std::uint64_t lastTrashing_ = 0;
  std::map<std::uint64_t, Task> trashing_;
};

}  // namespace marbelot
