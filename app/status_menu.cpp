#include "app/status_menu.h"

#include "clipboard/clip_preview.h"
#include "image/edit_request.h"
#include "platform/text.h"

namespace marbelot {

StatusMenu::StatusMenu(Platform& platform, Shell& shell, ActionTable& actions, MenuParts parts)
    : platform_(platform), parts_(parts) {
  showClipboardPreview.offerToggle(actions, shell);
}

void StatusMenu::buildMenu() {
  Menu& menu = *menu_;
  menu.items.clear();
  menu.addDisabled("Marbelot — auto-copy screenshots");
  if (!parts_.access.screenshotFolderReadable) {
    menu.addSeparator();
    menu.add("⚠︎ Allow screenshot access…", "openScreenshotAccessSettings")->toolTip =
        parts_.access.problem;
  }

  clipPreviewItem.reset();
  if (showClipboardPreview) {
    menu.addSeparator();
    menu.addDisabled("On clipboard:");
    clipPreviewItem = menu.add(previewTitle(), "showClipboardViewer");
  }
  openActionsItem = menu.addSubmenu("Open…", std::make_shared<Menu>());
  refreshOpenActions();
  editImageItem = menu.addSubmenu("Edit image", editMenu(EditClipboard{}));
  ocrClipItem = menu.add("Scan text (OCR)…", "ocrClipboardImage");
  imgTagClipItem = menu.add("Copy as <img> tag (base64)", "copyClipboardImageAsTag");
  refreshImageItems();
  menu.add("Edit clipboard text…", "editClipboardText");

  menu.addSeparator();
  menu.addDisabled("Copied this session: " + std::to_string(parts_.state.count));
  if (parts_.state.lastCopied) menu.addDisabled("Last: " + *parts_.state.lastCopied);

  menu.addSeparator();
  captureItem = menu.addSubmenu("Capture screenshot", parts_.captureCommands.menu());

  menu.addSeparator();
  parts_.flattenTrim.addStatusItems(menu);
  parts_.collectCopies.addStatusItem(menu);
  menu.add("View clipboard…", "showClipboardViewer")->key = "v";

  menu.addSeparator();
  menu.addSubmenu("Canned responses", parts_.cannedResponses.menu());
  historyItem = menu.addSubmenu("Capture history", parts_.captureHistory.menu());
  clipHistoryItem =
      menu.addSubmenu("Clipboard history", parts_.historyMenus.clipboardHistoryMenu());
  clipByTypeItem = menu.addSubmenu("Clipboard by type", parts_.historyMenus.clipboardByTypeMenu());
  imageHistoryItem = menu.addSubmenu("Image history", parts_.imageHistory.imageHistoryMenu());
  menu.add("Clean keyboard (disable typing)…", "toggleKeyboardBlock")->checked =
      parts_.keyboardCleaning.keyboardBlocked;
  menu.addSubmenu("Settings", settingsMenu());

  menu.addSeparator();
  menu.addDisabled("Watching: " + text::sanitized(parts_.watched.folder()));
  if (const auto next = parts_.watched.nextFolder())
    menu.addDisabled("From the next launch: " + text::sanitized(*next));
  if (parts_.watched.isLookedAt())
    menu.addDisabled("Looking every second: the system does not tell of changes");

  menu.addSeparator();
  menu.add("Check for Updates…", "checkForUpdates");
  menu.add("Quit Marbelot", "quit")->key = "q";
}

std::shared_ptr<Menu> StatusMenu::settingsMenu() const {
  const ClipboardHistory& history = parts_.history;
  auto menu = std::make_shared<Menu>();
  menu->addSubmenu("Check for updates", parts_.updates.menu());
  showClipboardPreview.addToggle(*menu);
  parts_.hud.showClipboardHUD.addToggle(*menu);
  parts_.widget.alwaysOnPreview.addToggle(*menu);
  history.autoSaveClipImages.addToggle(*menu);
  parts_.textRecognition.autoOCR.addToggle(*menu);
  menu->addDisabled("Save copied images to:");
  const auto addLocation = [&](const char* title, bool archive) {
    const MenuItemRef item = menu->add(title, "setArchiveLocation:", archive);
    item->checked = history.archiveToPictures == archive;
    item->enabled = history.autoSaveClipImages;
  };
  addLocation("Temporary folder (cleared on reboot)", false);
  addLocation("~/Pictures/Marbelot/Clipboard (kept)", true);
  menu->add("Screenshot access (permissions)…", "openScreenshotAccessSettings");
  menu->add("Open copied-images folder", "openClipImagesFolder");
  return menu;
}

std::string StatusMenu::previewTitle() {
  const PasteboardContents contents = platform_.pasteboard.contents();
  return clipPreviewTitle(contents, parts_.history.withheld(contents), parts_.analyses);
}

void StatusMenu::refreshOpenActions() {
  const PasteboardContents contents = platform_.pasteboard.contents();
  const bool offered =
      contents.text && !contents.text->empty() && !parts_.history.withheld(contents);
  openActionsItem->hidden = !offered;
  if (!offered) return;
  openActionsItem->title = parts_.textActions.submenuLabel(contents.text);
  openActionsItem->submenu = parts_.textActions.actionMenu(contents.text);
}

void StatusMenu::refreshImageItems() {
  const bool none = !platform_.pasteboard.contents().image;
  editImageItem->hidden = none;
  ocrClipItem->hidden = none;
  imgTagClipItem->hidden = none;
}

void StatusMenu::refresh() {
  captureItem->submenu = parts_.captureCommands.menu();
  historyItem->submenu = parts_.captureHistory.menu();
  clipHistoryItem->submenu = parts_.historyMenus.clipboardHistoryMenu();
  clipByTypeItem->submenu = parts_.historyMenus.clipboardByTypeMenu();
  imageHistoryItem->submenu = parts_.imageHistory.imageHistoryMenu();
  parts_.collectCopies.refreshMenu();
  if (clipPreviewItem) clipPreviewItem->title = previewTitle();
  refreshOpenActions();
  refreshImageItems();
  parts_.flattenTrim.refresh();
}

std::shared_ptr<Menu> StatusMenu::dockMenu() {
  auto menu = std::make_shared<Menu>();
  menu->addSubmenu("Capture screenshot", parts_.captureCommands.menu());
  menu->addSeparator();
  menu->addSubmenu("Canned responses", parts_.cannedResponses.menu());
  menu->addSubmenu("Capture history", parts_.captureHistory.menu());
  menu->addSubmenu("Clipboard history", parts_.historyMenus.clipboardHistoryMenu());
  menu->addSubmenu("Clipboard by type", parts_.historyMenus.clipboardByTypeMenu());
  menu->addSeparator();
  parts_.flattenTrim.addDockItems(*menu);
  menu->add("View clipboard…", "showClipboardViewer");
  return menu;
}

}  // namespace marbelot
