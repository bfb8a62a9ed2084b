// Reads what other programs put on the clipboard of a Wayland desktop.
#pragma once

#include <poll.h>

#include <list>
#include <memory>
#include <vector>

#include "platform/linux/clipboard_reader.h"
#include "platform/linux/wayland_data_control.h"

namespace marbelot {

class WaylandSelectionReader final : public ClipboardReader {
 public:
  WaylandSelectionReader(Deliver deliver, std::function<void()> wake);
  ~WaylandSelectionReader() override;

  // `offer` is null when nobody has anything on the clipboard.
  void begin(std::unique_ptr<WaylandOffer> offer, const ClipboardAnnouncement& announcement);
  // The owners before are no longer to be asked; what they still answer counts.
  void replaceAll();

  // Adds what receive() waits for.
  void watch(std::vector<pollfd>& watched) const;
  void receive();

 private:
  struct Owner;
  struct Pipe;
  struct Abandoned;

  void request(Read& read, Conversion& conversion) override;
  void discard(Conversion& conversion) override;
  bool receive(Read& read, Conversion& conversion);

  std::vector<char> buffer_;
  std::list<Abandoned> abandoned_;  // oldest first
};

}  // namespace marbelot
