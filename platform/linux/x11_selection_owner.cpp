#include "platform/linux/x11_selection_owner.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/linux/clipboard_types.h"

namespace marbelot {
namespace {

constexpr auto transferLimit = std::chrono::seconds(30);
// Bytes. In one piece a paste is done soonest; beyond, others get their turn between the parts.
constexpr std::size_t largestPiece = std::size_t{4} << 20;
constexpr std::size_t largestPart = std::size_t{1} << 20;

SharedBytes raw(const void* data, std::size_t bytes) {
  return share(std::string(static_cast<const char*>(data), bytes));
}

}  // namespace

struct X11SelectionOwner::Request {
  struct Part {
    xcb_atom_t target;
    xcb_atom_t property;
  };
  xcb_selection_request_event_t event;
  std::vector<Part> parts;
  bool multiple = false;
  std::size_t open = 0;  // parts that are still to be answered
  bool refused = false;  // the only part, when it is not MULTIPLE
};

// Bytes on their way to a window in parts; the next one goes when the window has taken the last.
struct X11SelectionOwner::Transfer {
  xcb_window_t window;
  xcb_atom_t property;
  xcb_atom_t type;
  SharedBytes bytes;
  std::size_t sent = 0;
  X11Clock::time_point deadline;
};

X11SelectionOwner::X11SelectionOwner(X11Connection& connection, std::function<void()> wake)
    : connection_(connection), window_(connection.createWindow()), forms_(std::move(wake)) {
  const std::size_t room = std::size_t{xcb_get_maximum_request_length(connection.get())} * 4 - 1024;
  pieceSize_ = std::min(largestPiece, room);
  partSize_ = std::min(largestPart, room);
}

X11SelectionOwner::~X11SelectionOwner() = default;

void X11SelectionOwner::claim(ClipboardOffer offer, std::uint64_t write) {
  forms_.set(std::move(offer));
  wanted_ = write;
  stampClaim();
  xcb_flush(connection_.get());
  forms_.preload();
}

// Appending nothing to a property makes the server tell its time.
void X11SelectionOwner::stampClaim() {
  xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, window_,
                      connection_.atom("MARBELOT_TIMESTAMP"), XCB_ATOM_INTEGER, 32, 0, nullptr);
}

void X11SelectionOwner::takeClipboard(xcb_timestamp_t time) {
  claimTime_ = time;
  asked_ = wanted_;
  xcb_set_selection_owner(connection_.get(), window_, connection_.atom("CLIPBOARD"), time);
  // When somebody else was faster, with a later stamp, the server ignores the request without a
  // word. The answer to this one then finds the claim unannounced, and tries again.
  stampClaim();
}

// https://www.freedesktop.org/wiki/ClipboardManager/
bool X11SelectionOwner::askToBeKept() {
  if (!forms_.offer() || claimed_ != wanted_) return false;
  const xcb_atom_t manager = connection_.atom("CLIPBOARD_MANAGER");
  const auto cookie = xcb_get_selection_owner(connection_.get(), manager);
  const X11Reply<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
  if (!reply || reply->owner == XCB_WINDOW_NONE) return false;
  // Making all the other forms of an image could take a minute.
  std::vector<xcb_atom_t> atoms;
  for (const std::string& type : keptTypes(*forms_.offer()))
    atoms.push_back(connection_.atom(type));
  const xcb_atom_t property = connection_.atom("MARBELOT_KEEP");
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window_, property, XCB_ATOM_ATOM,
                      32, static_cast<std::uint32_t>(atoms.size()), atoms.data());
  xcb_convert_selection(connection_.get(), window_, manager, connection_.atom("SAVE_TARGETS"),
                        property, claimTime_);
  beingKept_ = true;
  return true;
}

bool X11SelectionOwner::ownerChanged(xcb_window_t owner) {
  if (owner == window_) {
    claimed_ = asked_;
    return true;
  }
  beingKept_ = false;
  if (claimed_ == wanted_) forms_.clear();
  return false;
}

