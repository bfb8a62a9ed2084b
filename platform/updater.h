// Newer versions of this program. Main thread only.
#pragma once

#include <memory>

namespace marbelot {

// Automatic checks are off and the interval is the system's until they are set.
class Updater {
 public:
  virtual ~Updater() = default;
  // In the foreground: the user is told what comes of it in any case.
  virtual void checkForUpdates() = 0;
  // Silent unless there is something newer.
  virtual void checkForUpdatesInBackground() = 0;
  virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;
  virtual void setUpdateCheckInterval(double seconds) = 0;
};

class Updates {
 public:
  virtual ~Updates() = default;
  // The updater, started at once; it is kept until the program ends. Never null.
  virtual std::unique_ptr<Updater> startUpdater() = 0;
};

}  // namespace marbelot
