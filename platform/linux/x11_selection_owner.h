// Owns the clipboard and hands its contents to whoever pastes.
#pragma once

#include <functional>
#include <list>
#include <memory>

#include "platform/linux/clipboard_offer.h"
#include "platform/linux/x11_connection.h"

namespace marbelot {

class X11SelectionOwner {
 public:
  // `wake` is called on another thread when collect() has to be called on this one.
  X11SelectionOwner(X11Connection& connection, std::function<void()> wake);
  ~X11SelectionOwner();

  // Takes the clipboard with the next free time stamp of the server. `write` grows with each call.
  void claim(ClipboardOffer offer, std::uint64_t write);
  // The clipboard has a new owner. Returns whether that is us.
  bool ownerChanged(xcb_window_t owner);
  // Asks the desktop's clipboard manager, when it has one and the clipboard is ours, to keep the
  // contents. Whether it was asked; it then fetches them like anybody else.
  bool askToBeKept();
  // Whether it has not answered yet.
  bool isBeingKept() const { return beingKept_; }
  // Whether somebody still waits for something from us.
  bool isServing() const { return forms_.isConverting() || !transfers_.empty(); }
  // A write is under way.
  bool isClaiming() const { return claimed_ != wanted_; }
  // The last write that the server has put into effect.
  std::uint64_t claimed() const { return claimed_; }

  void handle(const xcb_generic_event_t& event);
  // Answers the requests that have waited for a conversion.
  void collect() { forms_.collect(); }
  // When expire() must be called; time_point::max() while nothing is being sent in parts.
  X11Clock::time_point deadline() const;
  void expire(X11Clock::time_point now);

 private:
  struct Request;
  struct Transfer;

  void stampClaim();
  void takeClipboard(xcb_timestamp_t time);
  void answer(const xcb_selection_request_event_t& event);
  // Answers a part of the request, at once or when its form has been made.
  void convert(const std::shared_ptr<Request>& request, std::size_t part);
  void answerPart(Request& request, std::size_t part, xcb_atom_t type, const SharedBytes& bytes);
  void notify(const Request& request);
  void send(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, SharedBytes bytes);
  void continueTransfer(xcb_window_t window, xcb_atom_t property);
  void dropTransfers(const std::function<bool(const Transfer&)>& which);

  X11Connection& connection_;
  xcb_window_t window_;
  std::size_t pieceSize_;  // the most that is sent whole, in bytes,
  std::size_t partSize_;   // and the size of the parts of all else
  xcb_timestamp_t claimTime_ = XCB_CURRENT_TIME;
  std::uint64_t wanted_ = 0;   // the last write that was asked for,
  std::uint64_t asked_ = 0;    // for which the server was asked,
  std::uint64_t claimed_ = 0;  // and which it has announced
  bool beingKept_ = false;
  std::list<Transfer> transfers_;
  OfferedForms forms_;
};

}  // namespace marbelot
