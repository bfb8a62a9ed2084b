// Puts each new screenshot on the clipboard the moment it is saved. Main thread only.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/files.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace marbelot {

class ScreenshotWatcher {
 public:
  // `copied` is given the file name of each screenshot that was put on the clipboard. Files that
  // are in the folder already, now or when it comes to be there, are never copied. `clock` is the
  // wall clock, asked on any thread.
  ScreenshotWatcher(Platform& platform, std::string folder,
                    std::function<void(const std::string&)> copied,
                    std::function<double()> clock = text::now);

  // A folder that cannot be watched is not reported: the readability probe tells the user.
  void start();

  // The file is not to be copied when it comes, if it is one of this folder.
  void ignore(const std::string& fullPath);

  // Whether the desktop may be taking a picture for us, which it first saves where it saves all of
  // them: such a file is taken away again, and nobody's find.
  std::function<bool()> isCapturing = [] { return false; };

  // Looks whether the path means another folder by now.
  void check();

  const std::string& folder() const { return path; }
  // As it was when something happened there last.
  bool isThere() const { return folder_.has_value(); }
  // The system refuses to tell of changes, so that the folder is looked at every second.
  bool isLookedAt() const { return stream && stream->isRefused(); }
  // Called when one of these has changed after the start; not to be answered by dropping this.
  std::function<void()> onChange;

 private:
  using Moment = std::chrono::steady_clock::time_point;
  struct Seed {
    Moment time;  // before the listing
    std::optional<files::FolderIdentity> folder;
    std::vector<std::string> paths;
    bool holdsNew = false;  // saved since then, perhaps before anybody watched
  };
  struct Attempt {
    int number = 0;          // 0 while the file is being written
    double writingWait = 0;  // seconds until the next look at a file that is being written
    bool isOnHold = false;   // it may be about to be taken away
    Task next;
  };

  void folderChanged();
  void tellChange();
  void rescan();
  void hold(const std::string& fullPath);
  void attempt(const std::string& fullPath);
  files::ScreenshotState copyIfFinished(const std::string& fullPath);

  Platform& platform_;
  std::unique_ptr<FolderStream> stream;
  const std::string path;
  // Full paths that were handled or were there from the start. Grows by one entry per screenshot.
  std::unordered_set<std::string> seen;
  const std::function<void(const std::string&)> onCopy;
  const std::function<double()> clock_;

  // New files that are not finished screenshots yet.
  std::map<std::string, Attempt> pending_;
  // The folder as it was listed last; none when it could not be, at the time `unlisted_` at last.
  std::optional<files::FolderIdentity> folder_;
  Moment unlisted_;
  std::pair<bool, bool> told_;  // isThere, isLookedAt
  // Events before the folder's first listing wait for it: what they tell of may be an old file.
  bool seeded_ = false;
  bool changedBeforeSeeding_ = false;
  Task seeding_;
};

}  // namespace marbelot
