#include "app/status_menu.h"

#include "platform/text.h"

namespace marbelot {

StatusMenu::StatusMenu(const MenuState& state, const ScreenshotAccess& access)
    : state_(state), access_(access) {}

void StatusMenu::buildMenu() {
  Menu& menu = *menu_;
  menu.items.clear();
  menu.addDisabled("Marbelot — auto-copy screenshots");
  if (!access_.screenshotFolderReadable) {
    menu.addSeparator();
    menu.add("⚠︎ Allow screenshot access…", "openScreenshotAccessSettings");
  }
  menu.addSeparator();
  menu.addDisabled("Copied this session: " + std::to_string(state_.count));
  if (state_.lastCopied) menu.addDisabled("Last: " + *state_.lastCopied);
  menu.addSubmenu("Settings", settingsMenu());
  menu.addSeparator();
  menu.addDisabled("Watching: " + text::sanitized(screenshotFolder()));
  menu.addSeparator();
  menu.add("Quit Marbelot", "quit")->key = "q";
}

std::shared_ptr<Menu> StatusMenu::settingsMenu() const {
  auto menu = std::make_shared<Menu>();
  menu->add("Show clipboard preview at top", "toggleClipPreview")->checked =
      state_.showClipboardPreview;
  menu->add("Screenshot access (permissions)…", "openScreenshotAccessSettings");
  return menu;
}

void StatusMenu::refresh() {}

std::shared_ptr<Menu> StatusMenu::dockMenu() const { return std::make_shared<Menu>(); }

}  // namespace marbelot
