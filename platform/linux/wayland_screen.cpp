#include "platform/linux/wayland_screen.h"

#include <wayland-client.h>

#include <cstdint>
#include <string_view>

#include "platform/linux/wayland_connection.h"

namespace marbelot {
namespace {

constexpr auto answerLimit = std::chrono::seconds(2);

void global(void* shows, wl_registry*, std::uint32_t, const char* interface, std::uint32_t) {
  if (std::string_view(interface) == "zwlr_screencopy_manager_v1")
    *static_cast<bool*>(shows) = true;
}

void globalGone(void*, wl_registry*, std::uint32_t) {}

constexpr wl_registry_listener listener{&global, &globalGone};

}  // namespace

std::optional<bool> waylandShowsScreen() {
  WaylandConnection connection;
  if (!connection.display()) return false;
  bool shows = false;
  wl_registry* registry = wl_display_get_registry(connection.display());
  wl_registry_add_listener(registry, &listener, &shows);
  const bool answered = connection.roundTrip(answerLimit);
  wl_registry_destroy(registry);
  return answered ? std::optional(shows) : std::nullopt;
}

}  // namespace marbelot
