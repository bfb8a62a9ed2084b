// A mouse and a keyboard for a desktop that has none:  wayland_hand WIDTH HEIGHT
// WIDTH and HEIGHT are the screen's. Reads "move X Y", "press", "release", "key CODE" (of
// linux/input-event-codes.h) and "sleep MS" from standard input, answers "done" with a line, and is
// unplugged at its end. The keyboard stays plugged in, with one layout: X11 programs lose keys
// while theirs changes.
#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

#include <chrono>
#include <iostream>
#include <string>
#include <string_view>

#include "virtual-keyboard-unstable-v1.h"
#include "wlr-virtual-pointer-unstable-v1.h"

namespace {

constexpr std::string_view keymap =
    "xkb_keymap { xkb_keycodes { include \"evdev+aliases(qwerty)\" };"
    " xkb_types { include \"complete\" }; xkb_compat { include \"complete\" };"
    " xkb_symbols { include \"pc+us+inet(evdev)\" }; };";

unsigned now() {
  return unsigned(std::chrono::steady_clock::now().time_since_epoch() /
                  std::chrono::milliseconds(1));
}

class Hand {
 public:
  explicit Hand(wl_display* display) : display_(display) {
    static const wl_registry_listener listener = {
        [](void* hand, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
          static_cast<Hand*>(hand)->bind(registry, name, interface);
        },
        [](void*, wl_registry*, uint32_t) {}};
    wl_registry_add_listener(wl_display_get_registry(display_), &listener, this);
    wl_display_roundtrip(display_);
    if (!pointers_ || !keyboards_ || !seat_) return;
    pointer_ = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(pointers_, nullptr);
    keyboard_ = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(keyboards_, seat_);
    const int file = memfd_create("keymap", MFD_CLOEXEC);
    const std::size_t size = keymap.size() + 1;
    if (write(file, keymap.data(), size) != static_cast<ssize_t>(size)) return;
    zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file, size);
    close(file);
    // The programs learn of a keyboard by what is done on it.
    zwp_virtual_keyboard_v1_modifiers(keyboard_, 0, 0, 0, 0);
    wl_display_roundtrip(display_);
    ready_ = true;
  }

  bool ready() const { return ready_; }
  void move(unsigned x, unsigned y, unsigned width, unsigned height) {
    zwlr_virtual_pointer_v1_motion_absolute(pointer_, now(), x, y, width, height);
    finish();
  }
  void button(unsigned state) {
    zwlr_virtual_pointer_v1_button(pointer_, now(), BTN_LEFT, state);
    finish();
  }
  void key(unsigned code) {
    for (const unsigned state : {1U, 0U}) {
      zwp_virtual_keyboard_v1_key(keyboard_, now(), code, state);
      finish();
    }
  }

 private:
  void bind(wl_registry* registry, uint32_t name, std::string_view interface) {
    const auto take = [&](auto*& place, const wl_interface& wanted) {
      if (interface != wanted.name) return;
      place =
          static_cast<std::decay_t<decltype(place)>>(wl_registry_bind(registry, name, &wanted, 1));
    };
    take(pointers_, zwlr_virtual_pointer_manager_v1_interface);
    take(keyboards_, zwp_virtual_keyboard_manager_v1_interface);
    take(seat_, wl_seat_interface);
  }
  void finish() {
    zwlr_virtual_pointer_v1_frame(pointer_);
    wl_display_roundtrip(display_);
    ::usleep(30000);
  }

  wl_display* display_;
  wl_seat* seat_ = nullptr;
  zwlr_virtual_pointer_manager_v1* pointers_ = nullptr;
  zwp_virtual_keyboard_manager_v1* keyboards_ = nullptr;
  zwlr_virtual_pointer_v1* pointer_ = nullptr;
  zwp_virtual_keyboard_v1* keyboard_ = nullptr;
  bool ready_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto width = static_cast<unsigned>(std::stoul(argv[1]));
  const auto height = static_cast<unsigned>(std::stoul(argv[2]));
  wl_display* display = wl_display_connect(nullptr);
  if (!display) return 2;
  Hand hand(display);
  if (!hand.ready()) return 3;
  for (std::string word; std::cin >> word;) {
    unsigned x = 0, y = 0;
    if (word == "move" && std::cin >> x >> y) hand.move(x, y, width, height);
    if (word == "press") hand.button(1);
    if (word == "release") hand.button(0);
    if (word == "key" && std::cin >> x) hand.key(x);
    if (word == "done") std::cout << "done\n" << std::flush;
    if (word == "sleep" && std::cin >> x) ::usleep(x * 1000);
  }
}
