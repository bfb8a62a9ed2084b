// A mouse for a desktop that has none:  wayland_pointer WIDTH HEIGHT
// WIDTH and HEIGHT are the screen's. Reads "move X Y", "press", "release" and "sleep MS" from
// standard input, answers "done" with a line, and is unplugged at its end.
#include <linux/input-event-codes.h>
#include <unistd.h>
#include <wayland-client.h>

#include <chrono>
#include <iostream>
#include <string>

#include "wlr-virtual-pointer-unstable-v1.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto width = static_cast<unsigned>(std::stoul(argv[1]));
  const auto height = static_cast<unsigned>(std::stoul(argv[2]));
  wl_display* display = wl_display_connect(nullptr);
  if (!display) return 2;
  static zwlr_virtual_pointer_manager_v1* manager = nullptr;
  static const wl_registry_listener listener = {
      [](void*, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
        if (std::string(interface) == zwlr_virtual_pointer_manager_v1_interface.name) {
          manager = static_cast<zwlr_virtual_pointer_manager_v1*>(
              wl_registry_bind(registry, name, &zwlr_virtual_pointer_manager_v1_interface, 1));
        }
      },
      [](void*, wl_registry*, uint32_t) {}};
  wl_registry_add_listener(wl_display_get_registry(display), &listener, nullptr);
  wl_display_roundtrip(display);
  if (!manager) return 3;
  auto* pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(manager, nullptr);
  const auto now = [] {
    return unsigned(std::chrono::steady_clock::now().time_since_epoch() /
                    std::chrono::milliseconds(1));
  };
  const auto finish = [&] {
    zwlr_virtual_pointer_v1_frame(pointer);
    wl_display_roundtrip(display);
    ::usleep(30000);
  };
  const auto button = [&](unsigned state) {
    zwlr_virtual_pointer_v1_button(pointer, now(), BTN_LEFT, state);
    finish();
  };
  wl_display_roundtrip(display);
  for (std::string word; std::cin >> word;) {
    unsigned x = 0, y = 0;
    if (word == "move" && std::cin >> x >> y) {
      zwlr_virtual_pointer_v1_motion_absolute(pointer, now(), x, y, width, height);
      finish();
    }
    if (word == "press") button(1);
    if (word == "release") button(0);
    if (word == "done") std::cout << "done" << std::endl;
    if (word == "sleep" && std::cin >> x) ::usleep(x * 1000);
  }
}
