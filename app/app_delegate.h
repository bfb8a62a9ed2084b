// The application object: owns every feature, brings them up in order, and is the shell that they
// share.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "app/menu_requests.h"
#include "app/panels.h"
#include "app/software_updates.h"
#include "app/status_menu.h"
#include "capture/capture_commands.h"
#include "capture/capture_history.h"
#include "capture/screenshot_access.h"
#include "capture/watched_folder.h"
#include "clipboard/clipboard_history.h"
#include "clipboard/history_menus.h"
#include "clipboard/image_history.h"
#include "image/image_editing.h"
#include "image/image_export.h"
#include "keyboard/keyboard_cleaning.h"
#include "platform/platform.h"
#include "shell/shell.h"
#include "text/canned_responses.h"
#include "text/clipboard_viewer.h"
#include "text/collect_copies.h"
#include "text/flatten_trim_menus.h"
#include "text/save_text.h"
#include "text/scanned_text_panel.h"
#include "text/text_actions.h"
#include "text/text_analysis.h"
#include "text/text_editor.h"
#include "text/text_recognition.h"

namespace marbelot {

class AppDelegate : private Shell, private MenuDelegate {
 public:
  explicit AppDelegate(Platform& platform);
  ~AppDelegate() override;
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  void applicationDidFinishLaunching();

 private:
  void registerAndReadSettings();
  void bringMenuUpToDate();
  // Of a screenshot or capture that is on the clipboard.
  void screenshotCopied(const std::string& fileName, const std::string& message);
  void watchedFolderChanged();
  void refreshHistories();
  void refreshLists();

  // Shell
  void notify(const std::string& message) override;
  void flashStatusIcon() override;
  void rebuildMenu() override;
  bool copyWithoutRecording(SharedText text, bool concealed) override;
  bool copyWithoutRecording(const Image& image, bool concealed) override;

  // MenuDelegate
  void menuWillOpen() override;
  void menuWillHighlightItem(const MenuItem* item) override { panels_.hud.menuWillHighlight(item); }
  void menuDidClose() override;
  void menuItemChosen(const MenuItem& item) override;

  Platform& platform_;
  ActionTable actions_;

  MenuState state_;

  ScreenshotAccess access_;
  WatchedFolder watched_;
  CaptureCommands captureCommands_;
  CaptureHistory captureHistory_;

  ClipboardHistory history_;
  TextAnalyses analyses_;
  TextActions textActions_;
  HistoryMenus historyMenus_;
  ImageHistory imageHistory_;

  ImageEditing imageEditing_;
  ImageExport imageExport_;

  FlattenTrim flattenTrim_;
  ClipboardViewer viewer_;
  TextEditor editor_;
  CollectCopies collectCopies_;
  CannedResponses cannedResponses_;

  Panels panels_;
  KeyboardCleaning keyboardCleaning_;

  TextSaving textSaving_;
  ScannedTextPanel scannedTextPanel_;
  TextRecognition textRecognition_;

  SoftwareUpdates updates_;
  StatusMenu menu_;
  HistoryRequests historyRequests_;
  MenuRequests requests_;

  bool menuIsStale_ = false;
  bool menuIsOpen_ = false;
  bool refusalTold_ = false;
  Task rebuild_;
  Task flash_;
  Task prompt_;
  Task tidying_;
};

}  // namespace marbelot
