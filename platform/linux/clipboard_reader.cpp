#include "platform/linux/clipboard_reader.h"

#include <algorithm>

#include "platform/concealed_types.h"
#include "platform/files.h"
#include "platform/linux/clipboard_types.h"
#include "platform/linux/file_list.h"
#include "platform/linux/imaging.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr auto stallLimit = std::chrono::seconds(2);
constexpr auto replacedStallLimit = std::chrono::milliseconds(250);

// Of what one owner has given: its text and its image come once.
bool same(const PasteboardContents& a, const PasteboardContents& b) {
  return a.text == b.text && a.image.has_value() == b.image.has_value() && a.types == b.types &&
         a.concealed == b.concealed;
}

// The picture in the file, or the first page of a document.
std::optional<Image> imageInFile(const std::string& path, int cancel) {
  if (std::optional<Image> image = Image::fromFile(path)) return image;
  constexpr std::size_t largestDocument = std::size_t{64} << 20;
  if (files::lowercasedExtension(path) != "pdf") return std::nullopt;
  const SharedBytes pdf = files::read(path, largestDocument);
  return pdf ? pdfImage(*pdf, cancel) : std::nullopt;
}

}  // namespace

bool ClipboardReader::Read::finished() const {
  return std::none_of(conversions.begin(), conversions.end(),
                      [](const Conversion& c) { return c.open(); });
}

// An answer is missing: there is no use in asking for more.
bool ClipboardReader::Read::stalled() const {
  return std::any_of(conversions.begin(), conversions.end(),
                     [](const Conversion& c) { return c.late; });
}

// The owner answers again, so what else is missing may come, too.
void ClipboardReader::Read::revive() {
  const auto deadline = ClipboardClock::now() + stallLimit;
  for (Conversion& conversion : conversions)
    if (std::exchange(conversion.late, false)) conversion.deadline = deadline;
}

// Nothing else is read, whatever the owner answers: many give all that they have, be it an image
// or a PDF, to whoever asks for a text.
bool ClipboardReader::Read::offers(const Conversion& conversion) const {
  return targets.state != Conversion::State::done || contains(listed, conversion.type);
}

// All that is worth waiting for has come.
bool ClipboardReader::Read::due() const {
  return std::none_of(conversions.begin(), conversions.end(),
                      [](const Conversion& c) { return c.open() && !c.late; });
}

bool ClipboardReader::Read::tellable() const {
  return !replaced || targets.state == Conversion::State::done || contents.text;
}

// What is known of it by now.
PasteboardContents ClipboardReader::Read::known() const {
  PasteboardContents now = contents;
  // A text without its list of types may be a secret.
  if (targets.open()) now.concealed = true;
  if (now.text && now.types.empty())
    now.types.emplace_back("UTF8_STRING");  // an owner that lists nothing
  return now;
}

ClipboardReader::ClipboardReader(Deliver deliver, std::function<void()> wake, bool oneAtATime)
    : deliver_(std::move(deliver)), oneAtATime_(oneAtATime), loader_(std::move(wake)) {}

ClipboardReader::~ClipboardReader() = default;

void ClipboardReader::replaceAll(const std::function<bool(const Conversion&)>& misdirected) {
  const auto now = ClipboardClock::now();
  for (const auto& read : reads_) {
    read->replaced = true;
    for (Conversion& conversion : read->conversions) {
      if (!conversion.open()) continue;
      conversion.deadline = std::min(conversion.deadline, now + replacedStallLimit);
      if (conversion.late || misdirected(conversion)) abandon(*read, conversion);
    }
  }
  deliverFinished();
}

auto ClipboardReader::add(const ClipboardAnnouncement& announcement) -> Read& {
  reads_.push_back(std::make_unique<Read>());
  reads_.back()->announcement = announcement;
  return *reads_.back();
}

void ClipboardReader::ask(Read& read, Conversion& conversion, const std::string& type) {
  conversion.state = Conversion::State::asked;
  conversion.type = type;
  conversion.bytes = std::string();
  conversion.deadline = ClipboardClock::now() + stallLimit;
  request(read, conversion);
}

void ClipboardReader::abandon(Read& read, Conversion& conversion) {
  if (conversion.state != Conversion::State::loading) discard(conversion);
  conversion.state = Conversion::State::failed;
  conversion.late = false;
  conversion.bytes = std::string();
  // A text without its list of types may be a secret.
  if (&conversion == &read.targets) read.contents.concealed = true;
}

void ClipboardReader::progress(Read& read, Conversion& conversion) {
  read.revive();
  conversion.deadline = ClipboardClock::now() +
                        (read.replaced ? ClipboardClock::duration(replacedStallLimit) : stallLimit);
}

