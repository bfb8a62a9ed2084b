// The protocol by which a program without a window watches and owns a Wayland desktop's clipboard:
// ext-data-control-v1, and wlr-data-control-unstable-v1 where there is only that. The two differ in
// the name of their manager alone.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/descriptor.h"
#include "platform/linux/wayland_connection.h"

struct wl_registry;
struct wl_seat;
struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_offer_v1;
struct zwlr_data_control_source_v1;

namespace marbelot {

// Gives back what the compositor has for us; it goes before the connection.
struct ReleaseDataControl {
  void operator()(wl_registry* proxy) const;
  void operator()(wl_seat* proxy) const;
  void operator()(zwlr_data_control_device_v1* proxy) const;
  void operator()(zwlr_data_control_manager_v1* proxy) const;
  void operator()(zwlr_data_control_offer_v1* proxy) const;
  void operator()(zwlr_data_control_source_v1* proxy) const;
};
template <class Object>
using DataControlProxy = std::unique_ptr<Object, ReleaseDataControl>;

// What a program has on the clipboard. Stays valid after the clipboard has another owner, but then
// nothing comes of it.
class WaylandOffer {
 public:
  explicit WaylandOffer(zwlr_data_control_offer_v1* proxy) : proxy_(proxy) {}

  const std::vector<std::string>& types() const { return types_; }
  // The end from which to read, without blocking, what the owner writes; none when there are no
  // more descriptors. An owner that does not have the type closes it at once.
  Descriptor receive(const std::string& type);

 private:
  friend class WaylandDataControl;
  const DataControlProxy<zwlr_data_control_offer_v1> proxy_;
  std::vector<std::string> types_;
};

class WaylandDataControl : public WaylandConnection {
 public:
  struct Handlers {
    // The clipboard has a new owner; null when it has none. `initial`: found at the start.
    std::function<void(std::unique_ptr<WaylandOffer>, bool initial)> announced;
    // Somebody pastes what we offer, or did offer a moment ago.
    std::function<void(const std::string& type, Descriptor to)> asked;
    // All that we have offered has been replaced.
    std::function<void()> replaced;
  };

  // Null when there is no such display or when it has neither protocol; waits up to two seconds for
  // its answer.
  static std::unique_ptr<WaylandDataControl> connect(const std::string& display = {});

  using WaylandConnection::WaylandConnection;
  // What has to come first. False when the display has neither protocol, or does not answer.
  bool bind(Clock::time_point deadline, const WaylandInterruption& interruption = {});

  // Starts the announcements. The handlers are called by dispatch().
  void watch(Handlers handlers);
  // Whether all has been announced that was there at the start.
  bool presentIsKnown() const { return !initial_; }
  // Takes the clipboard; that of the next seat, while there is none.
  void offer(const std::vector<std::string>& types);

 private:
  struct Listeners;

  void takeSeat();
  void makeDevice();
  std::unique_ptr<WaylandOffer> take(zwlr_data_control_offer_v1* proxy);

  DataControlProxy<wl_registry> registry_;
  DataControlProxy<zwlr_data_control_manager_v1> manager_;
  std::vector<std::uint32_t> seats_;  // the registry's names of those that there are
  // Of the first of them.
  DataControlProxy<wl_seat> seat_;
  DataControlProxy<zwlr_data_control_device_v1> device_;
  // Not yet replaced, the last one last.
  std::vector<DataControlProxy<zwlr_data_control_source_v1>> sources_;
  std::vector<std::unique_ptr<WaylandOffer>> offers_;  // described, not yet announced
  Handlers handlers_;
  bool initial_ = true;
  bool waiting_ = false;  // the last source, for a seat
};

}  // namespace marbelot
