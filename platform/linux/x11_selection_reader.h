// Reads what other programs put on the clipboard, without ever waiting for one of them.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <utility>

#include "platform/linux/x11_abandoned_transfers.h"
#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_worker.h"
#include "platform/pasteboard.h"

namespace marbelot {

// Who took the clipboard, and when.
struct X11Announcement {
  xcb_window_t owner = XCB_WINDOW_NONE;
  xcb_timestamp_t time = XCB_CURRENT_TIME;
  std::uint32_t sequence = 0;   // the last of our requests that the server had seen by then
  std::uint64_t ownWrites = 0;  // how many of our own writes it came after
  bool initial = false;         // found at the start: not a change
};

// Every announced owner is read; several are read at once when they follow each other closely, and
// told in their order. An owner that has been replaced is given up after a quarter of a second
// without progress; then what did arrive is told. Of the present one that is told after two
// seconds, and told again with the rest, should that still come before another owner does.
class X11SelectionReader {
 public:
  using Deliver = std::function<void(PasteboardContents, const X11Announcement&)>;

  // `wake` is called on another thread when collect() has to be called on this one.
  X11SelectionReader(X11Connection& connection, Deliver deliver, std::function<void()> wake);
  ~X11SelectionReader();

  void begin(const X11Announcement& announcement);
  // The owners before are no longer to be asked, since `sequence`; what they still answer counts.
  void replaceAll(std::uint32_t sequence);

  void handle(const xcb_generic_event_t& event);
  // Takes the images that files and documents have turned out to hold.
  void collect();
  // When expire() must be called; time_point::max() while nothing is being read.
  X11Clock::time_point deadline() const;
  void expire(X11Clock::time_point now);

 private:
  struct Conversion;
  struct Read;

  void ask(Read& read, Conversion& conversion, xcb_atom_t target);
  void receive(Read& read, Conversion& conversion);
  void finish(Read& read, Conversion& conversion);
  void finishTargets(Read& read, const Conversion& conversion);
  void finishImage(Read& read, Conversion& conversion, std::string bytes);
  SharedText textOf(const Conversion& conversion, std::string bytes);
  void advance(Read& read);
  void deliverFinished();
  // What still comes of it is thrown away.
  void abandon(Read& read, Conversion& conversion);
  void tell(Read& read);
  // The conversion whose answer comes to that window, and the read that it is part of.
  std::pair<Read*, Conversion*> find(xcb_window_t window);

  X11Connection& connection_;
  Deliver deliver_;
  std::deque<std::unique_ptr<Read>> reads_;  // oldest first
  X11AbandonedTransfers abandoned_;
  std::uint64_t lastTicket_ = 0;
  X11Worker<std::optional<Image>> loader_;
};

}  // namespace marbelot
