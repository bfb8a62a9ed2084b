#include "capture/watched_folder.h"

#include <algorithm>
#include <utility>

#include "platform/files.h"

namespace marbelot {

std::string screenshotFolder() {
  if (const auto location = files::screenshotLocation()) return files::expandingTilde(*location);
  const auto usual = files::usualScreenshotFolders();
  const auto there = std::find_if(usual.begin(), usual.end(), [](const std::string& folder) {
    return files::folderIdentity(folder).has_value();
  });
  return there == usual.end() ? files::desktopFolder() : *there;
}

WatchedFolder::WatchedFolder(Platform& platform, std::function<void(const std::string&)> onCopy)
    : platform_(platform), onCopy_(std::move(onCopy)) {}

std::unique_ptr<ScreenshotWatcher> WatchedFolder::made(const std::string& folder) {
  auto another = std::make_unique<ScreenshotWatcher>(platform_, folder, onCopy_);
  another->isCapturing = [this] { return isCapturing(); };
  another->onChange = [this, which = another.get()] { changed(which); };
  return another;
}

void WatchedFolder::start() {
  setting_ = files::screenshotLocation();
  const std::string folder = screenshotFolder();
  watcher = made(folder);
  if (!setting_) {
    for (const std::string& better : files::usualScreenshotFolders()) {
      if (better == folder) break;
      awaited_.push_back(made(better));
    }
  }
  told_ = {folder, false};
  watcher->start();
  for (const auto& awaited : awaited_) awaited->start();
}

void WatchedFolder::ignore(const std::string& fullPath) {
  if (watcher) watcher->ignore(fullPath);
  for (const auto& awaited : awaited_) awaited->ignore(fullPath);
}

void WatchedFolder::check() {
  if (watcher) watcher->check();
  for (const auto& awaited : awaited_) awaited->check();
}

// Drops none but other watchers.
void WatchedFolder::changed(const ScreenshotWatcher* which) {
  const auto awaited = std::find_if(awaited_.begin(), awaited_.end(),
                                    [&](const auto& other) { return other.get() == which; });
  if (awaited != awaited_.end() && which->isThere()) {
    watcher = std::move(*awaited);
    awaited_.erase(awaited, awaited_.end());
  }
  std::pair now(folder(), isLookedAt());
  if (now == told_) return;
  told_ = std::move(now);
  if (onChange) onChange();
}

std::string WatchedFolder::folder() const {
  return watcher ? watcher->folder() : screenshotFolder();
}

std::optional<std::string> WatchedFolder::nextFolder() const {
  if (!watcher || files::screenshotLocation() == setting_) return std::nullopt;
  std::string next = screenshotFolder();
  return next == watcher->folder() ? std::nullopt : std::optional(std::move(next));
}

bool WatchedFolder::isLookedAt() const {
  return (watcher && watcher->isLookedAt()) ||
         std::any_of(awaited_.begin(), awaited_.end(),
                     [](const auto& awaited) { return awaited->isLookedAt(); });
}

}  // namespace marbelot
