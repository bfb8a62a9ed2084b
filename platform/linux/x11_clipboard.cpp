#include "platform/linux/x11_clipboard.h"

#include <poll.h>
#include <sys/socket.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/linux/x11_selection_owner.h"
#include "platform/linux/x11_selection_reader.h"

namespace marbelot {
namespace {

// What a clipboard manager gets to fetch what we leave behind: in all, and without asking for
// anything. Some never answer, as they have fetched it long before.
constexpr auto keepingLimit = std::chrono::seconds(5);
constexpr auto keepingPause = std::chrono::milliseconds(300);

class X11Clipboard final : public ClipboardConnection {
 public:
  explicit X11Clipboard(const std::string& display) : connection_(display) {}

  void serve(ClipboardThread& thread) override {
    if (!connection_.alive() || !connection_.watchClipboard()) return;
    X11SelectionOwner owner(connection_, [&thread] { thread.wake(); });
    X11SelectionReader reader(
        connection_,
        [&thread](PasteboardContents contents, const ClipboardAnnouncement& announcement) {
          thread.tell(std::move(contents), announcement);
        },
        [&thread] { thread.wake(); });
    Parts parts{thread, reader, owner};
    readPresent(reader);
    while (connection_.alive()) {
      if (!takeCommands(parts)) break;
      reader.collect();
      handleEvents(parts, X11Clock::time_point::max());
    }
    // Serves on until the clipboard manager has what would be lost with us.
    const auto limit = X11Clock::now() + keepingLimit;
    while (connection_.alive() && owner.isClaiming() && X11Clock::now() < limit) {
      handleEvents(parts, limit);
      takeCommands(parts);
    }
    if (!owner.askToBeKept()) return;
    auto deadline = X11Clock::now() + keepingPause;
    while (connection_.alive() && owner.isBeingKept() && X11Clock::now() < deadline) {
      takeCommands(parts);
      if (handleEvents(parts, deadline) || owner.isServing())
        deadline = std::min(X11Clock::now() + keepingPause, limit);
    }
  }

  void interrupt() override {
    if (connection_.alive()) ::shutdown(connection_.descriptor(), SHUT_RDWR);
  }

 private:
  struct Parts {
    ClipboardThread& thread;
    X11SelectionReader& reader;
    X11SelectionOwner& owner;
  };

  // Handles what has come; waits for it, until `deadline` at the latest, when there is nothing.
  // Whether anything had come.
  bool handleEvents(Parts& parts, X11Clock::time_point deadline) {
    bool any = false;
    const auto handle = [&](xcb_generic_event_t* event) {
      const X11Reply<xcb_generic_event_t> kept(event);
      if (event) dispatch(*event, parts);
      any = any || event;
      return event != nullptr;
    };
    while (handle(xcb_poll_for_event(connection_.get()))) {
    }
    const auto now = X11Clock::now();
    parts.reader.expire(now);
    parts.owner.expire(now);
    xcb_flush(connection_.get());
    // Writing may have read: what is in the library's queue no longer wakes poll().
    if (!any && !handle(xcb_poll_for_queued_event(connection_.get())))
      wait(parts.thread, std::min({deadline, parts.reader.deadline(), parts.owner.deadline()}));
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

  void dispatch(const xcb_generic_event_t& event, Parts& parts) {
    auto& [thread, reader, owner] = parts;
    if (eventType(event) != connection_.ownerEvent()) {
      owner.handle(event);
      reader.handle(event);
      return;
    }
    const auto& change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    if (owner.ownerChanged(change.owner)) {
      reader.replaceAll(event.full_sequence);
      return thread.claimed(owner.claimed());
    }
    X11Announcement announcement;
    announcement.owner = change.owner;
    announcement.time = change.timestamp;
    announcement.sequence = event.full_sequence;
    announcement.ownWrites = owner.claimed();
    reader.begin(announcement);
  }

  // False when the thread has to end.
  static bool takeCommands(Parts& parts) {
    auto [quit, offer] = parts.thread.commands();
    parts.owner.collect();
    if (offer) parts.owner.claim(std::move(offer->first), offer->second);
    return !quit;
  }

  void wait(const ClipboardThread& thread, X11Clock::time_point deadline) {
    std::array<pollfd, 2> watched{
        {{connection_.descriptor(), POLLIN, 0}, {thread.wakeDescriptor(), POLLIN, 0}}};
    ::poll(watched.data(), watched.size(), pollTimeout(deadline));
  }

  X11Connection connection_;
};

}  // namespace

std::unique_ptr<ClipboardConnection> connectX11Clipboard(const std::string& display) {
  return std::make_unique<X11Clipboard>(display);
}

}  // namespace marbelot
