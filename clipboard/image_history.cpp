#include "clipboard/image_history.h"

#include <algorithm>
#include <string_view>

#include "image/edit_request.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {

namespace {

constexpr std::size_t listedImages = 15;

// Asking for so many dates takes a few milliseconds. In larger folders a known date is trusted, and
// more unknown ones are read in the background.
constexpr std::size_t datesAskedAtOnce = 1000;

constexpr double notAFile = -1;

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
  actions.add("openCapturesFolder", [this](const MenuItem&) {
    const std::string folder = files::join(files::picturesFolder(), "Marbelot");
    files::makeFolder(folder);
    platform_.workspace.openPath(folder);
  });
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
  shell_.confirmCopy(platform_.pasteboard.write(*image).has_value(),
                     "Copied: " + text::sanitized(files::lastComponent(path)));
}

ImageHistory::Dates ImageHistory::modificationDates(const std::string& folder,
                                                    const std::vector<std::string>& names) {
  Dates dates;
  dates.reserve(names.size());
  for (const std::string& name : names) {
    const auto info = files::info(files::join(folder, name));
    dates.emplace(name, info ? info->modified : notAFile);
  }
  return dates;
}

std::optional<std::vector<std::string>> ImageHistory::newestImages(const std::string& folder) {
  std::vector<std::string> names = files::list(folder).value_or(std::vector<std::string>());
  std::erase_if(names, [](const std::string& name) {
    return name.starts_with('.') || !files::isImageName(name);
  });

  if (knownFolder_ != folder) reading_.reset();
  if (knownFolder_ != folder || names.size() <= datesAskedAtOnce ||
      modified_.size() > 2 * names.size())
    modified_.clear();
  knownFolder_ = folder;
  std::vector<std::string> unknown;
  for (const std::string& name : names)
    if (!modified_.contains(name)) unknown.push_back(name);
  if (unknown.size() > datesAskedAtOnce) {
    if (!reading_)
      reading_ = platform_.queue.inBackground(
          [folder, unknown] { return modificationDates(folder, unknown); },
          [this](Dates dates) {
            reading_.reset();
            modified_.merge(dates);
            shell_.rebuildMenu();
          });
    return std::nullopt;
  }
  modified_.merge(modificationDates(folder, unknown));

  std::vector<std::pair<double, const std::string*>> dated;
  for (const std::string& name : names)
    if (const double date = modified_.at(name); date != notAFile) dated.emplace_back(date, &name);
  const std::size_t count = std::min(listedImages, dated.size());
  std::partial_sort(dated.begin(), dated.begin() + static_cast<std::ptrdiff_t>(count), dated.end(),
                    [](const auto& a, const auto& b) {
                      // Of one instant the later name is the newer file: names count up.
                      return a.first != b.first ? a.first > b.first : *a.second > *b.second;
                    });
  std::vector<std::string> newest;
  newest.reserve(count);
  for (std::size_t i = 0; i < count; ++i) newest.push_back(*dated[i].second);
  return newest;
}

std::shared_ptr<Menu> ImageHistory::imageHistoryMenu() {
  const std::string folder = history_.clipImagesFolder();
  auto menu = std::make_shared<Menu>();
  const auto newest = newestImages(folder);
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
