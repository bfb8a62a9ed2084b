// The windows of all programs on an X display, as its window manager tells of them. Main thread;
// every question costs a few round trips to the server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/image.h"
#include "platform/linux/x11_connection.h"

namespace marbelot {

// A window that its user would call one: no panel, no desktop, no menu.
struct X11Window {
  xcb_window_t id = XCB_WINDOW_NONE;
  std::int64_t pid = 0;  // 0 when nobody knows
  std::string className;
  bool isShown = false;  // on the screen: neither minimised nor on another desktop
  bool isListed = true;  // to be shown among the running programs
};

// How far the window's own shadow and the like go beyond what is seen as the window, in pixels.
struct X11Margins {
  int left = 0, right = 0, top = 0, bottom = 0;
};

class X11Windows {
 public:
  explicit X11Windows(const std::string& display) : x11_(display) {}

  // From the bottom to the top; none when there is no window manager that tells.
  std::vector<X11Window> stacked();
  // The program's own picture of itself; none when it has none.
  std::optional<Image> icon(xcb_window_t window);
  // The window with what the window manager has put around it.
  xcb_window_t framed(xcb_window_t window);
  X11Margins margins(xcb_window_t window);

  // Brings the window to the front of all others, with the focus or without.
  void activate(xcb_window_t window);
  void raise(xcb_window_t window);

 private:
  using PropertyReply = X11Reply<xcb_get_property_reply_t>;
  xcb_get_property_cookie_t ask(xcb_window_t window, std::string_view property,
                                std::uint32_t words);
  PropertyReply answer(xcb_get_property_cookie_t cookie);
  xcb_window_t root() const;
  void send(xcb_window_t window, std::string_view message, std::uint32_t first,
            std::uint32_t second, std::uint32_t third);
  void askForProcesses(std::vector<X11Window>& windows);

  X11Connection x11_;
};

}  // namespace marbelot
