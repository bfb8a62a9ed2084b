// A connection to a Wayland compositor that never waits for one that hangs.
#pragma once

#include <chrono>
#include <functional>
#include <string>

struct wl_display;

namespace marbelot {

// Waiting ends when `isGivenUp`, which is asked when something comes from the descriptor.
struct WaylandInterruption {
  int descriptor = -1;
  std::function<bool()> isGivenUp;
};

class WaylandConnection {
 public:
  using Clock = std::chrono::steady_clock;

  // An empty name means the display of the environment. Without one, everything fails.
  explicit WaylandConnection(const std::string& display = {});
  ~WaylandConnection();
  WaylandConnection(const WaylandConnection&) = delete;
  WaylandConnection& operator=(const WaylandConnection&) = delete;

  wl_display* display() const { return display_; }
  void flush();

  // To wait: prepare() first; then poll descriptor() for events(); then dispatch() with what came.
  // All three on one thread; false from dispatch() when the connection has ended.
  void prepare();
  int descriptor() const;
  short events() const { return events_; }
  bool dispatch(short came);
  // False when the connection has ended before, or the time is up. `done` is also asked when
  // something comes from the descriptor `other`.
  bool waitUntil(const std::function<bool()>& done, Clock::time_point deadline, int other = -1);
  // Until the compositor has answered all that was asked before.
  bool roundTrip(Clock::time_point deadline, const WaylandInterruption& interruption = {});
  bool roundTrip(std::chrono::milliseconds limit) { return roundTrip(Clock::now() + limit); }
  // Any thread: ends the connection.
  void interrupt();

 private:
  wl_display* const display_;
  short events_ = 0;
};

}  // namespace marbelot
