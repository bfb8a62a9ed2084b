// Flatten and trim as the menus offer them: variants whose titles preview what they would do.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "shell/shell.h"
#include "text/flatten_trim.h"

namespace marbelot {

// Main thread only; the platform and the shell outlive it.
class FlattenTrim {
 public:
  // Whether the clipboard's contents may be neither kept nor shown.
  using Withheld = std::function<bool(const PasteboardContents&)>;

  FlattenTrim(Platform& platform, Shell& shell, ActionTable& actions, Withheld withheld);

  struct FlattenVariant {
    MenuItemRef item;
    std::string_view title;
    std::string_view separator;
  };
  struct TrimVariant {
    MenuItemRef item;
    std::string_view title;
    std::string_view mode;
  };
  // The application's state, open to its menus and its tests.
  // The status menu's, kept to be refreshed; empty until it is built.
  MenuItemRef flattenItem;
  MenuItemRef trimItem;
  std::vector<FlattenVariant> flattenVariants;
  std::vector<TrimVariant> trimVariants;

  // Adds "Flatten newlines" and "Trim clipboard" to the status menu, with their present titles.
  void addStatusItems(Menu& menu);
  // Brings the status menu's items in line with the clipboard.
  void refresh();
  // The same items for the Dock menu: as they are now, and without key equivalents.
  void addDockItems(Menu& menu);

 private:
  // What the menus say about a text.
  struct Titles {
    bool hasText = false;
    bool hasBreak = false;
    std::array<std::string, flattenDefs.size()> flatten;  // previews; empty: none
    std::array<std::string, trimDefs.size()> trim;
  };
  struct Items {
    MenuItemRef flatten, trim;
    std::vector<FlattenVariant> flattenVariants;
    std::vector<TrimVariant> trimVariants;
  };
  // Chosen while another was under way, at that change count of the clipboard.
  struct Step {
    std::int64_t count;
    std::function<void()> run;
  };
  using Operation = std::function<std::optional<std::string>(std::string_view)>;

  static bool previewOf(const std::string& masked, bool whole, Titles& titles);
  static Titles wholeTitles(std::string_view text, bool previews);
  Titles titles();
  static Items addItems(Menu& menu, bool keys);
  static void dress(const Items& items, const Titles& titles);
  void refreshWhenKnown(const SharedText& text, bool previews);

  void flattenClipboard(const MenuItem& sender);
  void trimClipboard(const MenuItem& sender);
  // Replaces the clipboard's text by what `operation` makes of it (none: leaves it alone) and says
  // `message`. A large text is worked on in the background, one operation after another; whatever
  // is copied meanwhile stays on the clipboard, and the user is told.
  void replaceText(const Operation& operation, const std::string& message);

  Platform& platform_;
  Shell& shell_;
  const Withheld withheld_;

  // Titles found in the background, for the clipboard of that change count.
  std::optional<Titles> found_;
  std::int64_t foundFor_ = -1;
  bool foundPreviews_ = false;
  Task finding_;

  Task working_;
  bool busy_ = false;
  std::vector<Step> next_;
};

}  // namespace marbelot
