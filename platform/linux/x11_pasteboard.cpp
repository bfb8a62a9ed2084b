#include "platform/linux/x11_pasteboard.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "platform/linux/x11_selection_owner.h"
#include "platform/linux/x11_selection_reader.h"

namespace marbelot {
namespace {

// More than anybody copies while the main thread is busy; beyond, the oldest are forgotten.
constexpr std::size_t rememberedChanges = 1024;

// A claim takes less than a millisecond, and whoever pastes right after it gets what we wrote. Of a
// busy server the main thread does not wait for longer than half a frame.
constexpr auto claimWait = std::chrono::milliseconds(8);
// What a clipboard manager gets to fetch what we leave behind: in all, and without asking for
// anything. Some never answer, as they have fetched it long before.
constexpr auto keepingLimit = std::chrono::seconds(5);
constexpr auto keepingPause = std::chrono::milliseconds(300);

struct News {
  PasteboardContents contents;
  X11Announcement announcement;
};

}  // namespace

// The clipboard's thread, and the only two things that cross it: news to the main thread, and the
// last own write to the clipboard.
class X11Pasteboard::Worker {
 public:
  // Connects here and not on the thread, where it could meet the toolkit's own connecting.
  Worker(const std::string& display, std::function<void()> wakeMain)
      : connection_(display),
        wakeMain_(std::move(wakeMain)),
        wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    // No signal is handled there, and a broken connection must not end the process by SIGPIPE.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    thread_ = std::thread([this] { run(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }

  ~Worker() {
    {
      std::unique_lock lock(mutex_);
      quit_ = true;
      wake();
      claim_.wait_for(lock, keepingLimit, [&] { return ended_; });
    }
    // Even a thread that waits for an answer of the server comes back at once.
    if (connection_.alive()) ::shutdown(connection_.descriptor(), SHUT_RDWR);
    thread_.join();
    ::close(wake_);
  }

  // Returns when the clipboard is ours, or a moment later when the server is busy and it will be.
  // False when the connection has ended.
  bool write(X11Offer offer, std::uint64_t number) {
    std::unique_lock lock(mutex_);
    if (ended_) return false;
    offer_ = {std::move(offer), number};
    wake();
    claim_.wait_for(lock, claimWait, [&] { return ended_ || claimed_ >= number; });
    return !ended_;
  }

  std::vector<News> takeNews() {
    const std::lock_guard lock(mutex_);
    return std::exchange(news_, {});
  }

 private:
  void wake() { ::eventfd_write(wake_, 1); }

  void run() {
    if (connection_.alive() && connection_.watchClipboard()) serve();
    const std::lock_guard lock(mutex_);
    ended_ = true;
    offer_.reset();
    claim_.notify_all();
  }

  void serve() {
    X11SelectionOwner owner(connection_, [this] { wake(); });
    X11SelectionReader reader(
        connection_,
        [this](PasteboardContents contents, const X11Announcement& announcement) {
          tell({std::move(contents), announcement});
        },
        [this] { wake(); });
    readPresent(reader);
    while (connection_.alive()) {
      if (!takeCommands(owner)) break;
      reader.collect();
      handleEvents(reader, owner, X11Clock::time_point::max());
    }
    if (!owner.askToBeKept()) return;
    // Serves on until the clipboard manager has what would be lost with us.
    const auto limit = X11Clock::now() + keepingLimit;
    auto deadline = X11Clock::now() + keepingPause;
    while (connection_.alive() && owner.isBeingKept() && X11Clock::now() < deadline) {
      takeCommands(owner);
      if (handleEvents(reader, owner, deadline) || owner.isServing())
        deadline = std::min(X11Clock::now() + keepingPause, limit);
    }
  }

  // Handles what has come, then waits for more, until `deadline` at the latest. Whether anything
  // had come.
  bool handleEvents(X11SelectionReader& reader, X11SelectionOwner& owner,
                    X11Clock::time_point deadline) {
    bool any = false;
    const auto handle = [&](xcb_generic_event_t* event) {
      const X11Reply<xcb_generic_event_t> kept(event);
      if (event) dispatch(*event, reader, owner);
      any = any || event;
      return event != nullptr;
    };
    while (handle(xcb_poll_for_event(connection_.get()))) {
    }
    const auto now = X11Clock::now();
    reader.expire(now);
    owner.expire(now);
    xcb_flush(connection_.get());
    // Writing may have read: what is in the library's queue no longer wakes poll().
    if (!handle(xcb_poll_for_queued_event(connection_.get())))
      wait(std::min({deadline, reader.deadline(), owner.deadline()}));
    return any;
  }

  void readPresent(X11SelectionReader& reader) {
    const auto cookie = xcb_get_selection_owner(connection_.get(), connection_.atom("CLIPBOARD"));
    const X11Reply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
    if (!reply || reply->owner == XCB_WINDOW_NONE) return;
    X11Announcement present;
    present.owner = reply->owner;
    present.initial = true;
    reader.begin(present);
  }

  void dispatch(const xcb_generic_event_t& event, X11SelectionReader& reader,
                X11SelectionOwner& owner) {
    if (eventType(event) != connection_.ownerEvent()) {
      owner.handle(event);
      reader.handle(event);
      return;
    }
    const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (owner.ownerChanged(change.owner)) {
      reader.replaceAll(event.full_sequence);
      {
        const std::lock_guard lock(mutex_);
        claimed_ = owner.claimed();
      }
      return claim_.notify_all();
    }
    X11Announcement announcement;
    announcement.owner = change.owner;
    announcement.time = change.timestamp;
    announcement.sequence = event.full_sequence;
    announcement.ownWrites = owner.claimed();
    reader.begin(announcement);
  }

