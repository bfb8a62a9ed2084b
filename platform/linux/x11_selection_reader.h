// Reads what other programs put on the clipboard of an X server.
#pragma once

#include "platform/linux/clipboard_reader.h"
#include "platform/linux/x11_abandoned_transfers.h"
#include "platform/linux/x11_connection.h"

namespace marbelot {

// Who took the clipboard, and when.
struct X11Announcement : ClipboardAnnouncement {
  xcb_window_t owner = XCB_WINDOW_NONE;
  xcb_timestamp_t time = XCB_CURRENT_TIME;
  std::uint32_t sequence = 0;  // the last of our requests that the server had seen by then
};

class X11SelectionReader final : public ClipboardReader {
 public:
  X11SelectionReader(X11Connection& connection, Deliver deliver, std::function<void()> wake);
  ~X11SelectionReader() override;

  void begin(const X11Announcement& announcement);
  // The owners before are no longer to be asked, since `sequence`; what they still answer counts.
  void replaceAll(std::uint32_t sequence);

  void handle(const xcb_generic_event_t& event);

 private:
  struct Answer;
  struct Owner;

  void request(Read& read, Conversion& conversion) override;
  void discard(Conversion& conversion) override;
  void receive(Read& read, Conversion& conversion);
  void finishTargets(Read& read, Conversion& conversion, int bits);
  // The conversion whose answer comes to that window, and the read that it is part of.
  std::pair<Read*, Conversion*> find(xcb_window_t window);

  X11Connection& connection_;
  X11AbandonedTransfers abandoned_;
};

}  // namespace marbelot
