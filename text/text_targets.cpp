#include "text/text_targets.h"

#include <algorithm>

#include "classification/classifier.h"
#include "platform/detection.h"
#include "platform/text.h"
#include "text/endpoints.h"
#include "text/flatten_trim.h"
#include "text/masked_title.h"
#include "text/open_action.h"

namespace marbelot {
namespace {

constexpr std::string_view mailScheme = "mailto:";
constexpr std::size_t previewCharacters = 30;
constexpr std::size_t shownCharacters = 60;
// A postal address has a handful of lines; what goes on for longer is a list of something.
constexpr std::size_t mostAddressLines = 8;

// As it may stand in a title: the end of a link tells as much as its beginning.
std::string shown(std::string_view value) {
  std::string masked = maskedForDisplay(value);
  const std::size_t half = shownCharacters / 2;
  const std::size_t head = text::prefixBytes(masked, half);
  const std::size_t tail = text::suffixBytes(masked, half - 1);
  if (head + tail >= masked.size()) return masked;
  return masked.substr(0, head) + "…" + masked.substr(masked.size() - tail);
}

TextTarget target(std::string value, std::string url = {}) {
  std::string title = shown(value);
  return {std::move(value), std::move(title), std::move(url)};
}

std::string withLowerScheme(std::string_view url) {
  const std::size_t colon = std::min(url.find(':'), url.size());
  return text::lowercased(url.substr(0, colon)) + std::string(url.substr(colon));
}

bool isWebOrMail(std::string_view url) {
  return url.starts_with("http:") || url.starts_with("https:") || url.starts_with(mailScheme);
}

// Keeps the first of each kind. The submenu's label for what was found; empty when it is not to be
// offered.
std::string_view take(const Detection& found, std::string_view text, TextTargets& targets) {
  if (found.kind == DetectionKind::phone) {
    const std::string url = "tel:" + found.value;
    if (!isOpenable(url)) return {};
    if (!targets.phone)
      targets.phone = target(flatten(text.substr(found.range.start, found.range.length), " "), url);
    return "Call number…";
  }
  const std::string value = withLowerScheme(found.value);
  const std::string url = withWholeEscapes(value);
  const bool openable = isOpenable(url);
  // A link that we know how to open must be fit for it; others are there to be copied.
  if (!openable && (isWebOrMail(url) || !isHonest(url) || url.size() > longestLink)) return {};
  if (value.starts_with(mailScheme)) {
    if (!targets.mail) targets.mail = target(value.substr(mailScheme.size()), url);
    return "Email address…";
  }
  if (isWebOrMail(value)) {
    if (!targets.link) targets.link = target(value, url);
    return "Open link…";
  }
  if (!targets.other) targets.other = target(value, openable ? url : "");
  return "Open…";
}

// The first address that is not too long to be one.
std::optional<TextTarget> addressIn(std::string_view text) {
  constexpr auto kind = static_cast<unsigned>(DetectionKind::address);
  const auto isOne = [&](const Detection& found) {
    return lineCount(text.substr(found.range.start, found.range.length)) <= mostAddressLines;
  };
  const auto first = firstDetection(text, kind);
  if (!first) return std::nullopt;
  if (isOne(*first)) return target(first->value);
  const std::vector<Detection> all = detect(text, kind);
  const auto found = std::find_if(all.begin(), all.end(), isOne);
  return found == all.end() ? std::nullopt : std::optional(target(found->value));
}

}  // namespace

TextTargets findTargets(std::string_view text) {
  TextTargets targets;
  for (const Detection& found : detect(text, DetectionKind::link | DetectionKind::phone)) {
    const std::string_view label = take(found, text, targets);
    if (targets.label.empty()) targets.label = label;
  }
  targets.address = addressIn(text);
  if (targets.label.empty()) targets.label = targets.address ? "Address — map…" : "Text actions…";
  targets.preview = maskedPreview(text, previewCharacters);
  targets.query = percentEncoded(text, longestQuery);
  return targets;
}

}  // namespace marbelot
