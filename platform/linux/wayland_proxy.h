// What C libraries make for a Wayland client: proxies, which go before their connection, and
// keymaps.
#pragma once

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/descriptor.h"

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

// In pixels; null when it cannot be had.
inline wl_buffer* makeClearBuffer(wl_shm* memory, std::int32_t width, std::int32_t height) {
  constexpr int pixelBytes = 4;
  const std::int32_t stride = width * pixelBytes, size = stride * height;
  const Descriptor file(::memfd_create("marbelot-clear", MFD_CLOEXEC));
  if (size <= 0 || !file || ::ftruncate(file.get(), size) != 0) return nullptr;
  wl_shm_pool* const pool = wl_shm_create_pool(memory, file.get(), size);
  wl_buffer* const buffer =
      wl_shm_pool_create_buffer(pool, 0, width, height, stride, WL_SHM_FORMAT_ARGB8888);
  wl_shm_pool_destroy(pool);
  return buffer;
}

}  // namespace marbelot
