#include "platform/linux/wayland_keys.h"

#include <poll.h>
#include <sys/mman.h>
#include <xkbcommon/xkbcommon.h>

#include <chrono>
#include <utility>

#include "keyboard-shortcuts-inhibit-unstable-v1.h"
#include "platform/descriptor.h"
#include "platform/linux/wayland_connection.h"
#include "platform/linux/wayland_proxy.h"
#include "wlr-layer-shell-unstable-v1.h"

namespace marbelot {
namespace {

constexpr auto goingLimit = std::chrono::milliseconds(100);
constexpr std::uint32_t fromKernelCode = 8;  // what xkb adds to it

}  // namespace

class WaylandKeys::Surface {
 public:
  explicit Surface(std::chrono::milliseconds limit)
      : deadline_(WaylandConnection::Clock::now() + limit) {}
  // Gone from the screen before whatever comes next, so that the keys go where they were.
  ~Surface() {
    inhibitor_.reset();
    layer_.reset();
    surface_.reset();
    connection_.roundTrip(goingLimit);
  }
  Surface(const Surface&) = delete;
  Surface& operator=(const Surface&) = delete;

  bool show();
  bool hasFocus() const { return focused_ || !keyboard_; }
  bool hasShortcuts() const { return shortcuts_; }
  int descriptor() const { return connection_.descriptor(); }
  std::optional<Pressed> receive();

 private:
  struct Listeners;

  bool bind();
  void appear();
  void useKeymap(const char* text);

  const WaylandConnection::Clock::time_point deadline_;  // for answers
  WaylandConnection connection_;
  Released<wl_registry, wl_registry_destroy> registry_;
  Released<wl_compositor, wl_compositor_destroy> compositor_;
  Released<wl_shm, wl_shm_destroy> memory_;
  Released<wl_seat, wl_seat_destroy> seat_;
  Released<zwlr_layer_shell_v1, zwlr_layer_shell_v1_destroy> layers_;
  Released<zwp_keyboard_shortcuts_inhibit_manager_v1,
           zwp_keyboard_shortcuts_inhibit_manager_v1_destroy>
      inhibition_;
  Released<wl_keyboard, wl_keyboard_destroy> keyboard_;
  Released<wl_buffer, wl_buffer_destroy> point_;
  Released<wl_surface, wl_surface_destroy> surface_;
  Released<zwlr_layer_surface_v1, zwlr_layer_surface_v1_destroy> layer_;
  Released<zwp_keyboard_shortcuts_inhibitor_v1, zwp_keyboard_shortcuts_inhibitor_v1_destroy>
      inhibitor_;
  Released<xkb_context, xkb_context_unref> context_;
  Released<xkb_state, xkb_state_unref> state_;
  Pressed pressed_;  // since the last look
  bool appeared_ = false;
  bool focused_ = false;
  bool shortcuts_ = false;
};

// What the compositor tells, as functions that C can call.
struct WaylandKeys::Surface::Listeners {
  static Surface& of(void* self) { return *static_cast<Surface*>(self); }

  static void global(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t) {
    Surface& surface = of(self);
    takeGlobal(surface.compositor_, wl_compositor_interface, registry, name, interface);
    takeGlobal(surface.memory_, wl_shm_interface, registry, name, interface);
    takeGlobal(surface.layers_, zwlr_layer_shell_v1_interface, registry, name, interface);
    takeGlobal(surface.inhibition_, zwp_keyboard_shortcuts_inhibit_manager_v1_interface, registry,
               name, interface);
    if (takeGlobal(surface.seat_, wl_seat_interface, registry, name, interface))
      wl_seat_add_listener(surface.seat_.get(), &onSeat, self);
  }
  static void globalGone(void*, wl_registry*, std::uint32_t) {}
  static constexpr wl_registry_listener onRegistry{&global, &globalGone};

  static void capable(void* self, wl_seat* seat, std::uint32_t capabilities) {
    auto& keyboard = of(self).keyboard_;
    const bool has = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
    if (has == static_cast<bool>(keyboard)) return;
    keyboard.reset(has ? wl_seat_get_keyboard(seat) : nullptr);
    of(self).focused_ = false;
    if (has) wl_keyboard_add_listener(keyboard.get(), &onKeyboard, self);
  }
  static void named(void*, wl_seat*, const char*) {}
  static constexpr wl_seat_listener onSeat{&capable, &named};

