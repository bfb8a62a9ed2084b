// The window in which a text is edited on its way back to the clipboard.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; the platform and the shell outlive it.
class TextEditor {
 public:
  // The text of the history entry that a menu item stands for, null when there is none.
  using HistoryText = std::function<SharedText(const MenuItem& sender)>;

  TextEditor(Platform& platform, Shell& shell, ActionTable& actions, HistoryText historyText);

  // Replaces what the window shows. What is made of a `concealed` text is saved as concealed.
  void openEditor(const SharedText& text, const std::string& title, bool concealed = false);

  // The application's state, open to its menus and its tests.
  std::unique_ptr<Window> editTextWindow;  // made on first use
  const std::string editTextView = "editTextView";

 private:
  void makeWindow();
  void editClipboardText();
  void saveEditorToClipboard();

  Platform& platform_;
  Shell& shell_;
  const HistoryText historyText_;
  bool concealed_ = false;
};

}  // namespace marbelot
