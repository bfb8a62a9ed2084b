#include "platform/linux/inotify_folder_events.h"

#include <sys/inotify.h>

#include <QSocketNotifier>
#include <array>
#include <climits>

#include "platform/linux/descriptor.h"

namespace marbelot {
namespace {

// A file is looked at when it appears, when its writer closes it and when it gets an attribute;
// not at each write, which would wake the program for every block of a large file.
constexpr std::uint32_t folderEvents = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_ATTRIB |
                                       IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// What can bring a missing folder back.
constexpr std::uint32_t ancestorEvents =
    IN_CREATE | IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

class Stream : public FolderStream {
 public:
  Stream(Descriptor inotify, std::string folder, std::function<void()> changed)
      : inotify_(std::move(inotify)),
        folder_(std::move(folder)),
        changed_(std::move(changed)),
        notifier_(inotify_.get(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, [this] { drain(); });
    arm();
  }

 private:
  // Watches the folder, or else the nearest ancestor that can be watched.
  void arm() {
    if (watch_ >= 0) inotify_rm_watch(inotify_.get(), watch_);
    std::string path = folder_;
    watch_ = inotify_add_watch(inotify_.get(), path.c_str(), folderEvents);
    onFolder_ = watch_ >= 0;
    while (watch_ < 0 && path.size() > 1) {
      const std::size_t slash = path.rfind('/', path.size() - 2);
      path = slash == std::string::npos ? "/" : path.substr(0, slash + 1);
      watch_ = inotify_add_watch(inotify_.get(), path.c_str(), ancestorEvents);
    }
    if (onFolder_) return;
    // It may have come between the two looks.
    const int late = inotify_add_watch(inotify_.get(), folder_.c_str(), folderEvents);
    if (late < 0) return;
    inotify_rm_watch(inotify_.get(), watch_);
    watch_ = late;
    onFolder_ = true;
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
        // The queue's overflow carries no watch; the watch that was just removed says so once more.
        const bool overflow = event->mask & IN_Q_OVERFLOW;
        if (event->wd != watch_ && !overflow) continue;
        any = true;
        rearm = rearm || event->mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT);
      }
    }
    const bool wasOnFolder = onFolder_;
    if (any && (rearm || !onFolder_)) {
      if (rearm) onFolder_ = false;
      arm();
    }
    if (any && (wasOnFolder || onFolder_)) changed_();
  }

  const Descriptor inotify_;
  const std::string folder_;
  const std::function<void()> changed_;
  int watch_ = -1;
  bool onFolder_ = false;
  QSocketNotifier notifier_;
};

}  // namespace

std::unique_ptr<FolderStream> InotifyFolderEvents::watch(const std::string& folder,
                                                         std::function<void()> changed) {
  Descriptor inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!inotify) return nullptr;
  return std::make_unique<Stream>(std::move(inotify), folder, std::move(changed));
}

}  // namespace marbelot
