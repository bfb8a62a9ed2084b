#include "platform/linux/clipboard_offer.h"

#include <algorithm>
#include <map>
#include <utility>

#include "platform/concealed_types.h"
#include "platform/linux/clipboard_types.h"
#include "platform/linux/imaging.h"

namespace marbelot {
namespace {

// The names under which programs ask for images: those of the toolkits, the likely ones first.
struct ImageType {
  std::string_view name;
  std::string_view encoding;
};
constexpr ImageType imageTypes[] = {
    {"image/png", "png"},      {"image/bmp", "bmp"},          {"image/jpeg", "jpeg"},
    {"image/tiff", "tiff"},    {"image/webp", "webp"},        {"image/x-bmp", "bmp"},
    {"image/x-MS-bmp", "bmp"}, {"image/x-win-bitmap", "bmp"}, {"image/jpg", "jpeg"},
    {"image/tif", "tiff"},     {"image/ico", "ico"},          {"image/x-icon", "ico"},
    {"image/cur", "cur"},      {"image/icns", "icns"},        {"image/ppm", "ppm"},
    {"image/pgm", "pgm"},      {"image/pbm", "pbm"},          {"image/xpm", "xpm"},
    {"image/xbm", "xbm"},      {"image/wbmp", "wbmp"},
};

std::string_view encodingOf(std::string_view type) {
  for (const ImageType& known : imageTypes)
    if (known.name == type) return known.encoding;
  return type.substr(std::string_view("image/").size());
}

}  // namespace

std::vector<std::string> offeredTypes(const ClipboardOffer& offer) {
  std::vector<std::string> types;
  if (offer.image) {
    const std::string_view own = mimeType(offer.image->format());
    types.emplace_back(own);
    for (const ImageType& type : imageTypes)
      if (type.name != own) types.emplace_back(type.name);
  } else {
    types.assign(offeredTextTypes.begin(), offeredTextTypes.end());
  }
  if (offer.concealed) types.emplace_back(passwordHint);
  return types;
}

std::vector<std::string> keptTypes(const ClipboardOffer& offer) {
  std::vector<std::string> types = offeredTypes(offer);
  if (offer.image) {
    std::erase_if(types, [own = mimeType(offer.image->format())](const std::string& type) {
      return type.starts_with("image/") && type != own && type != "image/png";
    });
  }
  return types;
}

// Kept alive by the requests that still wait for a form of it.
struct OfferedForms::Contents {
  ClipboardOffer offer;
  SharedBytes original;  // the image's own bytes; null while they are still to be encoded
  std::map<std::string_view, SharedBytes> forms;  // by encoding; null where that failed
};

struct OfferedForms::Waiting {
  std::uint64_t ticket;
  std::shared_ptr<Contents> contents;
  std::string_view encoding;
  Done done;
};

OfferedForms::OfferedForms(std::function<void()> wake) : converter_(std::move(wake)) {}

OfferedForms::~OfferedForms() = default;

void OfferedForms::set(ClipboardOffer offer) {
  contents_ = std::make_shared<Contents>();
  contents_->offer = std::move(offer);
}

void OfferedForms::preload() {
  const auto& image = contents_->offer.image;
  if (image && image->isEncoded()) contents_->original = image->bytes();
}

const ClipboardOffer* OfferedForms::offer() const {
  return contents_ ? &contents_->offer : nullptr;
}

void OfferedForms::request(std::string_view type, Done done) {
  if (!contents_) return done(nullptr);
  if (type == passwordHint) return done(share("secret"));
  if (contents_->offer.image) return convert(type, std::move(done));
  const SharedText& text = contents_->offer.text;
  done(type == "STRING" ? share(toLatin1(*text)) : text);
}

void OfferedForms::convert(std::string_view type, Done done) {
  const Image& image = *contents_->offer.image;
  const std::string_view encoding = encodingOf(type);
  if (encoding == encodingOf(mimeType(image.format())) && image.isEncoded()) {
    if (!contents_->original) contents_->original = image.bytes();
    return done(contents_->original);
  }
  const auto known = contents_->forms.find(encoding);
  if (known != contents_->forms.end()) return done(known->second);
  const auto same = std::find_if(waiting_.begin(), waiting_.end(), [&](const Waiting& waiting) {
    return waiting.contents == contents_ && waiting.encoding == encoding;
  });
  const bool running = same != waiting_.end();
  const std::uint64_t ticket = running ? same->ticket : ++lastTicket_;
  waiting_.push_back({ticket, contents_, encoding, std::move(done)});
  if (running) return;
  converter_.start(
      ticket, [image, encoding](int cancel) { return convertedBytes(image, encoding, cancel); });
}

void OfferedForms::collect() {
  for (const auto& [ticket, bytes] : converter_.take()) {
    std::vector<Waiting> served;
    for (Waiting& waiting : waiting_)
      if (waiting.ticket == ticket) served.push_back(std::move(waiting));
    std::erase_if(waiting_, [done = ticket](const Waiting& w) { return w.ticket == done; });
    for (const Waiting& waiting : served) {
      waiting.contents->forms[waiting.encoding] = bytes;
      waiting.done(bytes);
    }
  }
}

}  // namespace marbelot