  // False when the thread has to end.
  bool takeCommands(X11SelectionOwner& owner) {
    eventfd_t ignored = 0;
    ::eventfd_read(wake_, &ignored);
    owner.collect();
    std::optional<std::pair<X11Offer, std::uint64_t>> offer;
    {
      const std::lock_guard lock(mutex_);
      if (quit_) return false;
      offer = std::exchange(offer_, std::nullopt);
    }
    if (offer) owner.claim(std::move(offer->first), offer->second);
    return true;
  }

  void wait(X11Clock::time_point deadline) {
    int milliseconds = -1;
    if (deadline != X11Clock::time_point::max()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - X11Clock::now());
      milliseconds = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
    }
    std::array<pollfd, 2> watched{{{connection_.descriptor(), POLLIN, 0}, {wake_, POLLIN, 0}}};
    ::poll(watched.data(), watched.size(), milliseconds);
  }

  void tell(News news) {
    bool first = false;
    {
      const std::lock_guard lock(mutex_);
      first = news_.empty();
      news_.push_back(std::move(news));
      if (news_.size() > rememberedChanges) news_.erase(news_.begin());
    }
    if (first) wakeMain_();
  }

  X11Connection connection_;  // the thread's, from its start to its end
  const std::function<void()> wakeMain_;
  const int wake_;
  std::mutex mutex_;
  bool quit_ = false;
  bool ended_ = false;
  std::uint64_t claimed_ = 0;  // the last write that is in effect
  std::condition_variable claim_;
  std::optional<std::pair<X11Offer, std::uint64_t>> offer_;  // only the last one matters
  std::vector<News> news_;
  std::thread thread_;
};

X11Pasteboard::X11Pasteboard(MainQueue& queue, const std::string& display) : queue_(queue) {
  changes_.push_back({{1, {}}, 1});
  worker_ = std::make_unique<Worker>(display, [this] { announceSoon(); });
}

X11Pasteboard::~X11Pasteboard() = default;

void X11Pasteboard::takeNews() {
  for (News& news : worker_->takeNews()) {
    if (news.announcement.initial) {
      Change& present = changes_.back();
      if (present.count == 1) present.contents = std::move(news.contents);
      continue;
    }
    if (news.announcement.ownWrites < writes_) {
      if (!news.contents.text && !news.contents.image) continue;
      recordOvertaken(std::move(news.contents));
    } else {
      record(std::move(news.contents));
    }
    unannounced_ = true;
  }
}

// On the main thread, once the present event is done.
void X11Pasteboard::announceSoon() {
  queue_.post([this, alive = std::weak_ptr<char>(alive_)] {
    if (alive.lock()) announce();
  });
}

void X11Pasteboard::announce() {
  takeNews();
  const auto handler = handler_;  // it may be replaced while it runs
  if (std::exchange(unannounced_, false) && handler) handler();
}

std::int64_t X11Pasteboard::record(PasteboardContents contents) {
  const std::int64_t count = changes_.back().count + 1;
  changes_.push_back({{count, std::move(contents)}, count});
  if (changes_.size() > rememberedChanges) changes_.pop_front();
  return count;
}

// Our write stays the present. It gets a new count, so that the change before it is noticed, but is
// told again to nobody who knows it.
void X11Pasteboard::recordOvertaken(PasteboardContents contents) {
  Change own = std::move(changes_.back());
  changes_.pop_back();
  const std::int64_t count = own.count + 1;
  changes_.push_back({{count, std::move(contents)}, count});
  own.count = count + 1;
  changes_.push_back(std::move(own));
}

std::int64_t X11Pasteboard::changeCount() {
  takeNews();
  return changes_.back().count;
}

PasteboardContents X11Pasteboard::contents() {
  takeNews();
  return changes_.back().contents;
}

std::vector<PasteboardChange> X11Pasteboard::changesSince(std::int64_t count) {
  takeNews();
  std::vector<PasteboardChange> told;
  for (const Change& change : changes_)
    if (change.firstCount > count && change.firstCount > 1) told.push_back(change);
  changes_.erase(changes_.begin(), changes_.end() - 1);
  return told;
}

std::optional<std::int64_t> X11Pasteboard::write(SharedText text, bool concealed) {
  return write(X11Offer{text ? std::move(text) : share({}), std::nullopt, concealed});
}

std::optional<std::int64_t> X11Pasteboard::write(const Image& image) {
  if (!image.isReadable()) return std::nullopt;
  return write(X11Offer{nullptr, image, false});
}

std::optional<std::int64_t> X11Pasteboard::write(X11Offer offer) {
  takeNews();
  PasteboardContents contents{offer.text, offer.image, offeredTypes(offer), offer.concealed};
  if (!worker_->write(std::move(offer), writes_ + 1)) return std::nullopt;
  ++writes_;
  unannounced_ = true;
  announceSoon();
  return record(std::move(contents));
}

void X11Pasteboard::setChangeHandler(std::function<void()> handler) {
  handler_ = std::move(handler);
}

}  // namespace marbelot
