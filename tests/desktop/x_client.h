// The little of XCB that the desktop tests' helper programs share.
#pragma once

#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace marbelot::desktop_test {

struct Freed {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, Freed>;

// A connection with one window that is never shown; the process ends when there is no display.
class XClient {
 public:
  XClient() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_)) {
      std::fputs("no display\n", stderr);
      std::exit(1);
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    window_ = xcb_generate_id(connection_);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen_->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, screen_->root_visual, XCB_CW_EVENT_MASK,
                      &events);
  }
  ~XClient() { xcb_disconnect(connection_); }
  XClient(const XClient&) = delete;
  XClient& operator=(const XClient&) = delete;

  xcb_connection_t* connection() const { return connection_; }
  xcb_window_t window() const { return window_; }
  xcb_window_t root() const { return screen_->root; }

  xcb_atom_t atom(const char* name) const {
    const auto cookie = xcb_intern_atom(connection_, 0, std::uint16_t(std::strlen(name)), name);
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  // Sends what is waiting and blocks for the next event; null when the display is gone.
  Reply<xcb_generic_event_t> nextEvent() const {
    xcb_flush(connection_);
    return Reply<xcb_generic_event_t>(xcb_wait_for_event(connection_));
  }

 private:
  xcb_connection_t* connection_;
  xcb_screen_t* screen_;
  xcb_window_t window_;
};

inline std::uint8_t eventType(const xcb_generic_event_t& event) {
  return event.response_type & 0x7F;  // the top bit marks events sent by clients
}

}  // namespace marbelot::desktop_test
