// What belongs to a Wayland connection and goes before it.
#pragma once

#include <wayland-client.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>

namespace marbelot {

template <auto destroy>
struct DestroyProxy {
  template <class Object>
  void operator()(Object* object) const {
    destroy(object);
  }
};
template <class Object, auto destroy>
using WaylandProxy = std::unique_ptr<Object, DestroyProxy<destroy>>;

// For a registry's announcements: takes the first that is `wanted`. Whether this is it.
template <class Object, class Destroy>
bool takeGlobal(std::unique_ptr<Object, Destroy>& place, const wl_interface& wanted,
                wl_registry* registry, std::uint32_t name, std::string_view interface) {
  if (place || interface != wanted.name) return false;
  place.reset(static_cast<Object*>(wl_registry_bind(registry, name, &wanted, 1)));
  return true;
}

}  // namespace marbelot
