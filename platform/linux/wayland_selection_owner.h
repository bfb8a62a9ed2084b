// Owns the clipboard of a Wayland desktop and hands its contents to whoever pastes.
#pragma once

#include <poll.h>

#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include "platform/linux/clipboard_offer.h"
#include "platform/linux/clipboard_reader.h"
#include "platform/linux/wayland_data_control.h"

namespace marbelot {

class WaylandSelectionOwner {
 public:
  // `wake` is called on another thread when collect() has to be called on this one.
  WaylandSelectionOwner(WaylandDataControl& control, std::function<void()> wake);
  ~WaylandSelectionOwner();

  // `write` grows with each call.
  void claim(ClipboardOffer offer, std::uint64_t write);
  // The clipboard has a new owner, with these types. Returns whether that is us.
  bool ownerChanged(const std::vector<std::string>& types);
  // The last write that the compositor has put into effect.
  std::uint64_t claimed() const { return claimed_; }
  // A write is under way.
  bool isClaiming() const { return claimed_ != wanted_ && forms_.offer(); }
  // What is on the clipboard of ours; null when it is somebody else's or a write is under way.
  const ClipboardOffer* present() const;
  // The type that marks what is on the clipboard as ours.
  std::string mark() const { return mark_ + std::to_string(claimed_); }

  void answer(const std::string& type, Descriptor to);
  void forget() { forms_.clear(); }
  void collect() { forms_.collect(); }
  // Whether somebody still waits for something from us.
  bool isServing() const { return forms_.isConverting() || !sendings_.empty(); }

  // Adds what send() waits for.
  void watch(std::vector<pollfd>& watched) const;
  void send();
  // When expire() must be called; time_point::max() while nothing is being sent.
  ClipboardClock::time_point deadline() const;
  void expire(ClipboardClock::time_point now);

 private:
  struct Sending;

  WaylandDataControl& control_;
  const std::string mark_;  // but for the number of the write
  std::uint64_t wanted_ = 0;
  std::uint64_t claimed_ = 0;
  std::list<Sending> sendings_;
  OfferedForms forms_;
};

}  // namespace marbelot
