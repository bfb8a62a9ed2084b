#include "platform/linux/wayland_pointer.h"

#include <algorithm>
#include <list>

#include "platform/linux/wayland_connection.h"
#include "platform/linux/wayland_proxy.h"
#include "wlr-layer-shell-unstable-v1.h"
#include "xdg-output-unstable-v1.h"

namespace marbelot {
namespace {

constexpr std::uint32_t allEdges = 15;

// A clear surface, as large as its screen or as what bars leave of it.
struct Cover {
  bool overBars = false;
  bool configured = false;
  int width = 0, height = 0;
  Released<wl_surface, wl_surface_destroy> surface;
  Released<zwlr_layer_surface_v1, zwlr_layer_surface_v1_destroy> layer;
  Released<wl_buffer, wl_buffer_destroy> clear;
};

struct Output {
  int x = 0, y = 0;
  Released<wl_output, wl_output_destroy> output;
  Released<zxdg_output_v1, zxdg_output_v1_destroy> place;
  Cover whole, usable;
};

class PointerSearch {
 public:
  explicit PointerSearch(std::chrono::milliseconds limit)
      : deadline_(WaylandConnection::Clock::now() + limit) {}

  std::optional<WaylandPointerPlace> find();

 private:
  struct Listeners;

  bool bind();
  void cover(Output& output, Cover& cover, bool overBars);
  void show(Cover& cover);
  bool isReady() const;
  WaylandPointerPlace found() const;

  const WaylandConnection::Clock::time_point deadline_;  // for answers
  WaylandConnection connection_;
  Released<wl_registry, wl_registry_destroy> registry_;
  Released<wl_compositor, wl_compositor_destroy> compositor_;
  Released<wl_shm, wl_shm_destroy> memory_;
  Released<wl_seat, wl_seat_destroy> seat_;
  Released<wl_pointer, wl_pointer_destroy> pointer_;
  Released<zwlr_layer_shell_v1, zwlr_layer_shell_v1_destroy> layers_;
  Released<zxdg_output_manager_v1, zxdg_output_manager_v1_destroy> places_;
  std::list<Output> outputs_;
  const Output* under_ = nullptr;  // the pointer
  int x_ = 0, y_ = 0;              // on that output
};

// What the compositor tells, as functions that C can call.
struct PointerSearch::Listeners {
  static PointerSearch& of(void* self) { return *static_cast<PointerSearch*>(self); }

  static void global(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t) {
    PointerSearch& search = of(self);
    takeGlobal(search.compositor_, wl_compositor_interface, registry, name, interface);
    takeGlobal(search.memory_, wl_shm_interface, registry, name, interface);
    takeGlobal(search.layers_, zwlr_layer_shell_v1_interface, registry, name, interface);
    takeGlobal(search.places_, zxdg_output_manager_v1_interface, registry, name, interface);
    if (takeGlobal(search.seat_, wl_seat_interface, registry, name, interface))
      wl_seat_add_listener(search.seat_.get(), &onSeat, self);
    Released<wl_output, wl_output_destroy> output;
    if (takeGlobal(output, wl_output_interface, registry, name, interface))
      search.outputs_.emplace_back().output = std::move(output);
  }
  static void globalGone(void*, wl_registry*, std::uint32_t) {}
  static constexpr wl_registry_listener onRegistry{&global, &globalGone};

  static void capable(void* self, wl_seat* seat, std::uint32_t capabilities) {
    if ((capabilities & WL_SEAT_CAPABILITY_POINTER) == 0 || of(self).pointer_) return;
    of(self).pointer_.reset(wl_seat_get_pointer(seat));
    wl_pointer_add_listener(of(self).pointer_.get(), &onPointer, self);
  }
  static void named(void*, wl_seat*, const char*) {}
  static constexpr wl_seat_listener onSeat{&capable, &named};

  static void moved(void* self, wl_pointer*, std::uint32_t, wl_fixed_t x, wl_fixed_t y) {
    of(self).x_ = wl_fixed_to_int(x);
    of(self).y_ = wl_fixed_to_int(y);
  }
  static void entered(void* self, wl_pointer* pointer, std::uint32_t, wl_surface* surface,
                      wl_fixed_t x, wl_fixed_t y) {
    for (const Output& output : of(self).outputs_)
      if (output.whole.surface.get() == surface) of(self).under_ = &output;
    moved(self, pointer, 0, x, y);
  }
  static void left(void*, wl_pointer*, std::uint32_t, wl_surface*) {}
  static void pressed(void*, wl_pointer*, std::uint32_t, std::uint32_t, std::uint32_t,
                      std::uint32_t) {}
  static void turned(void*, wl_pointer*, std::uint32_t, std::uint32_t, wl_fixed_t) {}
  static constexpr wl_pointer_listener onPointer = [] {
    wl_pointer_listener listener{};
    listener.enter = &entered;
    listener.leave = &left;
    listener.motion = &moved;
    listener.button = &pressed;
    listener.axis = &turned;
    return listener;
  }();

