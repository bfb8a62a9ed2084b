// Reads the clipboard's image/png each time its owner changes, as a pasting program would.
//
// Prints "ready", then a line per change (the last of those that come during a transfer): when the
// change was announced and when the last byte was read (CLOCK_MONOTONIC, nanoseconds), and the
// number of bytes, -1 when the owner has no such image.
#include <time.h>
#include <xcb/xfixes.h>

#include <utility>

#include "tests/desktop/x_client.h"

namespace marbelot::desktop_test {
namespace {

long long nanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

class Reader {
 public:
  Reader()
      : clipboard_(client_.atom("CLIPBOARD")),
        png_(client_.atom("image/png")),
        incremental_(client_.atom("INCR")),
        property_(client_.atom("MARBELOT_READ")) {
    const auto* fixes = xcb_get_extension_data(client_.connection(), &xcb_xfixes_id);
    firstFixesEvent_ = fixes->first_event;
    const Reply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        client_.connection(), xcb_xfixes_query_version(client_.connection(), 5, 0), nullptr));
    xcb_xfixes_select_selection_input(client_.connection(), client_.window(), clipboard_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
  }

  void run() {
    // A reply proves that the server has seen the selection request before it.
    client_.atom("MARBELOT_READ");
    std::puts("ready");
    std::fflush(stdout);
    while (const auto event = client_.nextEvent()) {
      if (eventType(*event) == firstFixesEvent_ + XCB_XFIXES_SELECTION_NOTIFY) {
        nextAnnounced_ = nanoseconds();
        // Two transfers at a time would mix their parts.
        if (!reading_) request();
      } else if (eventType(*event) == XCB_SELECTION_NOTIFY) {
        answered(*reinterpret_cast<const xcb_selection_notify_event_t*>(event.get()));
      } else if (eventType(*event) == XCB_PROPERTY_NOTIFY) {
        propertyChanged(*reinterpret_cast<const xcb_property_notify_event_t*>(event.get()));
      }
    }
  }

 private:
  void request() {
    announced_ = std::exchange(nextAnnounced_, 0);
    reading_ = true;
    xcb_convert_selection(client_.connection(), client_.window(), clipboard_, png_, property_,
                          XCB_CURRENT_TIME);
  }

  void answered(const xcb_selection_notify_event_t& event) {
    if (event.property == XCB_ATOM_NONE) return report(-1);
    const auto part = take();
    if (!part) return report(-1);
    chunked_ = part->type == incremental_;
    bytes_ = 0;
    if (!chunked_) report(xcb_get_property_value_length(part.get()));
  }

  // A large image comes in parts, each a new value of the property; an empty one ends it.
  void propertyChanged(const xcb_property_notify_event_t& event) {
    if (!chunked_ || event.atom != property_ || event.state != XCB_PROPERTY_NEW_VALUE) return;
    const auto part = take();
    const int length = part ? xcb_get_property_value_length(part.get()) : 0;
    bytes_ += length;
    if (length > 0) return;
    chunked_ = false;
    report(bytes_);
  }

  Reply<xcb_get_property_reply_t> take() {
    constexpr std::uint32_t everything = 1U << 28;  // in units of four bytes
    const auto cookie = xcb_get_property(client_.connection(), 1, client_.window(), property_,
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, everything);
    return Reply<xcb_get_property_reply_t>(
        xcb_get_property_reply(client_.connection(), cookie, nullptr));
  }

  void report(long long bytes) {
    std::printf("%lld %lld %lld\n", announced_, nanoseconds(), bytes);
    std::fflush(stdout);
    reading_ = false;
    if (nextAnnounced_ != 0) request();
  }

  XClient client_;
  xcb_atom_t clipboard_;
  xcb_atom_t png_;
  xcb_atom_t incremental_;
  xcb_atom_t property_;
  int firstFixesEvent_ = 0;
  long long announced_ = 0;
  long long nextAnnounced_ = 0;  // a change that came during a transfer; 0: none
  bool reading_ = false;
  long long bytes_ = 0;
  bool chunked_ = false;
};

}  // namespace
}  // namespace marbelot::desktop_test

int main() { marbelot::desktop_test::Reader().run(); }
