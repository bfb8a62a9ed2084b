#include "platform/linux/wayland_clipboard.h"

#include <poll.h>

#include <algorithm>
#include <cstdlib>
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
  WaylandClipboard(std::unique_ptr<WaylandDataControl> control, std::string display)
      : control_(std::move(control)), display_(std::move(display)) {}

  void serve(ClipboardThread& thread) override {
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
    for (;;) {
      auto [quit, offer] = thread.commands();
      if (quit) break;
      if (offer) owner.claim(std::move(offer->first), offer->second);
      owner.collect();
      reader.collect();
      if (!handleEvents(reader, owner, thread.wakeDescriptor(), ClipboardClock::time_point::max()))
        return;
    }
    leave(reader, owner);
  }

  void interrupt() override { control_->interrupt(); }

 private:
  // Serves on until the keeper has what would be lost with us.
  void leave(WaylandSelectionReader& reader, WaylandSelectionOwner& owner) {
    if (!owner.present()) return;
    const Descriptor keeper = startClipboardKeeper(*owner.present(), owner.mark(), display_);
    const auto limit = ClipboardClock::now() + keepingLimit;
    bool waiting = static_cast<bool>(keeper);
    while ((waiting || owner.isServing()) && ClipboardClock::now() < limit) {
      if (!handleEvents(reader, owner, waiting ? keeper.get() : -1, limit)) return;
      waiting = waiting && watched_[1].revents == 0;
      owner.collect();
    }
  }

  // Waits for something to come, until `deadline` at the latest, and handles it. False when the
  // connection has ended.
  bool handleEvents(WaylandSelectionReader& reader, WaylandSelectionOwner& owner, int wake,
                    ClipboardClock::time_point deadline) {
    control_->prepare();
    watched_.clear();
    watched_.push_back({control_->descriptor(), control_->events(), 0});
    watched_.push_back({wake, POLLIN, 0});
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
  std::vector<pollfd> watched_;
};

}  // namespace

std::unique_ptr<ClipboardConnection> connectWaylandClipboard(const std::string& display) {
  // The library would look for a desktop of the usual name then, which may not be the user's.
  if (display.empty() && !std::getenv("WAYLAND_DISPLAY")) return nullptr;
  auto control = WaylandDataControl::connect(display);
  if (!control) return nullptr;
  return std::make_unique<WaylandClipboard>(std::move(control), display);
}

}  // namespace marbelot
