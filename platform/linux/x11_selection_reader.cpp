#include "platform/linux/x11_selection_reader.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <utility>

namespace marbelot {
namespace {

constexpr std::size_t reserveLimit = std::size_t{1}
                                     << 28;  // bytes; the announced size may be a lie
// Of a property, in bytes, and how many are asked for ahead. One answer with the whole of a large
// picture would need memory for it twice more, the server's and ours, and to fill that takes long.
constexpr std::uint32_t pieceBytes = std::uint32_t{1} << 17;
constexpr std::size_t piecesAhead = 2;

using PropertyReply = X11Reply<xcb_get_property_reply_t>;

void append(const xcb_get_property_reply_t& piece, std::string& to) {
  to.append(static_cast<const char*>(xcb_get_property_value(&piece)),
            static_cast<std::size_t>(xcb_get_property_value_length(&piece)));
}

bool after(std::uint32_t a, std::uint32_t b) { return static_cast<std::int32_t>(a - b) > 0; }

}  // namespace

// Where an answer comes to.
struct X11SelectionReader::Answer final : Channel {
  explicit Answer(X11Connection& x) : connection(x), window(x.createWindow()) {}
  ~Answer() override {
    if (window != XCB_WINDOW_NONE) xcb_destroy_window(connection.get(), window);
  }
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;

  static Answer& of(Conversion& conversion) { return static_cast<Answer&>(*conversion.channel); }
  static const Answer& of(const Conversion& conversion) {
    return static_cast<const Answer&>(*conversion.channel);
  }

  X11Connection& connection;
  // Its own: owners confuse two requests of one window, or answer only one of them.
  xcb_window_t window;
  xcb_atom_t property = XCB_ATOM_NONE;
  std::uint32_t sequence = 0;

