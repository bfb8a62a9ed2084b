// Every key of a Wayland desktop, whoever has the windows.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace marbelot {

// A clear point above the windows. As long as it is there the compositor gives it the keys, those
// of its own shortcuts included where it grants so much.
class WaylandKeys {
 public:
  // The keys that have been pressed, as keysyms of xkbcommon.
  using Pressed = std::vector<std::uint32_t>;

  // Null without a Wayland desktop, and where the compositor lets no program do so. Waits for its
  // answers, up to `limit`.
  static std::unique_ptr<WaylandKeys> take(std::chrono::milliseconds limit);
  ~WaylandKeys();
  WaylandKeys(const WaylandKeys&) = delete;
  WaylandKeys& operator=(const WaylandKeys&) = delete;

  // Nobody else has the keys.
  bool hasFocus() const;
  // The desktop's own shortcuts come here, too.
  bool hasShortcuts() const;
  // Once the descriptor can be read. Nothing when the connection has ended, and the keys with it.
  int descriptor() const;
  std::optional<Pressed> receive();

 private:
  class Surface;
  explicit WaylandKeys(std::unique_ptr<Surface> surface);

  const std::unique_ptr<Surface> surface_;
};

}  // namespace marbelot
