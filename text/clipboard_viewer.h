// The window that shows the clipboard's text.
#pragma once

#include <memory>
#include <string>

#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; the platform outlives it.
class ClipboardViewer {
 public:
  ClipboardViewer(Platform& platform, ActionTable& actions);

  // Shows the clipboard as it is now; later changes are not followed.
  void showClipboardViewer();
  // Shows a text that is not the clipboard's.
  void showText(const SharedText& text, const std::string& title);

  // The application's state, open to its menus and its tests.
  std::unique_ptr<Window> viewerWindow;  // made on first use
  const std::string viewerTextView = "viewerTextView";

 private:
  void makeWindow();
  void present(const SharedText& text, bool concealed);
  void showCounts(const SharedText& text);

  Platform& platform_;
  Task counting_;
};

}  // namespace marbelot
