// The clipboard history for those who are not looking at the menu: listed, picked from and deleted
// from by scripts.
#pragma once

#include <optional>
#include <string>

#include "clipboard/clipboard_history.h"
#include "clipboard/history_menus.h"

namespace marbelot {

// Main thread only; both outlive it. An id is a short text that no other entry ever has, in this
// run or another.
class HistoryRequests {
 public:
  HistoryRequests(HistoryMenus& menus, ClipboardHistory& history)
      : menus_(menus), history_(history) {}

  // A JSON array of the entries, the newest first: id, category, title as in the menu (secrets
  // masked) and date (seconds since 1970). Only those that have `search` in what may be shown of
  // them, whatever its case; and only those of the category, e.g. "url", unless that is empty.
  std::string list(const std::string& search, const std::string& category);
  // As the menu does. Both return an error for the user, empty when done.
  std::string copy(const std::string& id);
  std::string remove(const std::string& id);

 private:
  std::optional<std::size_t> indexOf(const std::string& id) const;

  HistoryMenus& menus_;
  ClipboardHistory& history_;
};

}  // namespace marbelot
