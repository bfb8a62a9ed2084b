#include "capture/capture_history.h"

#include "image/edit_request.h"
#include "image/image_file.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::size_t listedCaptures = 15;

}  // namespace

std::string capturesFolder() { return files::join(files::picturesFolder(), "Marbelot"); }

std::string madeCapturesFolder() {
  std::string folder = capturesFolder();
  files::makeFolder(folder);
  return folder;
}

CaptureHistory::CaptureHistory(Platform& platform, Shell& shell, ActionTable& actions)
    : platform_(platform),
      shell_(shell),
      captures_(platform.queue, listedCaptures, [&shell] { shell.rebuildMenu(); }) {
  const auto onPath = [&](const char* selector, auto action) {
    actions.add(selector, [action](const MenuItem& sender) {
      if (const auto* path = std::get_if<std::string>(&sender.represented)) action(*path);
    });
  };
  onPath("copyHistory:", [this](const std::string& path) { copyHistory(path); });
  onPath("openHistory:", [this](const std::string& path) { platform_.workspace.openPath(path); });
  onPath("revealHistory:", [this](const std::string& path) { platform_.workspace.reveal(path); });
  onPath("deleteHistory:", [this](const std::string& path) { trash({path}); });
  actions.add("openCapturesFolder",
              [this](const MenuItem&) { platform_.workspace.openPath(madeCapturesFolder()); });
  actions.add("clearHistory", [this](const MenuItem&) { clearHistory(); });
}

std::shared_ptr<Menu> CaptureHistory::menu() const {
  const std::string folder = capturesFolder();
  auto menu = std::make_shared<Menu>();
  const auto names = captures_.names(folder);
  if (!names) {
    menu->addDisabled("Reading the folder…");
  } else if (names->empty()) {
    menu->addDisabled("No captures yet");
  }
  for (const std::string& name : names.value_or(std::vector<std::string>())) {
    const std::string path = files::join(folder, name);
    auto actions = std::make_shared<Menu>();
    actions->add("Copy to clipboard", "copyHistory:", path);
    actions->add("Open", "openHistory:", path);
    actions->add("Reveal in Finder", "revealHistory:", path);
    actions->add("Delete", "deleteHistory:", path);
    actions->addSubmenu("Edit image", editMenu(EditFile{path}));
    menu->addSubmenu(text::sanitized(name), std::move(actions));
  }
  menu->addSeparator();
  menu->add("Open captures folder", "openCapturesFolder");
  menu->add("Clear history…", "clearHistory");
  return menu;
}

void CaptureHistory::copyHistory(const std::string& path) {
  copying_ = platform_.queue.inBackground(
      [path] { return imageInMemory(path); },
      [this, path,
       replaced = platform_.pasteboard.changeCount()](const std::optional<Image>& image) {
        if (!image) return shell_.notify("Couldn't read the image");
        if (platform_.pasteboard.changeCount() != replaced) return shell_.notify(overtakenMessage);
        shell_.confirmCopy(platform_.pasteboard.write(*image).has_value(),
                           "Copied: " + text::sanitized(files::lastComponent(path)));
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
