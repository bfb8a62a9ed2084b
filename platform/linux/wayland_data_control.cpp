#include "platform/linux/wayland_data_control.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/linux/wayland_proxy.h"
#include "wlr-data-control-unstable-v1.h"

namespace marbelot {
namespace {

constexpr auto answerLimit = std::chrono::seconds(2);
constexpr std::size_t typeLimit = 512;
constexpr int pipeSize = 1 << 20;  // bytes; refused quietly where the user has too many

// Only the manager's name goes over the wire; what it makes is told apart by numbers.
const wl_interface extManager = [] {
  wl_interface copy = zwlr_data_control_manager_v1_interface;
  copy.name = "ext_data_control_manager_v1";
  copy.version = 1;
  return copy;
}();

}  // namespace

void ReleaseDataControl::operator()(wl_registry* proxy) const { wl_registry_destroy(proxy); }
void ReleaseDataControl::operator()(wl_seat* proxy) const { wl_seat_destroy(proxy); }
void ReleaseDataControl::operator()(zwlr_data_control_device_v1* proxy) const {
  zwlr_data_control_device_v1_destroy(proxy);
}
void ReleaseDataControl::operator()(zwlr_data_control_manager_v1* proxy) const {
  zwlr_data_control_manager_v1_destroy(proxy);
}
void ReleaseDataControl::operator()(zwlr_data_control_offer_v1* proxy) const {
  zwlr_data_control_offer_v1_destroy(proxy);
}
void ReleaseDataControl::operator()(zwlr_data_control_source_v1* proxy) const {
  zwlr_data_control_source_v1_destroy(proxy);
}

// What the compositor tells, as functions that C can call.
struct WaylandDataControl::Listeners {
  static WaylandDataControl& of(void* self) { return *static_cast<WaylandDataControl*>(self); }

  static void global(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t) {
    WaylandDataControl& control = of(self);
    takeGlobal(control.manager_, extManager, registry, name, interface);
    takeGlobal(control.manager_, zwlr_data_control_manager_v1_interface, registry, name, interface);
    if (std::string_view(interface) != wl_seat_interface.name) return;
    control.seats_.push_back(name);
    control.takeSeat();
  }
  static void globalGone(void* self, wl_registry*, std::uint32_t name) {
    WaylandDataControl& control = of(self);
    const bool ours = !control.seats_.empty() && control.seats_.front() == name;
    std::erase(control.seats_, name);
    if (!ours) return;
    control.device_.reset();
    control.seat_.reset();
    control.takeSeat();
  }
  static constexpr wl_registry_listener onRegistry{&global, &globalGone};

  static void described(void* self, zwlr_data_control_offer_v1*, const char* type) {
    auto& types = static_cast<WaylandOffer*>(self)->types_;
    if (types.size() < typeLimit) types.emplace_back(type);
  }
  static constexpr zwlr_data_control_offer_v1_listener onOffer{&described};

  static void offered(void* self, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* proxy) {
    auto& offers = of(self).offers_;
    offers.push_back(std::make_unique<WaylandOffer>(proxy));
    zwlr_data_control_offer_v1_add_listener(proxy, &onOffer, offers.back().get());
  }
  static void selected(void* self, zwlr_data_control_device_v1*,
                       zwlr_data_control_offer_v1* proxy) {
    WaylandDataControl& control = of(self);
    control.handlers_.announced(control.take(proxy), control.initial_);
  }
  // Its seat goes.
  static void finished(void* self, zwlr_data_control_device_v1*) { of(self).device_.reset(); }
  // What the middle mouse button pastes is nothing to us.
  static void selectedPrimary(void* self, zwlr_data_control_device_v1*,
                              zwlr_data_control_offer_v1* proxy) {
    of(self).take(proxy);
  }
  static constexpr zwlr_data_control_device_v1_listener onDevice{&offered, &selected, &finished,
                                                                 &selectedPrimary};

