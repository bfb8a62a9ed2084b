#include "capture/screenshot_access.h"

#include "capture/watched_folder.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {

ScreenshotAccess::ScreenshotAccess(Platform& platform, Shell& shell, ActionTable& actions)
    : platform_(platform), shell_(shell) {
  actions.add("openScreenshotAccessSettings",
              [this](const MenuItem&) { openScreenshotAccessSettings(); });
}

void ScreenshotAccess::probe() {
  if (probing_) return;  // a folder that hangs must not collect probes
  probing_ = true;
  const auto whatIsWrong = [] {
    const std::string folder = screenshotFolder();
    std::string words;
    const bool readable = files::list(folder, &words).has_value();
    return readable ? std::string() : text::sanitized(folder + ": " + words);
  };
  probe_ = platform_.queue.inBackground(whatIsWrong, [this](const std::string& found) {
    probing_ = false;
    if (onProbed) onProbed();
    if (found == problem) return;
    problem = found;
    screenshotFolderReadable = problem.empty();
    shell_.rebuildMenu();
  });
}

void ScreenshotAccess::openScreenshotAccessSettings() {
  const std::string folder = screenshotFolder();
  Alert alert;
  alert.id = "screenshotAccess";
  alert.message = "Allow Marbelot to read your screenshots";
  alert.informative =
      "Marbelot copies each screenshot to your clipboard by reading the screenshot file right "
      "after "
      "macOS saves it (to " +
      text::sanitized(folder) +
      "). It can't do that until you grant access.\n\nIn the window that opens, turn Marbelot ON "
      "under Full Disk Access. If Marbelot isn't listed, click + and add it from your Applications "
      "folder. Then quit and reopen Marbelot.\n\n(This is Full Disk Access / Files & Folders — not "
      "Accessibility.)";
  alert.buttons = {"Open Privacy Settings", "Later"};
  alert.toolTip = problem;
  platform_.dialogs.present(alert, [this, folder](const AlertAnswer& answer) {
    if (answer.button != 0) return;
    platform_.workspace.openPrivacySettings(
        folder, [this](const std::string& advice) { shell_.notify(advice); });
  });
}

}  // namespace marbelot