  // Deletes the property with its last piece, which also asks for the next part of a transfer in
  // parts.
  xcb_get_property_cookie_t ask(std::uint64_t from) const {
    return xcb_get_property(connection.get(), 1, window, property, XCB_GET_PROPERTY_TYPE_ANY,
                            static_cast<std::uint32_t>(from / 4), pieceBytes / 4);
  }
  PropertyReply take(xcb_get_property_cookie_t cookie) const {
    return PropertyReply(xcb_get_property_reply(connection.get(), cookie, nullptr));
  }
  // What follows a property's first piece; false when it is not there any more.
  bool takeRest(const xcb_get_property_reply_t& first, std::string& to) const {
    std::deque<xcb_get_property_cookie_t> asked;
    const std::uint64_t end = std::uint64_t{pieceBytes} + first.bytes_after;
    for (std::uint64_t next = pieceBytes; next < end || !asked.empty();) {
      for (; next < end && asked.size() < piecesAhead; next += pieceBytes)
        asked.push_back(ask(next));
      const PropertyReply piece = take(asked.front());
      asked.pop_front();
      if (!piece || piece->type != first.type) {
        for (const auto& cookie : asked) xcb_discard_reply(connection.get(), cookie.sequence);
        return false;
      }
      append(*piece, to);
    }
    return true;
  }
};

struct X11SelectionReader::Owner final : Channel {
  explicit Owner(xcb_timestamp_t since) : time(since) {}
  xcb_timestamp_t time;
};

X11SelectionReader::X11SelectionReader(X11Connection& connection, Deliver deliver,
                                       std::function<void()> wake)
    : ClipboardReader(std::move(deliver), std::move(wake), true),
      connection_(connection),
      abandoned_(connection) {}

X11SelectionReader::~X11SelectionReader() = default;

void X11SelectionReader::replaceAll(std::uint32_t sequence) {
  // Asked too late: the request went to the new owner, whose answer must not count twice.
  ClipboardReader::replaceAll([&](const Conversion& conversion) {
    return conversion.channel && after(Answer::of(conversion).sequence, sequence);
  });
}

void X11SelectionReader::begin(const X11Announcement& announcement) {
  replaceAll(announcement.sequence);
  Read& read = add(announcement);
  read.owner = std::make_unique<Owner>(announcement.time);
  if (announcement.owner == XCB_WINDOW_NONE) {
    read.targets.state = Conversion::State::done;
  } else {
    // Both at once: an owner may live for a few milliseconds only.
    ask(read, read.targets, "TARGETS");
    ask(read, read.text, "UTF8_STRING");
  }
  deliverFinished();
}

void X11SelectionReader::request(Read& read, Conversion& conversion) {
  if (!conversion.channel) conversion.channel = std::make_unique<Answer>(connection_);
  Answer& answer = Answer::of(conversion);
  answer.property = connection_.atom(&conversion == &read.targets ? "MARBELOT_TARGETS"
                                     : &conversion == &read.text  ? "MARBELOT_TEXT"
                                     : &conversion == &read.image ? "MARBELOT_IMAGE"
                                                                  : "MARBELOT_HINT");
  answer.sequence =
      xcb_convert_selection(connection_.get(), answer.window, connection_.atom("CLIPBOARD"),
                            connection_.atom(conversion.type), answer.property,
                            static_cast<const Owner&>(*read.owner).time)
          .sequence;
}

void X11SelectionReader::discard(Conversion& conversion) {
  Answer& answer = Answer::of(conversion);
  abandoned_.take(std::exchange(answer.window, XCB_WINDOW_NONE), answer.property,
                  conversion.state == Conversion::State::arriving);
  conversion.channel.reset();
}

void X11SelectionReader::handle(const xcb_generic_event_t& event) {
  abandoned_.handle(event);
  if (eventType(event) == XCB_SELECTION_NOTIFY) {
    const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
    const auto [read, conversion] = find(notify.requestor);
    if (!read) return;
    if (conversion->state != Conversion::State::asked ||
        connection_.atom(conversion->type) != notify.target)
      return;
    read->revive();
    if (notify.property == XCB_ATOM_NONE) {
      conversion->state = Conversion::State::failed;
    } else {
      receive(*read, *conversion);
    }
    advance(*read);
  } else if (eventType(event) == XCB_PROPERTY_NOTIFY) {
    const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (notify.state != XCB_PROPERTY_NEW_VALUE) return;
    const auto [read, conversion] = find(notify.window);
    if (!read || conversion->state != Conversion::State::arriving ||
        Answer::of(*conversion).property != notify.atom)
      return;
    read->revive();
    receive(*read, *conversion);
    advance(*read);
  } else {
    return;
  }
  deliverFinished();
}

void X11SelectionReader::receive(Read& read, Conversion& conversion) {
  const Answer& answer = Answer::of(conversion);
  const PropertyReply reply = answer.take(answer.ask(0));
  const bool inParts = conversion.state == Conversion::State::arriving;
  if (!reply || reply->type == XCB_ATOM_NONE) {
    if (inParts) return abandon(read, conversion);
    conversion.state = Conversion::State::failed;
    return;
  }
  const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
  progress(read, conversion);
  if (!inParts && reply->type == connection_.atom("INCR")) {
    std::uint32_t expected = 0;
    if (length >= sizeof expected)
      std::memcpy(&expected, xcb_get_property_value(reply.get()), sizeof expected);
    conversion.bytes.reserve(std::min<std::size_t>(expected, reserveLimit));
    conversion.state = Conversion::State::arriving;
    return;
  }
  const std::size_t size = conversion.bytes.size() + length + reply->bytes_after;
  if (size > sizeLimit) return abandon(read, conversion);
  if (reply->bytes_after > 0) conversion.bytes.reserve(size);
  append(*reply, conversion.bytes);
  if (reply->bytes_after > 0 && !answer.takeRest(*reply, conversion.bytes))
    return abandon(read, conversion);
  if (inParts && length > 0) return;
  if (&conversion == &read.targets) return finishTargets(read, conversion, reply->format);
  const auto names = connection_.names({&reply->type, 1});
  finish(read, conversion, names.empty() ? std::string() : names.front());
}

void X11SelectionReader::finishTargets(Read& read, Conversion& conversion, int bits) {
  const std::string bytes = std::move(conversion.bytes);
  std::vector<xcb_atom_t> listed(bits == 32 ? std::min(bytes.size() / sizeof(xcb_atom_t), typeLimit)
                                            : 0);
  if (!listed.empty()) std::memcpy(listed.data(), bytes.data(), listed.size() * sizeof(xcb_atom_t));
  listTypes(read, connection_.names(listed));
}

auto X11SelectionReader::find(xcb_window_t window) -> std::pair<Read*, Conversion*> {
  for (const auto& read : reads_) {
    for (Conversion& conversion : read->conversions) {
      if (conversion.channel && Answer::of(conversion).window == window)
        return {read.get(), &conversion};
    }
  }
  return {nullptr, nullptr};
}

}  // namespace marbelot
