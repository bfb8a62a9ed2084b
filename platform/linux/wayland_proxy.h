// What C libraries make for a Wayland client: proxies, which go before their connection, and
// keymaps.
#pragma once

#include <wayland-client.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace marbelot {

template <auto release>
struct Releaser {
  template <class Object>
  void operator()(Object* object) const {
    release(object);
  }
};
template <class Object, auto release>
using Released = std::unique_ptr<Object, Releaser<release>>;

// For a registry's announcements: takes the first that is `wanted`. Whether this is it.
template <class Object, class Release>
bool takeGlobal(std::unique_ptr<Object, Release>& place, const wl_interface& wanted,
                wl_registry* registry, std::uint32_t name, std::string_view interface) {
  if (place || interface != wanted.name) return false;
  place.reset(static_cast<Object*>(wl_registry_bind(registry, name, &wanted, 1)));
  return true;
}

}  // namespace marbelot
