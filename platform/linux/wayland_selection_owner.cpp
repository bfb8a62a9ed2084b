#include "platform/linux/wayland_selection_owner.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <memory>
#include <random>
#include <utility>

#include "platform/linux/clipboard_types.h"

namespace marbelot {
namespace {

constexpr auto sendingLimit = std::chrono::seconds(30);
constexpr std::size_t largestPart = std::size_t{4} << 20;  // bytes, so that others get their turn

// Nobody else's, and no other instance's either.
std::string newMark() {
  std::random_device random;
  return "application/x-marbelot-" + std::to_string(random()) + std::to_string(random()) + "-";
}

}  // namespace

struct WaylandSelectionOwner::Sending {
  Descriptor to;
  SharedBytes bytes;
  std::size_t sent = 0;
  ClipboardClock::time_point deadline;

  // Whether it is over.
  bool advance() {
    const std::size_t end = std::min(bytes->size(), sent + largestPart);
    while (sent < end) {
      const ssize_t put = ::write(to.get(), bytes->data() + sent, end - sent);
      if (put < 0 && errno == EINTR) continue;
      if (put < 0) return errno != EAGAIN;
      sent += static_cast<std::size_t>(put);
      deadline = ClipboardClock::now() + sendingLimit;
    }
    return sent == bytes->size();
  }
};

WaylandSelectionOwner::WaylandSelectionOwner(WaylandDataControl& control,
                                             std::function<void()> wake)
    : control_(control), mark_(newMark()), forms_(std::move(wake)) {}

WaylandSelectionOwner::~WaylandSelectionOwner() = default;

void WaylandSelectionOwner::claim(ClipboardOffer offer, std::uint64_t write) {
  std::vector<std::string> types = offeredTypes(offer);
  types.push_back(mark_ + std::to_string(write));
  forms_.set(std::move(offer));
  wanted_ = write;
  control_.offer(types);
  control_.flush();
  forms_.preload();
}

bool WaylandSelectionOwner::ownerChanged(const std::vector<std::string>& types) {
  const auto ours = std::find_if(types.begin(), types.end(),
                                 [&](const std::string& type) { return type.starts_with(mark_); });
  if (ours == types.end()) return false;
  std::from_chars(ours->data() + mark_.size(), ours->data() + ours->size(), claimed_);
  return true;
}

const ClipboardOffer* WaylandSelectionOwner::present() const {
  return claimed_ == wanted_ ? forms_.offer() : nullptr;
}

void WaylandSelectionOwner::answer(const std::string& type, Descriptor to) {
  const ClipboardOffer* offer = forms_.offer();
  if (!offer || !contains(offeredTypes(*offer), type)) return;
  // Shared, because a function object has to be copied.
  const auto pipe = std::make_shared<Descriptor>(std::move(to));
  forms_.request(type, [this, pipe](const SharedBytes& bytes) {
    if (!bytes) return;
    ::fcntl(pipe->get(), F_SETFL, ::fcntl(pipe->get(), F_GETFL) | O_NONBLOCK);
    Sending sending{std::move(*pipe), bytes, 0, ClipboardClock::now() + sendingLimit};
    if (!sending.advance()) sendings_.push_back(std::move(sending));
  });
}

void WaylandSelectionOwner::watch(std::vector<pollfd>& watched) const {
  for (const Sending& sending : sendings_) watched.push_back({sending.to.get(), POLLOUT, 0});
}

void WaylandSelectionOwner::send() {
  sendings_.remove_if([](Sending& sending) { return sending.advance(); });
}

ClipboardClock::time_point WaylandSelectionOwner::deadline() const {
  auto earliest = ClipboardClock::time_point::max();
  for (const Sending& sending : sendings_) earliest = std::min(earliest, sending.deadline);
  return earliest;
}

void WaylandSelectionOwner::expire(ClipboardClock::time_point now) {
  sendings_.remove_if([&](const Sending& sending) { return sending.deadline <= now; });
}

}  // namespace marbelot
