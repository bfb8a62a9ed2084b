#include "platform/linux/wayland_selection_reader.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace marbelot {
namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 20;          // bytes, as much as a pipe holds
constexpr std::size_t abandonedSizeLimit = std::size_t{1} << 30;  // bytes
constexpr std::size_t abandonedLimit = 64;                        // pipes
constexpr auto abandonedTimeLimit = std::chrono::minutes(1);

// What read() gives, with 0 for an error too: nothing more comes. None while there is nothing yet.
std::optional<std::size_t> take(const Descriptor& pipe, std::vector<char>& buffer) {
  for (;;) {
    const ssize_t got = ::read(pipe.get(), buffer.data(), buffer.size());
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno == EAGAIN) return std::nullopt;
    if (errno != EINTR) return 0;
  }
}

}  // namespace

struct WaylandSelectionReader::Owner final : Channel {
  explicit Owner(std::unique_ptr<WaylandOffer> given) : offer(std::move(given)) {}
  const std::unique_ptr<WaylandOffer> offer;
};

struct WaylandSelectionReader::Pipe final : Channel {
  explicit Pipe(Descriptor end) : from(std::move(end)) {}
  static Pipe& of(const Conversion& conversion) { return static_cast<Pipe&>(*conversion.channel); }
  Descriptor from;
};

// An owner dies of SIGPIPE when nobody reads what it writes, unless it took care. So what is no
// longer wanted is taken away unseen; an owner that writes without end is cut off.
struct WaylandSelectionReader::Abandoned {
  Descriptor from;
  std::size_t bytes = 0;
  // Of the first bytes that were taken away: the owner may have paused for hours before.
  ClipboardClock::time_point began = ClipboardClock::time_point::max();
};

WaylandSelectionReader::WaylandSelectionReader(Deliver deliver, std::function<void()> wake)
    : ClipboardReader(std::move(deliver), std::move(wake), false), buffer_(bufferSize) {}

WaylandSelectionReader::~WaylandSelectionReader() = default;

void WaylandSelectionReader::replaceAll() {
  // Each request goes to the owner of its offer.
  ClipboardReader::replaceAll([](const Conversion&) { return false; });
}

void WaylandSelectionReader::begin(std::unique_ptr<WaylandOffer> offer,
                                   const ClipboardAnnouncement& announcement) {
  replaceAll();
  Read& read = add(announcement);
  std::vector<std::string> types = offer ? offer->types() : std::vector<std::string>();
  read.owner = std::make_unique<Owner>(std::move(offer));
  listTypes(read, std::move(types));
  advance(read);
  deliverFinished();
}

void WaylandSelectionReader::request(Read& read, Conversion& conversion) {
  Descriptor pipe = static_cast<Owner&>(*read.owner).offer->receive(conversion.type);
  if (!pipe) {
    conversion.state = Conversion::State::failed;
  } else {
    conversion.channel = std::make_unique<Pipe>(std::move(pipe));
  }
}

void WaylandSelectionReader::discard(Conversion& conversion) {
  abandoned_.push_back({std::move(Pipe::of(conversion).from)});
  conversion.channel.reset();
  if (abandoned_.size() > abandonedLimit) abandoned_.pop_front();
}

void WaylandSelectionReader::watch(std::vector<pollfd>& watched) const {
  for (const auto& read : reads_) {
    for (const Conversion& conversion : read->conversions)
      if (conversion.channel) watched.push_back({Pipe::of(conversion).from.get(), POLLIN, 0});
  }
  for (const Abandoned& pipe : abandoned_) watched.push_back({pipe.from.get(), POLLIN, 0});
}

void WaylandSelectionReader::receive() {
  for (const auto& read : reads_) {
    for (Conversion& conversion : read->conversions)
      if (conversion.channel && receive(*read, conversion)) advance(*read);
  }
  abandoned_.remove_if([&](Abandoned& pipe) {
    const auto got = take(pipe.from, buffer_);
    if (!got) return false;
    const auto now = ClipboardClock::now();
    pipe.began = std::min(pipe.began, now);
    pipe.bytes += *got;
    return *got == 0 || pipe.bytes > abandonedSizeLimit || now - pipe.began > abandonedTimeLimit;
  });
  deliverFinished();
}

// Whether it is over. Takes as much as a pipe holds, so that all get their turn.
bool WaylandSelectionReader::receive(Read& read, Conversion& conversion) {
  const auto got = take(Pipe::of(conversion).from, buffer_);
  if (!got) return false;
  progress(read, conversion);
  if (*got > 0) {
    if (conversion.bytes.size() + *got > sizeLimit) {
      abandon(read, conversion);
      return true;
    }
    conversion.state = Conversion::State::arriving;
    conversion.bytes.append(buffer_.data(), *got);
    return false;
  }
  conversion.channel.reset();
  if (conversion.bytes.empty()) {
    // Refused, or lost with its owner: nobody can tell it from an empty text.
    conversion.state = Conversion::State::failed;
    return true;
  }
  // The names without an encoding are those of X11, but the bytes are today's.
  const bool encoded =
      conversion.type == "UTF8_STRING" || conversion.type.find("charset=") != std::string::npos;
  finish(read, conversion, &conversion == &read.text && !encoded ? "text/plain" : conversion.type);
  return true;
}

}  // namespace marbelot
