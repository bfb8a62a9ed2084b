// The menu of the copied images' files.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "clipboard/clipboard_history.h"
#include "platform/menu.h"
#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it. Its actions take a file's path and serve
// any image file.
class ImageHistory {
 public:
  ImageHistory(Platform& platform, Shell& shell, ActionTable& actions, ClipboardHistory& history);

  // The newest images of the folder of copied images.
  std::shared_ptr<Menu> imageHistoryMenu();

 private:
  using Dates = std::unordered_map<std::string, double>;  // seconds since 1970 by file name

  static Dates modificationDates(const std::string& folder, const std::vector<std::string>& names);
  // None while the dates of a large folder are still being read.
  std::optional<std::vector<std::string>> newestImages(const std::string& folder);
  void copyHistory(const std::string& path);

  Platform& platform_;
  Shell& shell_;
  ClipboardHistory& history_;
  // The dates that are known, so that a folder of thousands need not be asked about each again.
  std::string knownFolder_;
  Dates modified_;
  std::optional<Task> reading_;
};

}  // namespace marbelot
