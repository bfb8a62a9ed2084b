#include "platform/linux/x11_selection_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/concealed_types.h"
#include "platform/linux/file_list.h"
#include "platform/linux/imaging.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr auto stallLimit = std::chrono::seconds(2);
constexpr auto replacedStallLimit = std::chrono::milliseconds(250);
constexpr std::size_t sizeLimit = std::size_t{1} << 30;  // bytes of one type
constexpr std::size_t reserveLimit = std::size_t{1}
                                     << 28;  // bytes; the announced size may be a lie
constexpr std::size_t typeLimit = 512;
constexpr std::uint32_t wholeProperty = 0x1FFFFFFF;  // units of four bytes; the protocol's maximum

// In the order in which they are preferred.
constexpr std::array<std::string_view, 6> textTypes{
    "UTF8_STRING", "text/plain;charset=utf-8", "text/plain;charset=UTF-8", "text/plain", "STRING",
    "TEXT"};
constexpr std::array<std::string_view, 11> imageTypes{
    "image/png",  "image/tiff", "image/jpeg",  "image/jpg",      "image/gif", "image/heic",
    "image/heif", "image/bmp",  "image/x-bmp", "image/x-MS-bmp", "image/webp"};
// Then the first file of a list of files, and a document where there is no text either.
constexpr std::array<std::string_view, 3> fileTypes{"text/uri-list", "x-special/gnome-copied-files",
                                                    "x-special/mate-copied-files"};
constexpr std::string_view documentType = "application/pdf";

// Not contents: the protocol's own requests, and a name that Qt resolves only within one process.
constexpr std::array<std::string_view, 10> protocolTypes{
    "TARGETS",          "MULTIPLE",  "TIMESTAMP",       "SAVE_TARGETS",           "DELETE",
    "INSERT_SELECTION", "ATOM_PAIR", "INSERT_PROPERTY", "application/x-qt-image", "_QT_SELECTION"};

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string fromLatin1(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char byte : bytes) text::appendScalar(text, static_cast<unsigned char>(byte));
  return text;
}

// The type without a character set: nearly always UTF-8 today, Latin-1 by its old definition.
std::string fromPlain(const std::string& bytes) {
  std::string text = text::sanitized(bytes);
  return text == bytes ? text : fromLatin1(bytes);
}

// Of what one owner has given: its text and its image come once.
bool same(const PasteboardContents& a, const PasteboardContents& b) {
  return a.text == b.text && a.image.has_value() == b.image.has_value() && a.types == b.types &&
         a.concealed == b.concealed;
}

bool after(std::uint32_t a, std::uint32_t b) { return static_cast<std::int32_t>(a - b) > 0; }

}  // namespace

struct X11SelectionReader::Conversion {
  enum class State { idle, asked, arriving, loading, done, failed };
  State state = State::idle;
  // Its own: owners confuse two requests of one window, or answer only one of them.
  xcb_window_t window = XCB_WINDOW_NONE;
  xcb_atom_t property = XCB_ATOM_NONE;
  xcb_atom_t target = XCB_ATOM_NONE;
  xcb_atom_t type = XCB_ATOM_NONE;
  std::uint8_t bits = 0;  // of each of the answer's units
  std::uint32_t sequence = 0;
  std::string bytes;
  std::uint64_t ticket = 0;  // while loading
  X11Clock::time_point deadline;
  bool late = false;  // open for so long without progress that nobody waits for it any more

  bool open() const {
    return state == State::asked || state == State::arriving || state == State::loading;
  }
  bool free() const { return state == State::idle || state == State::failed; }
};

struct X11SelectionReader::Read {
  X11Announcement announcement;
  bool replaced = false;  // another owner has come: no more can be asked
  std::array<Conversion, 4> conversions;
  Conversion& targets = conversions[0];
  Conversion& text = conversions[1];
  Conversion& image = conversions[2];
  Conversion& hint = conversions[3];
  std::vector<xcb_atom_t> listed;      // the types that the owner says it has
  std::deque<xcb_atom_t> textTargets;  // still to be tried
  std::deque<xcb_atom_t> imageTargets;
  PasteboardContents contents;
  std::optional<PasteboardContents> told;

