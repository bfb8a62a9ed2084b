#include "capture/capture_history.h"

#include <array>

#include "image/image_file.h"
#include "platform/files.h"
#include "platform/text.h"
#include "shell/pending_copy.h"

namespace marbelot {

std::string capturesFolder() { return files::join(files::picturesFolder(), "Marbelot"); }

std::string madeCapturesFolder() {
  std::string folder = capturesFolder();
  files::makeFolder(folder);
  return folder;
}

CaptureHistory::CaptureHistory(Platform& platform, Shell& shell, ActionTable& actions)
    : platform_(platform),
      shell_(shell),
      captures_(platform.queue, [&shell] { shell.rebuildMenu(); }) {
  actions.addOn<std::string>("copyHistory:",
                             [this](const std::string& path) { copyHistory(path); });
  actions.addOn<std::string>(
      "openHistory:", [this](const std::string& path) { platform_.workspace.openPath(path); });
  actions.addOn<std::string>("revealHistory:",
                             [this](const std::string& path) { platform_.workspace.reveal(path); });
  actions.addOn<std::string>("deleteHistory:", [this](const std::string& path) { trash({path}); });
  actions.add("openCapturesFolder",
              [this](const MenuItem&) { platform_.workspace.openPath(madeCapturesFolder()); });
  actions.add("clearHistory", [this](const MenuItem&) { clearHistory(); });
}

std::shared_ptr<Menu> CaptureHistory::menu() const {
  constexpr std::array<NewestImages::Choice, 4> choices{{{"Copy to clipboard", "copyHistory:"},
                                                         {"Open", "openHistory:"},
                                                         {"Reveal in Finder", "revealHistory:"},
                                                         {"Delete", "deleteHistory:"}}};
  auto menu = captures_.menu(capturesFolder(), "No captures yet", choices);
  menu->addSeparator();
  menu->add("Open captures folder", "openCapturesFolder");
  menu->add("Clear history…", "clearHistory");
  return menu;
}

void CaptureHistory::copyHistory(const std::string& path) {
  copying_ = platform_.queue.inBackground(
      [path] { return imageInMemory(path); },
      [this, path,
       copy = PendingCopy(platform_.pasteboard, shell_)](const std::optional<Image>& image) {
        if (!image) return shell_.notify("Couldn't read the image");
        if (copy.tellIfOvertaken()) return;
        copy.write(*image, false, "Copied: " + text::sanitized(files::lastComponent(path)));
      });
}

void CaptureHistory::clearHistory() {
  Alert alert;
  alert.id = "clearHistory";
  alert.message = "Clear capture history?";
  alert.informative = "All Marbelot captures will be moved to the Trash.";
  alert.buttons = {"Move to Trash", "Cancel"};
  platform_.dialogs.present(std::move(alert), [this](const AlertAnswer& answer) {
    if (answer.button != 0) return;
    clearing_ = platform_.queue.inBackground(
        [folder = capturesFolder()] {
          std::vector<std::string> paths = imagesByDate(folder);
          for (std::string& name : paths) name = files::join(folder, name);
          return paths;
        },
        [this](std::vector<std::string> paths) { trash(std::move(paths)); });
  });
}

void CaptureHistory::trash(std::vector<std::string> paths) {
  const std::uint64_t id = ++lastTrashing_;
  trashing_[id] = platform_.workspace.trash(std::move(paths), [this, id] {
    refresh();
    if (onTrashed) onTrashed();
    shell_.rebuildMenu();
    trashing_.erase(id);
  });
}

}  // namespace marbelot
