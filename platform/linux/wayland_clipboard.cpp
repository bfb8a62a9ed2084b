#include "platform/linux/wayland_clipboard.h"

#include <poll.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/linux/clipboard_keeper.h"
#include "platform/linux/wayland_data_control.h"
#include "platform/linux/wayland_selection_owner.h"
#include "platform/linux/wayland_selection_reader.h"

namespace marbelot {
namespace {

constexpr auto keepingLimit = std::chrono::seconds(3);

class WaylandClipboard final : public ClipboardConnection {
 public:
  WaylandClipboard(std::unique_ptr<WaylandDataControl> control, std::string display,
                   std::unique_ptr<ClipboardConnection> otherwise)
      : control_(std::move(control)),
        display_(std::move(display)),
        otherwise_(std::move(otherwise)) {}

  void serve(ClipboardThread& thread) override {
    // Nothing but this thread waits for a busy compositor's answer.
    if (!control_->bind(ClipboardClock::time_point::max(),
                        {thread.wakeDescriptor(), [&] { return thread.isEnding(); }})) {
      control_->interrupt();
      if (otherwise_) otherwise_->serve(thread);
      return;
    }
    if (otherwise_) otherwise_->interrupt();
    WaylandSelectionOwner owner(*control_, [&thread] { thread.wake(); });
    WaylandSelectionReader reader(
        [&thread](PasteboardContents contents, const ClipboardAnnouncement& announcement) {
          thread.tell(std::move(contents), announcement);
        },
        [&thread] { thread.wake(); });
    control_->watch(
        {[&](std::unique_ptr<WaylandOffer> offer, bool initial) {
           if (offer && owner.ownerChanged(offer->types())) {
             reader.replaceAll();
             return thread.claimed(owner.claimed());
           }
           if (initial && !offer) return;
           reader.begin(std::move(offer), {owner.claimed(), initial});
         },
         [&](const std::string& type, Descriptor to) { owner.answer(type, std::move(to)); },
         [&] { owner.forget(); }});
    Parts parts{thread, reader, owner};
    while (takeCommands(parts))
      if (!handleEvents(parts, ClipboardClock::time_point::max())) return;
    leave(parts);
  }

  void interrupt() override {
    if (otherwise_) otherwise_->interrupt();
    control_->interrupt();
  }

 private:
  struct Parts {
    ClipboardThread& thread;
    WaylandSelectionReader& reader;
    WaylandSelectionOwner& owner;
  };

  // False when the thread has to end.
  static bool takeCommands(Parts& parts) {
    auto [quit, offer] = parts.thread.commands();
    if (offer) parts.owner.claim(std::move(offer->first), offer->second);
    parts.owner.collect();
    parts.reader.collect();
    return !quit;
  }

  // Serves on until the keeper has what would be lost with us.
  void leave(Parts& parts) {
    WaylandSelectionOwner& owner = parts.owner;
    const auto limit = ClipboardClock::now() + keepingLimit;
    const auto serveOn = [&](int keeper) {
      if (ClipboardClock::now() >= limit || !handleEvents(parts, limit, keeper)) return false;
      takeCommands(parts);
      return true;
    };
    while (owner.isClaiming())
      if (!serveOn(-1)) return;
    if (!owner.present()) return;
    const Descriptor keeper = startClipboardKeeper(*owner.present(), owner.mark(), display_);
    bool waiting = static_cast<bool>(keeper);
    while (waiting || owner.isServing()) {
      if (!serveOn(waiting ? keeper.get() : -1)) return;
      waiting = waiting && watched_[2].revents == 0;
    }
  }

  // Waits for something to come, from `keeper` too, until `deadline` at the latest, and handles it.
  // False when the connection has ended.
  bool handleEvents(Parts& parts, ClipboardClock::time_point deadline, int keeper = -1) {
    auto& [thread, reader, owner] = parts;
    control_->prepare();
    watched_.clear();
    watched_.push_back({control_->descriptor(), control_->events(), 0});
    watched_.push_back({thread.wakeDescriptor(), POLLIN, 0});
    watched_.push_back({keeper, POLLIN, 0});
    reader.watch(watched_);
    owner.watch(watched_);
    ::poll(watched_.data(), watched_.size(),
           pollTimeout(std::min({deadline, reader.deadline(), owner.deadline()})));
    if (!control_->dispatch(watched_.front().revents)) return false;
    reader.receive();
    owner.send();
    const auto now = ClipboardClock::now();
    reader.expire(now);
    owner.expire(now);
    return true;
  }

  const std::unique_ptr<WaylandDataControl> control_;
  const std::string display_;
  const std::unique_ptr<ClipboardConnection> otherwise_;
  std::vector<pollfd> watched_;
};

}  // namespace

std::unique_ptr<ClipboardConnection> connectWaylandClipboard(
    const std::string& display, std::unique_ptr<ClipboardConnection> otherwise) {
  auto control = std::make_unique<WaylandDataControl>(display);
  if (!control->display()) return otherwise;
  return std::make_unique<WaylandClipboard>(std::move(control), display, std::move(otherwise));
}

}  // namespace marbelot