  bool finished() const {
    return std::none_of(conversions.begin(), conversions.end(),
                        [](const Conversion& c) { return c.open(); });
  }
  // An answer is missing: there is no use in asking for more.
  bool stalled() const {
    return std::any_of(conversions.begin(), conversions.end(),
                       [](const Conversion& c) { return c.late; });
  }
  // The owner answers again, so what else is missing may come, too.
  void revive() {
    const auto deadline = X11Clock::now() + stallLimit;
    for (Conversion& conversion : conversions)
      if (std::exchange(conversion.late, false)) conversion.deadline = deadline;
  }
  // Nothing else is read, whatever the owner answers: many give all that they have, be it an image
  // or a PDF, to whoever asks for a text.
  bool offers(const Conversion& conversion) const {
    return targets.state != Conversion::State::done ||
           std::find(listed.begin(), listed.end(), conversion.target) != listed.end();
  }
  // All that is worth waiting for has come.
  bool due() const {
    return std::none_of(conversions.begin(), conversions.end(),
                        [](const Conversion& c) { return c.open() && !c.late; });
  }
  bool tellable() const {
    return !replaced || targets.state == Conversion::State::done || contents.text;
  }
  // What is known of it by now.
  PasteboardContents known() const {
    PasteboardContents now = contents;
    // A text without its list of types may be a secret.
    if (targets.open()) now.concealed = true;
    if (now.text && now.types.empty())
      now.types.emplace_back("UTF8_STRING");  // an owner that lists nothing
    return now;
  }
};

X11SelectionReader::X11SelectionReader(X11Connection& connection, Deliver deliver,
                                       std::function<void()> wake)
    : connection_(connection),
      deliver_(std::move(deliver)),
      abandoned_(connection),
      loader_(std::move(wake)) {}

X11SelectionReader::~X11SelectionReader() = default;

void X11SelectionReader::replaceAll(std::uint32_t sequence) {
  const auto now = X11Clock::now();
  for (const auto& read : reads_) {
    read->replaced = true;
    for (Conversion& conversion : read->conversions) {
      if (!conversion.open()) continue;
      conversion.deadline = std::min(conversion.deadline, now + replacedStallLimit);
      // Asked too late: the request went to the new owner, whose answer must not count twice.
      if (conversion.late || after(conversion.sequence, sequence)) abandon(*read, conversion);
    }
  }
  deliverFinished();
}

void X11SelectionReader::begin(const X11Announcement& announcement) {
  replaceAll(announcement.sequence);
  reads_.push_back(std::make_unique<Read>());
  Read& read = *reads_.back();
  read.announcement = announcement;
  if (announcement.owner == XCB_WINDOW_NONE) {
    read.targets.state = Conversion::State::done;
  } else {
    read.targets.property = connection_.atom("MARBELOT_TARGETS");
    read.text.property = connection_.atom("MARBELOT_TEXT");
    read.image.property = connection_.atom("MARBELOT_IMAGE");
    read.hint.property = connection_.atom("MARBELOT_HINT");
    // Both at once: an owner may live for a few milliseconds only.
    ask(read, read.targets, connection_.atom("TARGETS"));
    ask(read, read.text, connection_.atom("UTF8_STRING"));
  }
  deliverFinished();
}

void X11SelectionReader::ask(Read& read, Conversion& conversion, xcb_atom_t target) {
  if (conversion.window == XCB_WINDOW_NONE) conversion.window = connection_.createWindow();
  conversion.state = Conversion::State::asked;
  conversion.target = target;
  conversion.bytes = std::string();
  conversion.deadline = X11Clock::now() + stallLimit;
  conversion.sequence =
      xcb_convert_selection(connection_.get(), conversion.window, connection_.atom("CLIPBOARD"),
                            target, conversion.property, read.announcement.time)
          .sequence;
}

void X11SelectionReader::abandon(Read& read, Conversion& conversion) {
  if (conversion.state != Conversion::State::loading)
    abandoned_.take(std::exchange(conversion.window, XCB_WINDOW_NONE), conversion.property,
                    conversion.state == Conversion::State::arriving);
  conversion.state = Conversion::State::failed;
  conversion.late = false;
  conversion.bytes = std::string();
  // A text without its list of types may be a secret.
  if (&conversion == &read.targets) read.contents.concealed = true;
}

