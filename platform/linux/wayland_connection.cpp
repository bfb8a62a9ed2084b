#include "platform/linux/wayland_connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <wayland-client.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

namespace marbelot {
namespace {

constexpr std::int64_t longestPoll = 3600000;  // ms

void answered(void* done, wl_callback* callback, std::uint32_t) {
  wl_callback_destroy(callback);
  *static_cast<bool*>(done) = true;
}
constexpr wl_callback_listener answer{&answered};

wl_display* connect(const std::string& display) {
  if (!display.empty()) return wl_display_connect(display.c_str());
  // The library would look for a desktop of the usual name then, which may not be the user's.
  return std::getenv("WAYLAND_DISPLAY") ? wl_display_connect(nullptr) : nullptr;
}

}  // namespace

WaylandConnection::WaylandConnection(const std::string& display) : display_(connect(display)) {}

WaylandConnection::~WaylandConnection() {
  if (!display_) return;
  flush();  // what has been given up goes at once
  wl_display_disconnect(display_);
}

void WaylandConnection::flush() { wl_display_flush(display_); }

void WaylandConnection::prepare() {
  while (wl_display_prepare_read(display_) != 0) wl_display_dispatch_pending(display_);
  const bool full = wl_display_flush(display_) < 0 && errno == EAGAIN;
  events_ = static_cast<short>(full ? POLLIN | POLLOUT : POLLIN);
}

int WaylandConnection::descriptor() const { return wl_display_get_fd(display_); }

bool WaylandConnection::dispatch(short came) {
  if ((came & POLLIN) != 0) {
    if (wl_display_read_events(display_) < 0) return false;
  } else {
    wl_display_cancel_read(display_);
    if ((came & (POLLERR | POLLHUP | POLLNVAL)) != 0) return false;
  }
  return wl_display_dispatch_pending(display_) >= 0;
}

bool WaylandConnection::waitUntil(const std::function<bool()>& done, Clock::time_point deadline,
                                  int other) {
  if (!display_) return false;
  while (!done()) {
    prepare();
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    std::array<pollfd, 2> watched{{{descriptor(), events(), 0}, {other, POLLIN, 0}}};
    const int ready =
        ::poll(watched.data(), watched.size(),
               static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, longestPoll)));
    if (!dispatch(watched[0].revents) || (ready == 0 && left.count() <= 0)) return false;
  }
  return true;
}

bool WaylandConnection::roundTrip(Clock::time_point deadline,
                                  const WaylandInterruption& interruption) {
  if (!display_) return false;
  bool done = false;
  wl_callback* const callback = wl_display_sync(display_);
  wl_callback_add_listener(callback, &answer, &done);
  const auto isOver = [&] { return done || (interruption.isGivenUp && interruption.isGivenUp()); };
  waitUntil(isOver, deadline, interruption.descriptor);
  // Its answer may come later, when nobody waits for it any more.
  if (!done) wl_callback_destroy(callback);
  return done;
}

void WaylandConnection::interrupt() { ::shutdown(descriptor(), SHUT_RDWR); }

}  // namespace marbelot