void ClipboardReader::finish(Read& read, Conversion& conversion, const std::string& answered) {
  conversion.state = Conversion::State::done;
  std::string bytes = std::move(conversion.bytes);
  if (&conversion == &read.text) {
    read.contents.text = read.offers(conversion)
                             ? decodedText(conversion.type, answered, std::move(bytes))
                             : nullptr;
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

void ClipboardReader::finishImage(Read& read, Conversion& conversion, std::string bytes) {
  const std::string path =
      contains(readFileTypes, conversion.type) ? firstFile(bytes) : std::string();
  if (!path.empty() || conversion.type == readDocumentType) {
    // A file may be far away, and a document has to be drawn.
    conversion.state = Conversion::State::loading;
    conversion.ticket = ++lastTicket_;
    loader_.start(conversion.ticket, [path, pdf = std::move(bytes)](int cancel) {
      return path.empty() ? pdfImage(pdf, cancel) : imageInFile(path, cancel);
    });
    return;
  }
  read.contents.image = Image::fromBytes(share(std::move(bytes)));
  if (!read.contents.image) conversion.state = Conversion::State::failed;
}

void ClipboardReader::collect() {
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

void ClipboardReader::listTypes(Read& read, std::vector<std::string> names) {
  read.targets.state = Conversion::State::done;
  read.listed = names;
  for (std::string& name : names) {
    if (contains(protocolTypes, name)) continue;
    // A hint counts until its value says otherwise: rather one copy too few than one secret.
    if (isConcealedType(name) || name == passwordHint) read.contents.concealed = true;
    read.contents.types.push_back(text::sanitized(std::move(name)));
  }
  const auto offered = [&](std::string_view name) { return contains(read.contents.types, name); };
  for (const auto name : readTextTypes)
    if (offered(name) && name != read.text.type) read.textTargets.emplace_back(name);
  for (const auto name : readImageTypes)
    if (offered(name)) read.imageTargets.emplace_back(name);
  for (const auto name : readFileTypes)
    if (offered(name)) read.imageTargets.emplace_back(name);
  if (offered(readDocumentType) &&
      std::none_of(readTextTypes.begin(), readTextTypes.end(), offered))
    read.imageTargets.emplace_back(readDocumentType);
  if (read.text.state == Conversion::State::done && !read.offers(read.text)) {
    read.contents.text = nullptr;
    read.text.state = Conversion::State::failed;
  }
  if (offered(passwordHint) && !read.replaced) ask(read, read.hint, std::string(passwordHint));
}

void ClipboardReader::advance(Read& read) {
  if (read.replaced || read.stalled() || read.targets.open()) return;
  if (read.targets.state == Conversion::State::failed && read.text.type != "STRING" &&
      read.text.free())
    return ask(read, read.text, "STRING");  // an owner that knows no list of types
  const auto next = [&](Conversion& conversion, std::deque<std::string>& targets) {
    if (!conversion.free() || targets.empty()) return;
    const std::string target = std::move(targets.front());
    targets.pop_front();
    ask(read, conversion, target);
  };
  next(read.text, read.textTargets);
  if (!oneAtATime_ || !read.text.open()) next(read.image, read.imageTargets);
}

void ClipboardReader::deliverFinished() {
  while (!reads_.empty() && reads_.front()->due()) {
    Read& read = *reads_.front();
    tell(read);
    if (!read.finished()) return;  // late, and thus the present owner's: the last one
    reads_.pop_front();
  }
}

void ClipboardReader::tell(Read& read) {
  PasteboardContents known = read.known();
  if (!read.tellable() || (read.told && same(*read.told, known))) return;
  read.told = known;
  deliver_(std::move(known), read.announcement);
}

ClipboardClock::time_point ClipboardReader::deadline() const {
  auto earliest = ClipboardClock::time_point::max();
  for (const auto& read : reads_) {
    for (const Conversion& conversion : read->conversions)
      if (conversion.open()) earliest = std::min(earliest, conversion.deadline);
  }
  return earliest;
}

void ClipboardReader::expire(ClipboardClock::time_point now) {
  for (const auto& read : reads_) {
    for (Conversion& conversion : read->conversions) {
      if (!conversion.open() || conversion.deadline > now) continue;
      conversion.deadline = ClipboardClock::time_point::max();
      conversion.late = true;
      if (!read->replaced && read->offers(conversion)) continue;
      abandon(*read, conversion);
      advance(*read);
    }
  }
  deliverFinished();
}

}  // namespace marbelot
