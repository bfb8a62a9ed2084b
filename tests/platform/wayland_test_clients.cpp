#include "tests/platform/wayland_test_clients.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/linux/clipboard_types.h"
#include "platform/linux/helper_program.h"
#include "platform/linux/wayland_data_control.h"

namespace marbelot {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto limit = std::chrono::seconds(20);

// Handles what comes until `done`; false when that takes too long, or the connection has ended.
bool serve(WaylandDataControl& control, const std::vector<int>& others,
           const std::function<bool()>& done) {
  const auto end = Clock::now() + limit;
  while (!done()) {
    if (others.empty() && Clock::now() > end) return false;
    control.prepare();
    std::vector<pollfd> watched{{control.descriptor(), control.events(), 0}};
    for (const int other : others) watched.push_back({other, POLLIN, 0});
    ::poll(watched.data(), watched.size(), 20);
    if (!control.dispatch(watched.front().revents)) return false;
  }
  return true;
}

void own(const std::string& display, TestOwner::State& owner) {
  const auto control = WaylandDataControl::connect(display);
  struct Held {
    std::string rest;
    Descriptor to;
  };
  std::vector<Held> held;
  bool resumed = false;
  const auto put = [&](const Descriptor& to, const std::string& bytes) {
    if (writeFully(to.get(), bytes)) owner.given += bytes.size();
  };
  std::vector<std::string> types;
  for (const auto& [type, bytes] : owner.data) types.push_back(type);
  control->watch({[&](const std::unique_ptr<WaylandOffer>& offer, bool) {
                    if (!offer || offer->types() != types) return;
                    owner.tellReady();
                  },
                  [&](const std::string& type, Descriptor to) {
                    const std::string& bytes = owner.data.at(type);
                    const std::size_t now = resumed ? bytes.size()
                                            : owner.manners.ignored.contains(type)
                                                ? 0
                                                : std::min(bytes.size(), owner.manners.stallAfter);
                    put(to, bytes.substr(0, now));
                    if (now < bytes.size()) held.push_back({bytes.substr(now), std::move(to)});
                    owner.asked = true;
                  },
                  [&] { owner.replaced = true; }});
  control->offer(types);
  serve(*control, {owner.quit, owner.resume}, [&] {
    if (owner.takeResume()) {
      resumed = true;
      for (const Held& each : held) put(each.to, each.rest);
      held.clear();
    }
    return owner.isQuit();
  });
}

}  // namespace

std::vector<std::string> waylandDesktops() {
  if (std::getenv("MARBELOT_TEST_DESKTOP")) return {"present"};
  return {"ext", "wlr"};
}

PrivateCompositor::PrivateCompositor(const std::string& desktop) {
  if (desktop == "present") return;
  display_ = home_ / "socket";
  process_.start({helperPath("fake_wayland_desktop"), desktop, display_});
}

WaylandOwner::WaylandOwner(const std::string& display, Data data, Manners manners)
    : TestOwner(std::move(data), std::move(manners),
                [display](State& owner) { own(display, owner); }) {}

Descriptor askWayland(const std::string& display, const std::string& type) {
  const auto control = WaylandDataControl::connect(display);
  if (!control) return {};
  Descriptor from;
  control->watch({[&](const std::unique_ptr<WaylandOffer>& offer, bool) {
                    const bool has = offer && contains(offer->types(), type);
                    from = has ? offer->receive(type) : Descriptor();
                  },
                  [](const std::string&, const Descriptor&) {}, [] {}});
  // Once for what there is, and once until it has been asked for.
  if (!control->roundTrip(limit) || !control->roundTrip(limit)) return {};
  return from;
}

std::optional<std::string> takePaste(const Descriptor& from) {
  std::string bytes;
  std::vector<char> part(1 << 20);
  const auto end = Clock::now() + limit;
  while (from && Clock::now() < end) {
    pollfd readable{from.get(), POLLIN, 0};
    ::poll(&readable, 1, 100);
    const ssize_t got = ::read(from.get(), part.data(), part.size());
    if (got == 0) return bytes;
    if (got > 0) bytes.append(part.data(), static_cast<std::size_t>(got));
  }
  return std::nullopt;
}

std::optional<std::string> pasteFromWayland(const std::string& display, const std::string& type) {
  return takePaste(askWayland(display, type));
}

}  // namespace marbelot
