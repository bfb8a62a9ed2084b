#include "platform/linux/inotify_folder_events.h"

#include <fcntl.h>
#include <sys/inotify.h>

#include <QSocketNotifier>
#include <QTimer>
#include <array>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <optional>
#include <set>

#include "platform/descriptor.h"
#include "platform/files.h"

namespace marbelot {
namespace {

namespace fs = std::filesystem;

// A file is looked at when it appears, when its writer closes it and when it gets an attribute;
// not at each write, which would wake the program for every block of a large file.
constexpr std::uint32_t folderEvents = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_ATTRIB |
                                       IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// What can bring a missing folder back.
constexpr std::uint32_t ancestorEvents =
    IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// What makes the path mean another folder: only what happens to the folders and links on the way
// itself, because much may be going on inside them.
constexpr std::uint32_t wayEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_DONT_FOLLOW;
constexpr int mostLinks = 40;  // as many as the kernel follows
constexpr int refusedLookMilliseconds = 1000;

class Stream : public FolderStream {
 public:
  Stream(std::string folder, std::function<void()> changed)
      : folder_(std::move(folder)), changed_(std::move(changed)) {
    look_.setInterval(refusedLookMilliseconds);
    QObject::connect(&look_, &QTimer::timeout, [this] {
      arm();
      changed_();
    });
    arm();
  }

  void check() override {
    if (files::folderIdentity(folder_) == watched_) return;
    arm();
    changed_();
  }

  bool isRefused() const override { return refused_; }

 private:
  // The kernel allows so many of these for each user, and so many files for each process.
  void open() {
    if (!inotify_) {
      inotify_ = Descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
      if (!inotify_) return;
      notifier_.emplace(inotify_.get(), QSocketNotifier::Read);
      QObject::connect(&*notifier_, &QSocketNotifier::activated, [this] { drain(); });
    }
    if (!mounts_) {
      mounts_ = Descriptor(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
      if (!mounts_) return;
      // The kernel marks the table as exceptional when something was mounted or unmounted.
      mountNotifier_.emplace(mounts_.get(), QSocketNotifier::Exception);
      QObject::connect(&*mountNotifier_, &QSocketNotifier::activated, [this] { check(); });
    }
  }

  int add(const fs::path& path, std::uint32_t events) {
    // One and the same folder may be on the way twice, and has one watch.
    const int watch = inotify_add_watch(inotify_.get(), path.c_str(), events | IN_MASK_ADD);
    if (watch >= 0) {
      watches_.insert(watch);
    } else if (!inotify_ || errno == ENOSPC || errno == ENOMEM) {
      refused_ = true;
    }
    return watch;
  }

  // Watches the way to the folder, and tells where it leads when all links are followed.
  fs::path watchWay() {
    const fs::path whole(folder_);
    std::deque<fs::path> left(whole.begin(), whole.end());
    fs::path at;
    for (int links = 0; !left.empty();) {
      const fs::path next = at / left.front();
      left.pop_front();
      add(next, wayEvents);  // before it is read, so that no change is missed
      std::error_code notALink;
      const fs::path target = fs::read_symlink(next, notALink);
      if (notALink || ++links > mostLinks) {
        at = next;
      } else {
        left.insert(left.begin(), target.begin(), target.end());
      }
    }
    return at;
  }

  // Watches the folder, or else the nearest ancestor that can be watched. When the kernel refuses
  // any of it, looks take the place of events, and each tries to watch again.
  void arm() {
    open();
    refused_ = false;
    addWatches();
    if (!refused_) {
      look_.stop();
    } else if (!look_.isActive()) {
      look_.start();
    }
  }

  void addWatches() {
    for (const int watch : watches_) inotify_rm_watch(inotify_.get(), watch);
    watches_.clear();
    const auto identity = files::folderIdentity(folder_);
    const fs::path place = watchWay();
    onFolder_ = add(place, folderEvents) >= 0;
    watched_ = onFolder_ ? identity : std::nullopt;
    if (onFolder_) return;
    fs::path above = place;
    int watch = -1;
    while (watch < 0 && above.has_relative_path()) {
      awaited_ = above.filename();
      above = above.parent_path();
      watch = add(above, ancestorEvents);
    }
    // It may have come between the two looks.
    if (add(place, folderEvents) >= 0) addWatches();
  }

  void drain() {
    alignas(inotify_event) std::array<char, 16384> buffer;
    bool rearm = false;
    bool any = false;
    for (;;) {
      const ssize_t got = read(inotify_.get(), buffer.data(), buffer.size());
      if (got <= 0) break;
      for (ssize_t at = 0; at < got;) {
        const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        // The queue's overflow carries no watch; one that was just removed says so once more.
        const bool overflow = event->mask & IN_Q_OVERFLOW;
        if (!overflow && !watches_.contains(event->wd)) continue;
        if (!onFolder_ && event->len > 0 && awaited_ != event->name) continue;
        any = true;
        constexpr std::uint32_t gone = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;
        rearm = rearm || overflow || event->mask & gone;
      }
    }
    if (!any) return;
    const bool wasOnFolder = onFolder_;
    if (rearm || !onFolder_) arm();
    if (wasOnFolder || onFolder_) changed_();
  }

  const std::string folder_;
  const std::function<void()> changed_;
  std::set<int> watches_;
  bool onFolder_ = false;
  std::optional<files::FolderIdentity> watched_;  // none while the folder cannot be watched
  std::string awaited_;  // the name in the watched ancestor that can bring the folder back
  bool refused_ = false;
  QTimer look_;  // while refused
  Descriptor inotify_;
  Descriptor mounts_;
  // The notifiers go before what they listen to.
  std::optional<QSocketNotifier> notifier_;
  std::optional<QSocketNotifier> mountNotifier_;
};

}  // namespace

std::unique_ptr<FolderStream> InotifyFolderEvents::watch(const std::string& folder,
                                                         std::function<void()> changed) {
  return std::make_unique<Stream>(folder, std::move(changed));
}

}  // namespace marbelot