void X11SelectionReader::handle(const xcb_generic_event_t& event) {
  abandoned_.handle(event);
  if (eventType(event) == XCB_SELECTION_NOTIFY) {
    const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
    const auto [read, conversion] = find(notify.requestor);
    if (!read) return;
    if (conversion->state != Conversion::State::asked || conversion->target != notify.target)
      return;
    read->revive();
    if (notify.property == XCB_ATOM_NONE)
      conversion->state = Conversion::State::failed;
    else
      receive(*read, *conversion);
    advance(*read);
  } else if (eventType(event) == XCB_PROPERTY_NOTIFY) {
    const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (notify.state != XCB_PROPERTY_NEW_VALUE) return;
    const auto [read, conversion] = find(notify.window);
    if (!read || conversion->state != Conversion::State::arriving ||
        conversion->property != notify.atom)
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
  // Deleting the property also asks for the next part of a transfer in parts.
  const auto cookie = xcb_get_property(connection_.get(), 1, conversion.window, conversion.property,
                                       XCB_GET_PROPERTY_TYPE_ANY, 0, wholeProperty);
  const X11Reply<xcb_get_property_reply_t> reply(
      xcb_get_property_reply(connection_.get(), cookie, nullptr));
  const bool inParts = conversion.state == Conversion::State::arriving;
  if (!reply || reply->type == XCB_ATOM_NONE) {
    if (inParts) return abandon(read, conversion);
    conversion.state = Conversion::State::failed;
    return;
  }
  const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
  const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
  conversion.deadline =
      X11Clock::now() + (read.replaced ? X11Clock::duration(replacedStallLimit) : stallLimit);
  if (!inParts && reply->type == connection_.atom("INCR")) {
    std::uint32_t expected = 0;
    if (length >= sizeof expected) std::memcpy(&expected, bytes, sizeof expected);
    conversion.bytes.reserve(std::min<std::size_t>(expected, reserveLimit));
    conversion.state = Conversion::State::arriving;
    return;
  }
  if (conversion.bytes.size() + length > sizeLimit) return abandon(read, conversion);
  conversion.bytes.append(bytes, length);
  conversion.type = reply->type;
  conversion.bits = reply->format;
  if (!inParts || length == 0) finish(read, conversion);
}

void X11SelectionReader::finish(Read& read, Conversion& conversion) {
  conversion.state = Conversion::State::done;
  std::string bytes = std::move(conversion.bytes);
  if (&conversion == &read.targets) {
    conversion.bytes = std::move(bytes);
    finishTargets(read, conversion);
  } else if (&conversion == &read.text) {
    read.contents.text = read.offers(conversion) ? textOf(conversion, std::move(bytes)) : nullptr;
    if (!read.contents.text) conversion.state = Conversion::State::failed;
  } else if (&conversion == &read.image) {
    finishImage(read, conversion, std::move(bytes));
  } else if (&conversion == &read.hint) {
    const std::vector<std::string>& types = read.contents.types;
    read.contents.concealed =
        bytes.starts_with("secret") ||
        std::any_of(types.begin(), types.end(), [](const auto& t) { return isConcealedType(t); });
  }
}

void X11SelectionReader::finishImage(Read& read, Conversion& conversion, std::string bytes) {
  const auto names = connection_.names({&conversion.target, 1});
  const std::string target = names.empty() ? std::string() : names.front();
  const std::string path = contains(fileTypes, target) ? firstFile(bytes) : std::string();
  if (!path.empty() || target == documentType) {
    // A file may be far away, and a document has to be drawn.
    conversion.state = Conversion::State::loading;
    conversion.ticket = ++lastTicket_;
    loader_.start(conversion.ticket, [path, pdf = std::move(bytes)](int cancel) {
      return path.empty() ? pdfImage(pdf, cancel) : Image::fromFile(path);
    });
    return;
  }
  read.contents.image = Image::fromBytes(share(std::move(bytes)));
  if (!read.contents.image) conversion.state = Conversion::State::failed;
}

void X11SelectionReader::collect() {
  for (auto& [ticket, image] : loader_.take()) {
    for (const auto& read : reads_) {
      Conversion& conversion = read->image;
      if (conversion.state != Conversion::State::loading || conversion.ticket != ticket) continue;
      read->contents.image = std::move(image);
      conversion.state = read->contents.image ? Conversion::State::done : Conversion::State::failed;
      conversion.late = false;
      advance(*read);
      break;
    }
  }
  deliverFinished();
}

// Null when the answer is no text, or in an encoding of long ago.
SharedText X11SelectionReader::textOf(const Conversion& conversion, std::string bytes) {
  const auto names = connection_.names({&conversion.type, 1});
  const std::string type = names.empty() ? std::string() : names.front();
  // Some owners that list nothing answer whatever they are asked for with the image that they have.
  if (contains(imageTypes, type) || type == "COMPOUND_TEXT") return nullptr;
  if (type == "STRING") return share(fromLatin1(bytes));
  if (conversion.target == connection_.atom("text/plain")) return share(fromPlain(bytes));
  return share(text::sanitized(std::move(bytes)));
}

void X11SelectionReader::finishTargets(Read& read, const Conversion& conversion) {
  const std::size_t count =
      conversion.bits == 32 ? conversion.bytes.size() / sizeof(xcb_atom_t) : 0;
  read.listed.resize(std::min(count, typeLimit));
  std::memcpy(read.listed.data(), conversion.bytes.data(), read.listed.size() * sizeof(xcb_atom_t));
  for (std::string& name : connection_.names(read.listed)) {
    if (contains(protocolTypes, name)) continue;
    // A hint counts until its value says otherwise: rather one copy too few than one secret.
    if (isConcealedType(name) || name == passwordHint) read.contents.concealed = true;
    read.contents.types.push_back(text::sanitized(std::move(name)));
  }
  const auto offered = [&](std::string_view name) {
    const auto& types = read.contents.types;
    return std::find(types.begin(), types.end(), name) != types.end();
  };
  for (const auto name : textTypes)
    if (offered(name) && connection_.atom(name) != read.text.target)
      read.textTargets.push_back(connection_.atom(name));
  for (const auto name : imageTypes)
    if (offered(name)) read.imageTargets.push_back(connection_.atom(name));
  for (const auto name : fileTypes)
    if (offered(name)) read.imageTargets.push_back(connection_.atom(name));
  if (offered(documentType) && std::none_of(textTypes.begin(), textTypes.end(), offered))
    read.imageTargets.push_back(connection_.atom(documentType));
  if (read.text.state == Conversion::State::done && !read.offers(read.text)) {
    read.contents.text = nullptr;
    read.text.state = Conversion::State::failed;
  }
  if (offered(passwordHint) && !read.replaced) ask(read, read.hint, connection_.atom(passwordHint));
}

// Asks for the next best type where the one before was refused.
void X11SelectionReader::advance(Read& read) {
  if (read.replaced || read.stalled() || read.targets.open()) return;
  if (read.targets.state == Conversion::State::failed && read.text.target != XCB_ATOM_STRING &&
      read.text.free())
    return ask(read, read.text, XCB_ATOM_STRING);  // an owner that knows no list of types
  const auto next = [&](Conversion& conversion, std::deque<xcb_atom_t>& targets) {
    if (!conversion.free() || targets.empty()) return;
    const xcb_atom_t target = targets.front();
    targets.pop_front();
    ask(read, conversion, target);
  };
  next(read.text, read.textTargets);
  // Some owners drop a request that comes while they are sending something else in parts.
  if (!read.text.open()) next(read.image, read.imageTargets);
}

void X11SelectionReader::deliverFinished() {
  while (!reads_.empty() && reads_.front()->due()) {
    Read& read = *reads_.front();
    tell(read);
    if (!read.finished()) return;  // late, and thus the present owner's: the last one
    for (const Conversion& conversion : read.conversions)
      if (conversion.window != XCB_WINDOW_NONE)
        xcb_destroy_window(connection_.get(), conversion.window);
    reads_.pop_front();
  }
}

void X11SelectionReader::tell(Read& read) {
  PasteboardContents known = read.known();
  if (!read.tellable() || (read.told && same(*read.told, known))) return;
  read.told = known;
  deliver_(std::move(known), read.announcement);
}

X11Clock::time_point X11SelectionReader::deadline() const {
  auto earliest = X11Clock::time_point::max();
  for (const auto& read : reads_)
    for (const Conversion& conversion : read->conversions)
      if (conversion.open()) earliest = std::min(earliest, conversion.deadline);
  return earliest;
}

void X11SelectionReader::expire(X11Clock::time_point now) {
  for (const auto& read : reads_) {
    for (Conversion& conversion : read->conversions) {
      if (!conversion.open() || conversion.deadline > now) continue;
      conversion.deadline = X11Clock::time_point::max();
      conversion.late = true;
      if (!read->replaced && read->offers(conversion)) continue;
      abandon(*read, conversion);
      advance(*read);
    }
  }
  deliverFinished();
}

auto X11SelectionReader::find(xcb_window_t window) -> std::pair<Read*, Conversion*> {
  for (const auto& read : reads_)
    for (Conversion& conversion : read->conversions)
      if (conversion.window == window && window != XCB_WINDOW_NONE)
        return {read.get(), &conversion};
  return {nullptr, nullptr};
}

}  // namespace marbelot
