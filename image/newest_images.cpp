#include "image/newest_images.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "image/edit_request.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::size_t listedImages = 15;

}  // namespace

std::vector<std::string> imagesByDate(const std::string& folder) {
  std::vector<std::pair<double, std::string>> dated;
  for (std::string& name : files::list(folder).value_or(std::vector<std::string>())) {
    if (files::hasHiddenName(name) || !files::isImageName(name)) continue;
    const std::string path = files::join(folder, name);
    const auto info = files::info(path);
    if (info ? info->hidden : files::folderIdentity(path).has_value()) continue;
    dated.emplace_back(info ? info->modified : -std::numeric_limits<double>::infinity(),
                       std::move(name));
  }
  // Of one instant the later name is the newer file: names count up.
  std::sort(dated.begin(), dated.end(), std::greater<>());
  std::vector<std::string> names;
  names.reserve(dated.size());
  for (auto& [date, name] : dated) names.push_back(std::move(name));
  return names;
}

void NewestImages::refresh(const std::string& folder) {
  if (folder != folder_) {
    folder_ = folder;
    names_.reset();
    isListing_ = false;
  }
  isStale_ = isListing_;
  if (std::exchange(isListing_, true)) return;
  listing_ = queue_.inBackground(
      [folder] {
        auto names = imagesByDate(folder);
        names.resize(std::min(names.size(), listedImages));
        return names;
      },
      [this](std::vector<std::string> names) {
        isListing_ = false;
        // What was found may be older than what was asked about last.
        if (isStale_) refresh(folder_);
        if (names_ == names) return;
        names_ = std::move(names);
        changed_();
      });
}

std::shared_ptr<Menu> NewestImages::menu(const std::string& folder, const char* none,
                                         std::span<const Choice> choices) const {
  auto menu = std::make_shared<Menu>();
  if (folder != folder_ || !names_) {
    menu->addDisabled("Reading the folder…");
    return menu;
  }
  if (names_->empty()) menu->addDisabled(none);
  for (const std::string& name : *names_) {
    const std::string path = files::join(folder, name);
    auto actions = std::make_shared<Menu>();
    for (const Choice& choice : choices) actions->add(choice.title, choice.action, path);
    actions->addSubmenu("Edit image", editMenu(EditFile{path}));
    menu->addSubmenu(text::sanitized(name), std::move(actions));
  }
  return menu;
}

}  // namespace marbelot
