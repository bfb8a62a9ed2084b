// The newest image files of a folder, for menus: a large folder, or one on a slow disk, must not
// keep a menu from opening.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/main_queue.h"
#include "platform/menu.h"

namespace marbelot {

// The names of all visible image files in the folder, the newest first by their modification; those
// whose date cannot be had come last. Takes time: not for the main thread.
std::vector<std::string> imagesByDate(const std::string& folder);

// Main thread only.
class NewestImages {
 public:
  // `changed` is called when a listing has found something else than was known.
  NewestImages(MainQueue& queue, std::function<void()> changed)
      : queue_(queue), changed_(std::move(changed)) {}

  // Starts a listing in the background. What is known stays so until it is done.
  void refresh(const std::string& folder);
  struct Choice {
    const char *title, *action;
  };
  // An item for each of the newest files, newest first, as they were listed last, with a submenu of
  // the choices, whose actions get the path, and of all edits. `none` tells of an empty folder.
  std::shared_ptr<Menu> menu(const std::string& folder, const char* none,
                             std::span<const Choice> choices) const;

 private:
  MainQueue& queue_;
  const std::function<void()> changed_;
  std::string folder_;
  std::optional<std::vector<std::string>> names_;  // of `folder_`
  Task listing_;
  bool isListing_ = false;
  bool isStale_ = false;  // asked for again while a listing was under way
};

}  // namespace marbelot
