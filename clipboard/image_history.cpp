#include "clipboard/image_history.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {

namespace {

constexpr std::size_t listedImages = 15;

// Asking for so many dates takes a millisecond or two; in larger folders a known date is trusted.
constexpr std::size_t alwaysAskedFiles = 1000;

bool isImageName(const std::string& name) {
  constexpr std::array<std::string_view, 5> extensions{"png", "jpg", "jpeg", "tiff", "heic"};
  return !name.starts_with('.') && std::find(extensions.begin(), extensions.end(),
                                             files::lowercasedExtension(name)) != extensions.end();
}

}  // namespace

ImageHistory::ImageHistory(Platform& platform, Shell& shell, ActionTable& actions,
                           ClipboardHistory& history)
    : platform_(platform), shell_(shell), history_(history) {
  const auto onPath = [&](const char* selector, auto action) {
    actions.add(selector, [action](const MenuItem& sender) {
      if (const auto* path = std::get_if<std::string>(&sender.represented)) action(*path);
    });
  };
  onPath("copyHistory:", [this](const std::string& path) { copyHistory(path); });
  onPath("openHistory:", [this](const std::string& path) { platform_.workspace.openPath(path); });
  onPath("revealHistory:", [this](const std::string& path) { platform_.workspace.reveal(path); });
  onPath("deleteHistory:", [this](const std::string& path) {
    platform_.workspace.trash(path);
    shell_.rebuildMenu();
  });
}

void ImageHistory::copyHistory(const std::string& path) {
  const auto image = Image::fromFile(path);
  if (!image) {
    shell_.notify("Couldn't read the image");
    return;
  }
  platform_.pasteboard.write(*image);
  shell_.flashStatusIcon();
  shell_.notify("Copied: " + text::sanitized(files::lastComponent(path)));
}

std::vector<std::string> ImageHistory::newestImages(const std::string& folder) {
  std::vector<std::string> names = files::list(folder).value_or(std::vector<std::string>());
  std::erase_if(names, [](const std::string& name) { return !isImageName(name); });

  if (knownFolder_ != folder || names.size() <= alwaysAskedFiles) modified_.clear();
  knownFolder_ = folder;
  std::unordered_map<std::string, double> modified;
  modified.reserve(names.size());
  std::vector<std::pair<double, std::string>> dated;
  dated.reserve(names.size());
  for (std::string& name : names) {
    auto known = modified_.find(name);
    double date = 0;
    if (known != modified_.end()) {
      date = known->second;
    } else if (const auto info = files::info(files::join(folder, name))) {
      date = info->modified;
    } else {
      continue;
    }
    modified.emplace(name, date);
    dated.emplace_back(date, std::move(name));
  }
  modified_ = std::move(modified);

  const auto shown =
      dated.begin() + static_cast<std::ptrdiff_t>(std::min(listedImages, dated.size()));
  // Of the same instant the later name is the newer file: names count up.
  std::partial_sort(dated.begin(), shown, dated.end(), std::greater<>());
  std::vector<std::string> newest;
  for (auto at = dated.begin(); at != shown; ++at) newest.push_back(std::move(at->second));
  return newest;
}

std::shared_ptr<Menu> ImageHistory::imageHistoryMenu() {
  const std::string folder = history_.clipImagesFolder();
  auto menu = std::make_shared<Menu>();
  const std::vector<std::string> newest = newestImages(folder);
  if (newest.empty()) menu->addDisabled("No images yet");
  for (const std::string& name : newest) {
    const std::string path = files::join(folder, name);
    auto actions = std::make_shared<Menu>();
    actions->add("Copy to clipboard", "copyHistory:", path);
    actions->add("Reveal in Finder", "revealHistory:", path);
    actions->add("Copy file path", "copyPath:", path);
    actions->add("Open", "openHistory:", path);
    actions->add("Delete", "deleteHistory:", path);
    menu->addSubmenu(text::sanitized(name), std::move(actions));
  }
  menu->addSeparator();
  menu->add("Open copied-images folder", "openClipImagesFolder");
  return menu;
}

}  // namespace marbelot
