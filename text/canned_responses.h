// Canned responses: snippets that the user keeps to put on the clipboard.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; the platform and the shell outlive it.
class CannedResponses {
  Platform& platform_;

 public:
  // The text of the history entry that a menu item stands for, null when there is none.
  using HistoryText = std::function<SharedText(const MenuItem& sender)>;

  CannedResponses(Platform& platform, Shell& shell, ActionTable& actions, HistoryText historyText);

  // The application's state, open to its menus and its tests. Oldest first.
  Setting<std::vector<SharedText>> cannedResponses{platform_.defaults, "cannedResponses"};

  // The submenu of "Canned responses".
  std::shared_ptr<Menu> menu() const;
  // Appends the text, trimmed of blanks, unless it is there already, and says which.
  void saveText(const SharedText& text);

 private:
  void append(std::string text);
  void changed();
  std::optional<std::size_t> indexOf(const MenuItem& sender) const;
  void copyCanned(const MenuItem& sender);
  void addCanned();
  void removeCanned(const MenuItem& sender);

  Shell& shell_;
  const HistoryText historyText_;
};

}  // namespace marbelot
