#include "platform/linux/wayland_screen.h"

#include <wayland-client.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace marbelot {
namespace {

void global(void* shows, wl_registry*, std::uint32_t, const char* interface, std::uint32_t) {
  if (std::string_view(interface) == "zwlr_screencopy_manager_v1")
    *static_cast<bool*>(shows) = true;
}

void globalGone(void*, wl_registry*, std::uint32_t) {}

constexpr wl_registry_listener listener{&global, &globalGone};

}  // namespace

bool waylandShowsScreen() {
  const std::unique_ptr<wl_display, decltype(&wl_display_disconnect)> display(
      wl_display_connect(nullptr), wl_display_disconnect);
  if (!display) return false;
  bool shows = false;
  wl_registry* registry = wl_display_get_registry(display.get());
  wl_registry_add_listener(registry, &listener, &shows);
  wl_display_roundtrip(display.get());
  wl_registry_destroy(registry);
  return shows;
}

}  // namespace marbelot
