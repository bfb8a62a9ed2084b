// Which folder is watched for screenshots: the one that is set, or else the one that the desktop's
// own tool turns out to save into. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "capture/screenshot_watcher.h"
#include "platform/platform.h"

namespace marbelot {

// The folder into which the system saves screenshots, as it is set at this moment. It need not
// exist.
std::string screenshotFolder();

class WatchedFolder {
 public:
  // `onCopy` is given the file name of each screenshot that was put on the clipboard.
  WatchedFolder(Platform& platform, std::function<void(const std::string&)> onCopy);

  // Watches the screenshot folder as it is set now; what is set later is for the next launch. Where
  // nothing is set, the tool may make its folder only for its first screenshot: then that folder is
  // watched in its turn, and the screenshot copied.
  void start();

  // The file is not to be copied when it comes into a folder that is watched.
  void ignore(const std::string& fullPath);

  // Whether the desktop may be taking a picture for us, whose file is nobody's find either.
  std::function<bool()> isCapturing = [] { return false; };

  // Looks whether the path means another folder by now.
  void check();

  // The folder that is watched, or will be when watching starts.
  std::string folder() const;
  // The one of the next launch, if another was set meanwhile.
  std::optional<std::string> nextFolder() const;
  // The system refuses to tell of changes, so that the folder is looked at every second.
  bool isLookedAt() const;

  // Called when the folder or the way of watching has changed.
  std::function<void()> onChange;

 private:
  std::unique_ptr<ScreenshotWatcher> made(const std::string& folder);
  void changed(const ScreenshotWatcher* which);

  Platform& platform_;
  const std::function<void(const std::string&)> onCopy_;
  std::optional<std::string> setting_;  // at the start
  std::unique_ptr<ScreenshotWatcher> watcher;
  // Of folders that are still to come, the best first.
  std::vector<std::unique_ptr<ScreenshotWatcher>> awaited_;
  std::pair<std::string, bool> told_;  // the folder, whether it is looked at
};

}  // namespace marbelot