  static void asked(void* self, zwlr_data_control_source_v1*, const char* type, int to) {
    of(self).handlers_.asked(type, Descriptor(to));
  }
  static void cancelled(void* self, zwlr_data_control_source_v1* source) {
    WaylandDataControl& control = of(self);
    std::erase_if(control.sources_, [&](const auto& each) { return each.get() == source; });
    if (control.sources_.empty()) control.handlers_.replaced();
  }
  static constexpr zwlr_data_control_source_v1_listener onSource{&asked, &cancelled};

  static void presentTold(void* self, wl_callback* callback, std::uint32_t) {
    wl_callback_destroy(callback);
    of(self).initial_ = false;
  }
  static constexpr wl_callback_listener present{&presentTold};
};

Descriptor WaylandOffer::receive(const std::string& type) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {};
  Descriptor ours(ends[0]);
  const Descriptor theirs(ends[1]);
  // Only this end: the owner may not expect it of the other.
  ::fcntl(ours.get(), F_SETFL, O_NONBLOCK);
  ::fcntl(theirs.get(), F_SETPIPE_SZ, pipeSize);
  zwlr_data_control_offer_v1_receive(proxy_.get(), type.c_str(), theirs.get());
  return ours;
}

std::unique_ptr<WaylandDataControl> WaylandDataControl::connect(const std::string& display) {
  auto control = std::make_unique<WaylandDataControl>(display);
  return control->bind(Clock::now() + answerLimit) ? std::move(control) : nullptr;
}

bool WaylandDataControl::bind(Clock::time_point deadline, const WaylandInterruption& interruption) {
  if (!display()) return false;
  registry_.reset(wl_display_get_registry(display()));
  wl_registry_add_listener(registry_.get(), &Listeners::onRegistry, this);
  return roundTrip(deadline, interruption) && manager_ && seat_;
}

void WaylandDataControl::takeSeat() {
  if (seat_ || seats_.empty()) return;
  seat_.reset(static_cast<wl_seat*>(
      wl_registry_bind(registry_.get(), seats_.front(), &wl_seat_interface, 1)));
  if (handlers_.announced) makeDevice();
}

void WaylandDataControl::watch(Handlers handlers) {
  handlers_ = std::move(handlers);
  makeDevice();
  wl_callback_add_listener(wl_display_sync(display()), &Listeners::present, this);
}

void WaylandDataControl::makeDevice() {
  device_.reset(zwlr_data_control_manager_v1_get_data_device(manager_.get(), seat_.get()));
  zwlr_data_control_device_v1_add_listener(device_.get(), &Listeners::onDevice, this);
  if (std::exchange(waiting_, false) && !sources_.empty())
    zwlr_data_control_device_v1_set_selection(device_.get(), sources_.back().get());
}

std::unique_ptr<WaylandOffer> WaylandDataControl::take(zwlr_data_control_offer_v1* proxy) {
  const auto found = std::find_if(offers_.begin(), offers_.end(),
                                  [&](const auto& offer) { return offer->proxy_.get() == proxy; });
  if (found == offers_.end()) return nullptr;
  std::unique_ptr<WaylandOffer> offer = std::move(*found);
  offers_.erase(found);
  return offer;
}

// The source before is destroyed when its end is confirmed: until then it may still be asked.
void WaylandDataControl::offer(const std::vector<std::string>& types) {
  if (waiting_) sources_.pop_back();  // which nobody was ever told of
  sources_.emplace_back(zwlr_data_control_manager_v1_create_data_source(manager_.get()));
  zwlr_data_control_source_v1* const source = sources_.back().get();
  zwlr_data_control_source_v1_add_listener(source, &Listeners::onSource, this);
  for (const std::string& type : types) zwlr_data_control_source_v1_offer(source, type.c_str());
  waiting_ = !device_;
  if (device_) zwlr_data_control_device_v1_set_selection(device_.get(), source);
}

}  // namespace marbelot
