// The status item's menu, the program's main surface: its structure, titles and rules.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "app/software_updates.h"
#include "capture/capture_commands.h"
#include "capture/capture_history.h"
#include "capture/screenshot_access.h"
#include "capture/watched_folder.h"
#include "clipboard/clipboard_history.h"
#include "clipboard/history_menus.h"
#include "clipboard/image_history.h"
#include "hud/always_on_widget.h"
#include "hud/clipboard_hud.h"
#include "keyboard/keyboard_cleaning.h"
#include "platform/menu.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"
#include "text/canned_responses.h"
#include "text/collect_copies.h"
#include "text/flatten_trim_menus.h"
#include "text/text_actions.h"
#include "text/text_analysis.h"
#include "text/text_recognition.h"

namespace marbelot {

// What the menu shows of the application itself.
struct MenuState {
  std::int64_t count = 0;                 // screenshots copied since launch
  std::optional<std::string> lastCopied;  // file name of the last one
};

// The features whose items the menu holds. They outlive it.
struct MenuParts {
  const MenuState& state;
  const ScreenshotAccess& access;
  const WatchedFolder& watched;
  const CaptureCommands& captureCommands;
  const CaptureHistory& captureHistory;
  const ClipboardHistory& history;
  TextAnalyses& analyses;
  TextActions& textActions;
  HistoryMenus& historyMenus;
  const ImageHistory& imageHistory;
  FlattenTrim& flattenTrim;
  CollectCopies& collectCopies;
  const CannedResponses& cannedResponses;
  const TextRecognition& textRecognition;
  const ClipboardHUD& hud;
  const AlwaysOnWidget& widget;
  const SoftwareUpdates& updates;
  const KeyboardCleaning& keyboardCleaning;
};

class StatusMenu {
  Platform& platform_;

 public:
  StatusMenu(Platform& platform, Shell& shell, ActionTable& actions, MenuParts parts);

  Setting<bool> showClipboardPreview{
      platform_.defaults,
      "showClipboardPreview",
      true,
      {.registered = true, .toggle = {"Show clipboard preview at top", "toggleClipPreview"}}};

  // One tree for the life of the program; building replaces its items.
  const std::shared_ptr<Menu>& menu() const { return menu_; }

  void buildMenu();
  // Brings the items that depend on the moment up to date, in place; the menu has been built.
  void refresh();

  // Built afresh on each request.
  std::shared_ptr<Menu> dockMenu();

 private:
  std::shared_ptr<Menu> settingsMenu() const;
  std::string previewTitle();
  void refreshOpenActions();
  void refreshImageItems();

  const MenuParts parts_;
  const std::shared_ptr<Menu> menu_ = std::make_shared<Menu>();

  // Items that are refreshed in place; empty until the menu is built.
  MenuItemRef clipPreviewItem;
  MenuItemRef openActionsItem;
  MenuItemRef editImageItem;
  MenuItemRef ocrClipItem;
  MenuItemRef imgTagClipItem;
  MenuItemRef captureItem;
  MenuItemRef historyItem;
  MenuItemRef clipHistoryItem;
  MenuItemRef clipByTypeItem;
  MenuItemRef imageHistoryItem;
};

}  // namespace marbelot