void X11SelectionOwner::handle(const xcb_generic_event_t& event) {
  switch (eventType(event)) {
    case XCB_SELECTION_REQUEST:
      answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
      break;
    case XCB_SELECTION_NOTIFY:
      if (reinterpret_cast<const xcb_selection_notify_event_t&>(event).requestor == window_)
        beingKept_ = false;
      break;
    case XCB_PROPERTY_NOTIFY: {
      const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      if (change.window == window_) {
        if (claimed_ != wanted_) takeClipboard(change.time);
      } else if (change.state == XCB_PROPERTY_DELETE) {
        continueTransfer(change.window, change.atom);
      }
      break;
    }
    case XCB_DESTROY_NOTIFY: {
      const auto window = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
      dropTransfers([&](const Transfer& transfer) { return transfer.window == window; });
      break;
    }
    case 0: {  // an error, here only of a window that has gone
      const auto window = reinterpret_cast<const xcb_generic_error_t&>(event).resource_id;
      dropTransfers([&](const Transfer& transfer) { return transfer.window == window; });
      break;
    }
    default:
      break;
  }
}

void X11SelectionOwner::answer(const xcb_selection_request_event_t& event) {
  auto request = std::make_shared<Request>();
  request->event = event;
  if (request->event.property == XCB_ATOM_NONE)  // a requestor from before the conventions of 1988
    request->event.property = event.target;
  request->multiple = event.target == connection_.atom("MULTIPLE");
  if (request->multiple) {
    const auto cookie = xcb_get_property(connection_.get(), 0, event.requestor, event.property,
                                         connection_.atom("ATOM_PAIR"), 0, 256);
    const X11Reply<xcb_get_property_reply_t> pairs(
        xcb_get_property_reply(connection_.get(), cookie, nullptr));
    const std::size_t bytes =
        pairs ? static_cast<std::size_t>(xcb_get_property_value_length(pairs.get())) : 0;
    request->parts.resize(bytes / sizeof(Request::Part));
    request->refused = request->parts.empty();
    if (!request->refused) {
      std::memcpy(request->parts.data(), xcb_get_property_value(pairs.get()),
                  request->parts.size() * sizeof(Request::Part));
    }
  } else {
    request->parts.push_back({event.target, request->event.property});
  }
  // One more than there are, so that no answer is the last one before all have been asked for.
  request->open = request->parts.size() + 1;
  for (std::size_t part = 0; part < request->parts.size(); ++part) convert(request, part);
  if (--request->open == 0) notify(*request);
}

