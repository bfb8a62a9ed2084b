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
  std::string masked = maskSecrets(value);
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

std::string schemeOf(std::string_view url) {
  return text::lowercased(url.substr(0, url.find(':')));
}

// One of the labels for what stands first.
std::string labelFor(const Detection& first) {
  if (first.kind == DetectionKind::phone) return "Call number…";
  const std::string scheme = schemeOf(first.value);
  if (scheme == "mailto") return "Email address…";
  return scheme == "http" || scheme == "https" ? "Open link…" : "Open…";
}

// A link that we know how to open must be fit for it; others are there to be copied.
bool isOffered(const std::string& url) {
  const std::string scheme = schemeOf(url);
  const bool ours = scheme == "http" || scheme == "https" || scheme == "mailto";
  return ours ? isOpenable(url) : isHonest(url) && url.size() <= longestLink;
}

void take(const Detection& found, std::string_view text, TextTargets& targets) {
  if (found.kind == DetectionKind::phone) {
    if (targets.phone) return;
    const std::string url = "tel:" + found.value;
    if (!isOpenable(url)) return;
    targets.phone = target(flatten(text.substr(found.range.start, found.range.length), " "), url);
    return;
  }
  const std::string url = withWholeEscapes(found.value);
  if (found.value.starts_with(mailScheme)) {
    if (!targets.mail) targets.mail = target(found.value.substr(mailScheme.size()), url);
  } else if (isWebLink(url)) {
    if (!targets.link) targets.link = target(found.value, url);
  } else if (!targets.other) {
    targets.other = target(found.value, isOpenable(url) ? url : "");
  }
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
    if (found.kind == DetectionKind::link && !isOffered(found.value)) continue;
    if (targets.label.empty()) targets.label = labelFor(found);
    take(found, text, targets);
  }
  targets.address = addressIn(text);
  if (targets.label.empty()) targets.label = targets.address ? "Address — map…" : "Text actions…";
  targets.preview = maskedPreview(text, previewCharacters);
  targets.query = percentEncoded(text, longestQuery);
  return targets;
}

}  // namespace marbelot