  static void placed(void* output, zxdg_output_v1*, std::int32_t x, std::int32_t y) {
    static_cast<Output*>(output)->x = x;
    static_cast<Output*>(output)->y = y;
  }
  static void sized(void*, zxdg_output_v1*, std::int32_t, std::int32_t) {}
  static void told(void*, zxdg_output_v1*) {}
  static constexpr zxdg_output_v1_listener onOutput{&placed, &sized, &told};

  static void configured(void* self, zwlr_layer_surface_v1* layer, std::uint32_t serial,
                         std::uint32_t width, std::uint32_t height) {
    zwlr_layer_surface_v1_ack_configure(layer, serial);
    auto& cover = *static_cast<Cover*>(self);
    cover.width = static_cast<int>(width);
    cover.height = static_cast<int>(height);
    cover.configured = true;
  }
  static void closed(void*, zwlr_layer_surface_v1*) {}
  static constexpr zwlr_layer_surface_v1_listener onLayer{&configured, &closed};
};

std::optional<WaylandPointerPlace> PointerSearch::find() {
  if (!bind()) return std::nullopt;
  for (Output& output : outputs_) {
    if (places_) {
      output.place.reset(zxdg_output_manager_v1_get_xdg_output(places_.get(), output.output.get()));
      zxdg_output_v1_add_listener(output.place.get(), &Listeners::onOutput, &output);
    }
    cover(output, output.whole, true);
    cover(output, output.usable, false);
  }
  if (!connection_.waitUntil([this] { return isReady(); }, deadline_)) return std::nullopt;
  for (Output& output : outputs_) show(output.whole);
  if (!connection_.waitUntil([this] { return under_ != nullptr; }, deadline_)) return std::nullopt;
  return found();
}

bool PointerSearch::bind() {
  if (!connection_.display()) return false;
  registry_.reset(wl_display_get_registry(connection_.display()));
  wl_registry_add_listener(registry_.get(), &Listeners::onRegistry, this);
  // Once for what there is, and once for what the seat has.
  return connection_.roundTrip(deadline_) && compositor_ && memory_ && layers_ && seat_ &&
         connection_.roundTrip(deadline_) && pointer_;
}

void PointerSearch::cover(Output& output, Cover& cover, bool overBars) {
  cover.surface.reset(wl_compositor_create_surface(compositor_.get()));
  cover.layer.reset(
      zwlr_layer_shell_v1_get_layer_surface(layers_.get(), cover.surface.get(), output.output.get(),
                                            ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY, "pointer"));
  zwlr_layer_surface_v1_add_listener(cover.layer.get(), &Listeners::onLayer, &cover);
  zwlr_layer_surface_v1_set_anchor(cover.layer.get(), allEdges);
  zwlr_layer_surface_v1_set_exclusive_zone(cover.layer.get(), overBars ? -1 : 0);
  wl_surface_commit(cover.surface.get());
}

void PointerSearch::show(Cover& cover) {
  cover.clear.reset(makeClearBuffer(memory_.get(), cover.width, cover.height));
  if (!cover.clear) return;
  wl_surface_attach(cover.surface.get(), cover.clear.get(), 0, 0);
  wl_surface_commit(cover.surface.get());
}

bool PointerSearch::isReady() const {
  for (const Output& output : outputs_)
    if (!output.whole.configured || !output.usable.configured) return false;
  return !outputs_.empty();
}

// How much bars cover is known, and where they are is not: at the edge where the pointer is on one,
// else they may be at either.
WaylandPointerPlace PointerSearch::found() const {
  const auto free = [](int at, int whole, int usable, int& begin, int& size) {
    const int covered = whole - usable;
    begin = at >= usable ? 0 : covered;
    const int end = at < covered ? whole : usable;
    size = end - begin;
  };
  WaylandPointerPlace place{under_->x + x_, under_->y + y_, {}, {}};
  free(x_, under_->whole.width, under_->usable.width, place.usable.x, place.usable.width);
  free(y_, under_->whole.height, under_->usable.height, place.usable.y, place.usable.height);
  place.usable.x += under_->x;
  place.usable.y += under_->y;
  int right = 0, bottom = 0;  // screens begin at the top left
  for (const Output& output : outputs_) {
    right = std::max(right, output.x + output.whole.width);
    bottom = std::max(bottom, output.y + output.whole.height);
  }
  place.desktop = {0, 0, right, bottom};
  return place;
}

}  // namespace

std::optional<WaylandPointerPlace> findWaylandPointer(std::chrono::milliseconds limit) {
  return PointerSearch(limit).find();
}

}  // namespace marbelot
