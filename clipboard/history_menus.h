// The menus over the clipboard history, and what their items do.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "clipboard/clipboard_history.h"
#include "platform/menu.h"
#include "platform/platform.h"
#include "shell/shell.h"
#include "text/text_analysis.h"

namespace marbelot {

// The filter position that stands for no filter, one past the last category.
inline constexpr std::int64_t noClipTypeFilter = clipCategoryCount;

// Main thread only; everything it is given outlives it. The items of an entry carry the entry's
// index in the history.
class HistoryMenus {
 public:
  HistoryMenus(Platform& platform, Shell& shell, ActionTable& actions, ClipboardHistory& history,
               TextAnalyses& analyses);

  // Given the full text of an entry whose title shows it masked.
  std::function<void(const SharedText& text)> onReveal;

  // Adds what can be done with a text to the actions on its entry.
  std::function<void(Menu& menu, const SharedText& text)> addTextActions;

  std::shared_ptr<Menu> clipboardHistoryMenu();
  std::shared_ptr<Menu> clipboardByTypeMenu();

  // An entry as the menus show it.
  struct Entry {
    std::size_t index = 0;
    ClipCategory category = ClipCategory::image;
    std::shared_ptr<const TextAnalysis> analysis;  // null for an image
    std::string title;
  };

  // All of them, the newest first.
  std::vector<Entry> entries();
  // Puts the entry on the clipboard and makes it the newest; tells the user. False when the
  // clipboard cannot be written to.
  bool copyEntry(std::size_t index);

  // Where the entry that the sender was made for is by now; none when it has gone or the sender
  // carries no index in the history. For everyone's actions on entries.
  std::optional<std::size_t> indexFor(const MenuItem& sender) const;
  // The text of that entry; null also when it is an image.
  SharedText textFor(const MenuItem& sender) const;
  // Its image; none also when it is a text.
  std::optional<Image> imageFor(const MenuItem& sender) const;

 private:
  void tellApart(std::vector<Entry>& entries, const std::vector<std::size_t>& alike) const;
  // `fill` puts the entries into the menu, if there are any.
  template <class Fill>
  std::shared_ptr<Menu> menuOf(Fill fill);
  MenuItem entryItem(const Entry& entry);
  std::shared_ptr<Menu> entryMenu(const MenuItem& item, const Entry& entry) const;
  MenuItem filterItem(const std::vector<Entry>& entries) const;

  void setClipTypeFilter(std::int64_t position);
  // Hands the path of the entry's file to `then`; tells the user when there can be none.
  void withFile(const MenuItem& sender, std::function<void(const std::string& path)> then);
  void copyPath(const std::string& path);

  Platform& platform_;
  Shell& shell_;
  ClipboardHistory& history_;
  TextAnalyses& analyses_;
};

// "Image 640 × 480", in pixels.
std::string imageTitle(const Image& image);

}  // namespace marbelot
