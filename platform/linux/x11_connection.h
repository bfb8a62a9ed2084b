// A connection to the X server for one thread, with what both sides of a selection need.
#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace marbelot {

using X11Clock = std::chrono::steady_clock;

// Replies and events are allocated by the library with malloc.
struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};
template <class T>
using X11Reply = std::unique_ptr<T, FreeDeleter>;

class X11Connection {
 public:
  // An empty `display` means the one of the environment. Never fails: see alive(). Not to be called
  // while another library connects on another thread.
  explicit X11Connection(const std::string& display);
  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* get() const { return xcb_; }
  bool alive() const { return xcb_connection_has_error(xcb_) == 0; }
  int descriptor() const { return xcb_get_file_descriptor(xcb_); }

  // The first use of a name costs a round trip.
  xcb_atom_t atom(std::string_view name);
  // One round trip for all that are new; atoms that do not exist are left out.
  std::vector<std::string> names(std::span<const xcb_atom_t> atoms);

  // An invisible window that reports changes of its properties. The caller destroys it.
  xcb_window_t createWindow();

  // Announces every new owner of the clipboard from now on; false when the server cannot.
  bool watchClipboard();
  // The event in which a new owner is announced; 0 before watchClipboard().
  int ownerEvent() const { return ownerEvent_; }

 private:
  xcb_connection_t* xcb_ = nullptr;
  int screen_ = 0;
  int ownerEvent_ = 0;
  std::unordered_map<std::string, xcb_atom_t> atoms_;
  std::unordered_map<xcb_atom_t, std::string> names_;
};

// The event without the bit that marks those sent by other clients.
inline int eventType(const xcb_generic_event_t& event) { return event.response_type & 0x7F; }

}  // namespace marbelot