void X11SelectionOwner::convert(const std::shared_ptr<Request>& request, std::size_t part) {
  const xcb_atom_t target = request->parts[part].target;
  const ClipboardOffer* offer = forms_.offer();
  if (!offer || request->event.owner != window_) return answerPart(*request, part, target, nullptr);
  if (target == connection_.atom("TIMESTAMP"))
    return answerPart(*request, part, XCB_ATOM_INTEGER, raw(&claimTime_, sizeof claimTime_));
  if (target == connection_.atom("SAVE_TARGETS"))
    return answerPart(*request, part, connection_.atom("NULL"), share({}));
  const auto types = offeredTypes(*offer);
  if (target == connection_.atom("TARGETS")) {
    std::vector<xcb_atom_t> atoms;
    for (const char* name : {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS"})
      atoms.push_back(connection_.atom(name));
    for (const auto& name : types) atoms.push_back(connection_.atom(name));
    return answerPart(*request, part, XCB_ATOM_ATOM,
                      raw(atoms.data(), atoms.size() * sizeof(xcb_atom_t)));
  }
  const auto type = std::find_if(types.begin(), types.end(), [&](const std::string& name) {
    return connection_.atom(name) == target;
  });
  if (type == types.end()) return answerPart(*request, part, target, nullptr);
  const xcb_atom_t answered = *type == "TEXT" ? connection_.atom("UTF8_STRING") : target;
  forms_.request(*type, [this, request, part, answered](const SharedBytes& bytes) {
    answerPart(*request, part, answered, bytes);
  });
}

// Null bytes: it is refused.
void X11SelectionOwner::answerPart(Request& request, std::size_t part, xcb_atom_t type,
                                   const SharedBytes& bytes) {
  xcb_atom_t& property = request.parts[part].property;
  if (bytes) {
    send(request.event.requestor, property, type, bytes);
  } else {
    property = XCB_ATOM_NONE;
  }
  if (--request.open == 0) notify(request);
}

void X11SelectionOwner::notify(const Request& request) {
  const auto& event = request.event;
  const bool refused =
      request.multiple ? request.refused : request.parts.front().property == XCB_ATOM_NONE;
  if (request.multiple && !refused) {  // tells which of the parts were refused
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, event.requestor, event.property,
                        connection_.atom("ATOM_PAIR"), 32,
                        static_cast<std::uint32_t>(request.parts.size() * 2), request.parts.data());
  }
  xcb_selection_notify_event_t notify{};
  notify.response_type = XCB_SELECTION_NOTIFY;
  notify.time = event.time;
  notify.requestor = event.requestor;
  notify.selection = event.selection;
  notify.target = event.target;
  notify.property = refused ? xcb_atom_t{XCB_ATOM_NONE} : event.property;
  std::array<char, 32> wire{};  // the size of every event
  std::memcpy(wire.data(), &notify, sizeof notify);
  xcb_send_event(connection_.get(), 0, event.requestor, XCB_EVENT_MASK_NO_EVENT, wire.data());
}

void X11SelectionOwner::send(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                             SharedBytes bytes) {
  dropTransfers([&](const Transfer& transfer) {
    return transfer.window == window && transfer.property == property;
  });
  if (bytes->size() <= pieceSize_) {
    const bool words = type == XCB_ATOM_ATOM || type == XCB_ATOM_INTEGER;
    xcb_change_property(
        connection_.get(), XCB_PROP_MODE_REPLACE, window, property, type, words ? 32 : 8,
        static_cast<std::uint32_t>(words ? bytes->size() / 4 : bytes->size()), bytes->data());
    return;
  }
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &events);
  const auto size = static_cast<std::uint32_t>(
      std::min<std::size_t>(bytes->size(), 0x7FFFFFFF));  // a lower bound
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, property,
                      connection_.atom("INCR"), 32, 1, &size);
  transfers_.push_back(
      {window, property, type, std::move(bytes), 0, X11Clock::now() + transferLimit});
}

void X11SelectionOwner::continueTransfer(xcb_window_t window, xcb_atom_t property) {
  const auto transfer =
      std::find_if(transfers_.begin(), transfers_.end(), [&](const Transfer& candidate) {
        return candidate.window == window && candidate.property == property;
      });
  if (transfer == transfers_.end()) return;
  const std::size_t count = std::min(partSize_, transfer->bytes->size() - transfer->sent);
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, property, transfer->type, 8,
                      static_cast<std::uint32_t>(count), transfer->bytes->data() + transfer->sent);
  transfer->sent += count;
  transfer->deadline = X11Clock::now() + transferLimit;
  if (count == 0)  // the empty part was the last
    dropTransfers([&](const Transfer& finished) { return &finished == &*transfer; });
}

void X11SelectionOwner::dropTransfers(const std::function<bool(const Transfer&)>& which) {
  for (auto transfer = transfers_.begin(); transfer != transfers_.end();) {
    if (!which(*transfer)) {
      ++transfer;
      continue;
    }
    const xcb_window_t window = transfer->window;
    transfer = transfers_.erase(transfer);
    const bool more = std::any_of(transfers_.begin(), transfers_.end(),
                                  [&](const Transfer& t) { return t.window == window; });
    const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
    if (!more) xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &none);
  }
}

X11Clock::time_point X11SelectionOwner::deadline() const {
  auto earliest = X11Clock::time_point::max();
  for (const Transfer& transfer : transfers_) earliest = std::min(earliest, transfer.deadline);
  return earliest;
}

void X11SelectionOwner::expire(X11Clock::time_point now) {
  dropTransfers([&](const Transfer& transfer) { return transfer.deadline <= now; });
}

}  // namespace marbelot
