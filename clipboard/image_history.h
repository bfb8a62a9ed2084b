// The menu of the copied images' files.
#pragma once

#include <memory>

#include "clipboard/clipboard_history.h"
#include "image/newest_images.h"
#include "platform/menu.h"
#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it. Its items' actions are those on captures,
// which serve any image file.
class ImageHistory {
 public:
  ImageHistory(Platform& platform, Shell& shell, const ClipboardHistory& history);

  // Looks in the background what the folder of copied images holds by now.
  void refresh() { images_.refresh(history_.clipImagesFolder()); }
  // The newest images as they are known.
  std::shared_ptr<Menu> imageHistoryMenu() const;

 private:
  const ClipboardHistory& history_;
  NewestImages images_;
};

}  // namespace marbelot
