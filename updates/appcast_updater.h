// Updates by a feed that is read here, where no framework does it: tells what is new and opens the
// download in the browser. It never installs anything itself.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "platform/updater.h"
#include "updates/appcast.h"
#include "updates/fetch.h"

namespace marbelot {

// What is being kept up to date, and where its feed is.
struct UpdateSource {
  std::string feed;           // empty: there is none
  std::string version;        // of this program
  std::string system;         // as feeds call it, e.g. "linux"
  std::string systemVersion;  // that a feed's smallest and largest are compared with
};

// What an updater does its work with. All of it outlives the updater.
struct UpdateServices {
  MainQueue& queue;
  UserDefaults& defaults;
  Notices& notices;
  Dialogs& dialogs;
  Workspace& workspace;
};

class AppcastUpdater final : public Updater {
 public:
  // A feed that is set under "SUFeedURL" in the user defaults takes the place of the source's.
  AppcastUpdater(UpdateServices services, UpdateSource source, Fetch fetch);

  void checkForUpdates() override { check(true); }
  void checkForUpdatesInBackground() override { check(false); }
  void setAutomaticallyChecksForUpdates(bool checks) override;
  void setUpdateCheckInterval(double seconds) override;

 private:
  struct Answer {
    bool isFeed = false;
    std::optional<AppcastItem> newer;
  };

  void check(bool inForeground);
  void feedArrived(const Fetched& fetched);
  void answered(const Answer& answer);
  void failed(const std::string& why);
  void offer(const AppcastItem& item);
  void showNotes(const AppcastItem& item, const std::string& notes);
  void tell(const std::string& message, const std::string& informative);
  void schedule();
  std::string feed() const;  // empty: there is none

  const UpdateServices services_;
  const UpdateSource source_;
  const Fetch fetch_;
  bool automatic_ = false;
  double interval_ = 86400;  // seconds
  bool inForeground_ = false;
  // What is under way; several requests in a row are one.
  std::optional<Task> checking_;
  Task patience_;
  Task next_;
};

class AppcastUpdates final : public Updates {
 public:
  AppcastUpdates(UpdateServices services, UpdateSource source, Fetch fetch)
      : services_(services), source_(std::move(source)), fetch_(std::move(fetch)) {}
  std::unique_ptr<Updater> startUpdater() override {
    return std::make_unique<AppcastUpdater>(services_, source_, fetch_);
  }

 private:
  const UpdateServices services_;
  const UpdateSource source_;
  const Fetch fetch_;
};

}  // namespace marbelot
