#include "clipboard/image_history.h"

#include "image/edit_request.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::size_t listedImages = 15;

}  // namespace

ImageHistory::ImageHistory(Platform& platform, Shell& shell, const ClipboardHistory& history)
    : history_(history), images_(platform.queue, listedImages, [&shell] { shell.rebuildMenu(); }) {}

std::shared_ptr<Menu> ImageHistory::imageHistoryMenu() const {
  const std::string folder = history_.clipImagesFolder();
  auto menu = std::make_shared<Menu>();
  const auto newest = images_.names(folder);
  if (!newest) {
    menu->addDisabled("Reading the folder…");
  } else if (newest->empty()) {
    menu->addDisabled("No images yet");
  }
  for (const std::string& name : newest.value_or(std::vector<std::string>())) {
    const std::string path = files::join(folder, name);
    auto actions = std::make_shared<Menu>();
    actions->add("Copy to clipboard", "copyHistory:", path);
    actions->add("Reveal in Finder", "revealHistory:", path);
    actions->add("Copy file path", "copyPath:", path);
    actions->add("Open", "openHistory:", path);
    actions->add("Delete", "deleteHistory:", path);
    actions->addSubmenu("Edit image", editMenu(EditFile{path}));
    menu->addSubmenu(text::sanitized(name), std::move(actions));
  }
  menu->addSeparator();
  menu->add("Open copied-images folder", "openClipImagesFolder");
  menu->add("Open captures folder", "openCapturesFolder");
  return menu;
}

}  // namespace marbelot
