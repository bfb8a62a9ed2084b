#include "platform/linux/x11_abandoned_transfers.h"

#include <algorithm>

namespace marbelot {
namespace {

constexpr std::size_t windowLimit = 64;
constexpr std::size_t sizeLimit = std::size_t{1} << 30;  // bytes
constexpr auto timeLimit = std::chrono::minutes(1);

}  // namespace

void X11AbandonedTransfers::take(xcb_window_t window, xcb_atom_t property, bool inParts) {
  transfers_.push_back({window, property, inParts});
  if (transfers_.size() <= windowLimit) return;
  xcb_destroy_window(connection_.get(), transfers_.front().window);
  transfers_.pop_front();
}

void X11AbandonedTransfers::handle(const xcb_generic_event_t& event) {
  xcb_window_t window = XCB_WINDOW_NONE;
  xcb_atom_t property = XCB_ATOM_NONE;
  const bool answer = eventType(event) == XCB_SELECTION_NOTIFY;
  if (answer) {
    const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
    window = notify.requestor;
    property = notify.property;
  } else if (eventType(event) == XCB_PROPERTY_NOTIFY) {
    const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (notify.state != XCB_PROPERTY_NEW_VALUE) return;
    window = notify.window;
    property = notify.atom;
  }
  const auto transfer = std::find_if(transfers_.begin(), transfers_.end(),
                                     [&](const Transfer& t) { return t.window == window; });
  // What is put there before the answer comes with it.
  if (transfer == transfers_.end() || transfer->inParts == answer) return;
  const bool refused = property == XCB_ATOM_NONE;
  if (!refused && (property != transfer->property || !discard(*transfer))) return;
  xcb_destroy_window(connection_.get(), window);
  transfers_.erase(transfer);
}

bool X11AbandonedTransfers::discard(Transfer& transfer) {
  // Asks for the size alone.
  const auto cookie = xcb_get_property(connection_.get(), 0, transfer.window, transfer.property,
                                       XCB_GET_PROPERTY_TYPE_ANY, 0, 0);
  const X11Reply<xcb_get_property_reply_t> reply(
      xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply) return true;
  if (reply->type == XCB_ATOM_NONE) return !transfer.inParts;
  xcb_delete_property(connection_.get(), transfer.window, transfer.property);
  if (!transfer.inParts) {
    transfer.inParts = reply->type == connection_.atom("INCR");
    return !transfer.inParts;
  }
  const auto now = X11Clock::now();
  transfer.began = std::min(transfer.began, now);
  transfer.bytes += reply->bytes_after;
  return reply->bytes_after == 0 || transfer.bytes > sizeLimit || now - transfer.began > timeLimit;
}

}  // namespace marbelot
