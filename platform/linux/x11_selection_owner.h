// Owns the clipboard and hands its contents to whoever pastes.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/image.h"
#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_worker.h"

namespace marbelot {

// What we put on the clipboard: a text or an image.
struct X11Offer {
  SharedText text;
  std::optional<Image> image;
  bool concealed = false;  // of a text
};

// The type names under which other programs can ask for it, the best one first.
std::vector<std::string> offeredTypes(const X11Offer& offer);

class X11SelectionOwner {
 public:
  // `wake` is called on another thread when collect() has to be called on this one.
  X11SelectionOwner(X11Connection& connection, std::function<void()> wake);
  ~X11SelectionOwner();

  // Takes the clipboard with the next free time stamp of the server. `write` grows with each call.
  void claim(X11Offer offer, std::uint64_t write);
  // The clipboard has a new owner. Returns whether that is us.
  bool ownerChanged(xcb_window_t owner);
  // Asks the desktop's clipboard manager, when it has one and the clipboard is ours, to keep the
  // contents. Whether it was asked; it then fetches them like anybody else.
  bool askToBeKept();
  // Whether it has not answered yet.
  bool isBeingKept() const { return beingKept_; }
  // Whether somebody still waits for something from us.
  bool isServing() const { return !waiting_.empty() || !transfers_.empty(); }
  // The last write that the server has put into effect.
  std::uint64_t claimed() const { return claimed_; }

  void handle(const xcb_generic_event_t& event);
  // Answers the requests that have waited for a conversion.
  void collect();
  // When expire() must be called; time_point::max() while nothing is being sent in parts.
  X11Clock::time_point deadline() const;
  void expire(X11Clock::time_point now);

 private:
  struct Contents;
  struct Request;
  struct Waiting;
  struct Transfer;
  enum class Answer { sent, refused, later };

  void stampClaim();
  void takeClipboard(xcb_timestamp_t time);
  void answer(const xcb_selection_request_event_t& event);
  Answer convert(const std::shared_ptr<Request>& request, std::size_t part);
  Answer convertImage(const std::shared_ptr<Request>& request, std::size_t part,
                      std::string_view type);
  void notify(const Request& request);
  void send(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, SharedBytes bytes);
  void continueTransfer(xcb_window_t window, xcb_atom_t property);
  void dropTransfers(const std::function<bool(const Transfer&)>& which);

  X11Connection& connection_;
  xcb_window_t window_;
  std::size_t pieceSize_;  // the most that is sent whole, in bytes,
  std::size_t partSize_;   // and the size of the parts of all else
  std::shared_ptr<Contents> contents_;
  xcb_timestamp_t claimTime_ = XCB_CURRENT_TIME;
  std::uint64_t wanted_ = 0;   // the last write that was asked for,
  std::uint64_t asked_ = 0;    // for which the server was asked,
  std::uint64_t claimed_ = 0;  // and which it has announced
  bool beingKept_ = false;
  std::list<Transfer> transfers_;
  std::vector<Waiting> waiting_;
  std::uint64_t lastTicket_ = 0;
  X11Worker<SharedBytes> converter_;
};

}  // namespace marbelot
