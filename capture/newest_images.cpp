#include "capture/newest_images.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/files.h"

namespace marbelot {

std::vector<std::string> imagesByDate(const std::string& folder) {
  std::vector<std::pair<double, std::string>> dated;
  for (std::string& name : files::list(folder).value_or(std::vector<std::string>())) {
    if (name.starts_with('.') || !files::isImageName(name)) continue;
    const std::string path = files::join(folder, name);
    const auto info = files::info(path);
    if (!info && files::folderIdentity(path)) continue;
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
      [folder, limit = limit_] {
        auto names = imagesByDate(folder);
        if (names.size() > limit) names.resize(limit);
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

std::optional<std::vector<std::string>> NewestImages::names(const std::string& folder) const {
  return folder == folder_ ? names_ : std::nullopt;
}

void NewestImages::forget(const std::string& folder, const std::string& name) {
  if (folder == folder_ && names_) std::erase(*names_, name);
}

}  // namespace marbelot
