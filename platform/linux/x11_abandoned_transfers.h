// What is still to come to windows in which nobody is interested any more.
#pragma once

#include <cstddef>
#include <deque>

#include "platform/linux/x11_connection.h"

namespace marbelot {

// An owner that sends in parts waits for each part to be taken; many serve nobody else meanwhile,
// so a transfer left in the middle would jam the clipboard for every program. And a late answer to
// a window that is gone would kill a careless owner. So the windows live on until the last part has
// come, and the parts are taken away unseen. An owner that sends without end is cut off.
class X11AbandonedTransfers {
 public:
  explicit X11AbandonedTransfers(X11Connection& connection) : connection_(connection) {}

  // Takes over the window, which was asked to receive something in `property`; `inParts` when the
  // answer has come already and said so.
  void take(xcb_window_t window, xcb_atom_t property, bool inParts);
  void handle(const xcb_generic_event_t& event);

 private:
  struct Transfer {
    xcb_window_t window;
    xcb_atom_t property;
    bool inParts;
    std::size_t bytes = 0;
    // Of the first part that was taken away: the owner may have paused for hours before.
    X11Clock::time_point began = X11Clock::time_point::max();
  };

  // Whether that was the last that comes.
  bool discard(Transfer& transfer);

  X11Connection& connection_;
  std::deque<Transfer> transfers_;  // oldest first
};

}  // namespace marbelot