  static void keymap(void* self, wl_keyboard*, std::uint32_t format, int file, std::uint32_t size) {
    const Descriptor from(file);
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) return;
    void* const text = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, from.get(), 0);
    if (text == MAP_FAILED) return;
    of(self).useKeymap(static_cast<const char*>(text));
    ::munmap(text, size);
  }
  static void entered(void* self, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {
    of(self).focused_ = true;
  }
  static void left(void* self, wl_keyboard*, std::uint32_t, wl_surface*) {
    of(self).focused_ = false;
  }
  static void key(void* self, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t code,
                  std::uint32_t state) {
    if (state != WL_KEYBOARD_KEY_STATE_PRESSED || !of(self).state_) return;
    of(self).pressed_.push_back(
        xkb_state_key_get_one_sym(of(self).state_.get(), code + fromKernelCode));
  }
  static void modifiers(void* self, wl_keyboard*, std::uint32_t, std::uint32_t depressed,
                        std::uint32_t latched, std::uint32_t locked, std::uint32_t group) {
    xkb_state* const state = of(self).state_.get();
    if (state) xkb_state_update_mask(state, depressed, latched, locked, 0, 0, group);
  }
  static void repeats(void*, wl_keyboard*, std::int32_t, std::int32_t) {}
  static constexpr wl_keyboard_listener onKeyboard{&keymap, &entered,   &left,
                                                   &key,    &modifiers, &repeats};

  static void configured(void* self, zwlr_layer_surface_v1* layer, std::uint32_t serial,
                         std::uint32_t, std::uint32_t) {
    zwlr_layer_surface_v1_ack_configure(layer, serial);
    if (!std::exchange(of(self).appeared_, true)) of(self).appear();
  }
  // It goes with its screen.
  static void closed(void* self, zwlr_layer_surface_v1*) { of(self).focused_ = false; }
  static constexpr zwlr_layer_surface_v1_listener onLayer{&configured, &closed};

  static void active(void* self, zwp_keyboard_shortcuts_inhibitor_v1*) {
    of(self).shortcuts_ = true;
  }
  static void inactive(void* self, zwp_keyboard_shortcuts_inhibitor_v1*) {
    of(self).shortcuts_ = false;
  }
  static constexpr zwp_keyboard_shortcuts_inhibitor_v1_listener onInhibitor{&active, &inactive};
};

bool WaylandKeys::Surface::show() {
  if (!bind()) return false;
  surface_.reset(wl_compositor_create_surface(compositor_.get()));
  // Not the topmost layer, which is the screen locker's: that has to have the keys itself.
  layer_.reset(zwlr_layer_shell_v1_get_layer_surface(
      layers_.get(), surface_.get(), nullptr, ZWLR_LAYER_SHELL_V1_LAYER_TOP, "keyboard-cleaning"));
  zwlr_layer_surface_v1_add_listener(layer_.get(), &Listeners::onLayer, this);
  zwlr_layer_surface_v1_set_size(layer_.get(), 1, 1);
  zwlr_layer_surface_v1_set_keyboard_interactivity(layer_.get(), 1);
  if (inhibition_) {
    inhibitor_.reset(zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(
        inhibition_.get(), surface_.get(), seat_.get()));
    zwp_keyboard_shortcuts_inhibitor_v1_add_listener(inhibitor_.get(), &Listeners::onInhibitor,
                                                     this);
  }
  wl_surface_commit(surface_.get());
  return connection_.waitUntil([this] { return focused_; }, deadline_) &&
         connection_.roundTrip(deadline_);
}

bool WaylandKeys::Surface::bind() {
  if (!connection_.display()) return false;
  context_.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
  registry_.reset(wl_display_get_registry(connection_.display()));
  wl_registry_add_listener(registry_.get(), &Listeners::onRegistry, this);
  // Once for what there is, and once for what the seat has.
  return context_ && connection_.roundTrip(deadline_) && compositor_ && memory_ && layers_ &&
         seat_ && connection_.roundTrip(deadline_) && keyboard_;
}

void WaylandKeys::Surface::appear() {
  point_.reset(makeClearBuffer(memory_.get(), 1, 1));
  if (!point_) return;
  wl_surface_attach(surface_.get(), point_.get(), 0, 0);
  wl_surface_commit(surface_.get());
}

void WaylandKeys::Surface::useKeymap(const char* text) {
  const Released<xkb_keymap, xkb_keymap_unref> keymap(xkb_keymap_new_from_string(
      context_.get(), text, XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS));
  state_.reset(keymap ? xkb_state_new(keymap.get()) : nullptr);
}

std::optional<WaylandKeys::Pressed> WaylandKeys::Surface::receive() {
  connection_.prepare();
  if (connection_.dispatch(POLLIN)) {
    connection_.flush();
    return std::exchange(pressed_, {});
  }
  focused_ = false;
  return std::nullopt;
}

WaylandKeys::WaylandKeys(std::unique_ptr<Surface> surface) : surface_(std::move(surface)) {}

WaylandKeys::~WaylandKeys() = default;

std::unique_ptr<WaylandKeys> WaylandKeys::take(std::chrono::milliseconds limit) {
  auto surface = std::make_unique<Surface>(limit);
  if (!surface->show()) return nullptr;
  return std::unique_ptr<WaylandKeys>(new WaylandKeys(std::move(surface)));
}

bool WaylandKeys::hasFocus() const { return surface_->hasFocus(); }
bool WaylandKeys::hasShortcuts() const { return surface_->hasShortcuts(); }
int WaylandKeys::descriptor() const { return surface_->descriptor(); }
std::optional<WaylandKeys::Pressed> WaylandKeys::receive() { return surface_->receive(); }

}  // namespace marbelot
