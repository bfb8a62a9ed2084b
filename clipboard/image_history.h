// The menu of the copied images' files.
#pragma once

#include <memory>
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
  std::vector<std::string> newestImages(const std::string& folder);
  void copyHistory(const std::string& path);

  Platform& platform_;
  Shell& shell_;
  ClipboardHistory& history_;
  // When the folder's files were modified, in seconds since 1970, so that a folder of thousands
  // need not be asked about each of them again.
  std::string knownFolder_;
  std::unordered_map<std::string, double> modified_;
};

}  // namespace marbelot
