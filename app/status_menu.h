// The status item's menu, the program's main surface: its structure, titles and rules.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "capture/screenshot_access.h"
#include "platform/menu.h"

namespace marbelot {

// What the menu shows of the application itself.
struct MenuState {
  std::int64_t count = 0;                 // screenshots copied since launch
  std::optional<std::string> lastCopied;  // file name of the last one
  bool showClipboardPreview = true;
};

class StatusMenu {
 public:
  StatusMenu(const MenuState& state, const ScreenshotAccess& access);

  // One tree for the life of the program; building replaces its items.
  const std::shared_ptr<Menu>& menu() const { return menu_; }

  void buildMenu();
  // Brings the items that depend on the moment up to date, in place.
  void refresh();

  // Built afresh on each request.
  std::shared_ptr<Menu> dockMenu() const;

 private:
  std::shared_ptr<Menu> settingsMenu() const;

  const MenuState& state_;
  const ScreenshotAccess& access_;
  std::shared_ptr<Menu> menu_ = std::make_shared<Menu>();
};

}  // namespace marbelot
