// Secrets shortened to their edges.
#include <algorithm>

#include "classification/classifier.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// Sorted by start; ranges that overlap become one, ranges that only touch stay apart.
std::vector<Range> merged(std::vector<Range> ranges) {
  std::sort(ranges.begin(), ranges.end(),
            [](const Range& a, const Range& b) { return a.start < b.start; });
  std::vector<Range> kept;
  for (const Range& range : ranges) {
    if (!kept.empty() && range.start < kept.back().end()) {
      Range& last = kept.back();
      last.length = std::max(last.end(), range.end()) - last.start;
    } else {
      kept.push_back(range);
    }
  }
  return kept;
}

void appendMask(std::string& to, std::string_view secret) {
  constexpr std::string_view mask = "***";
  constexpr std::size_t shortLength = 7, longLength = 12;  // characters
  const auto hasAtLeast = [secret](std::size_t characters) {
    return text::prefixBytes(secret, characters - 1) < secret.size();
  };
  if (!hasAtLeast(shortLength)) {
    to += mask;
    return;
  }
  const std::size_t edge = hasAtLeast(longLength) ? 4 : 2;
  to += secret.substr(0, text::prefixBytes(secret, edge));
  to += mask;
  to += secret.substr(secret.size() - text::suffixBytes(secret, edge));
}

std::string maskRanges(std::string_view text, const std::vector<Range>& secrets) {
  std::string masked;
  std::size_t shown = 0;
  for (const Range& secret : secrets) {
    masked += text.substr(shown, secret.start - shown);
    appendMask(masked, text.substr(secret.start, secret.length));
    shown = secret.end();
  }
  masked += text.substr(shown);
  return masked;
}

}  // namespace

std::string maskSecrets(std::string_view text) {
  std::vector<Range> secrets = secretRanges(text);
  const std::vector<Range> tokens = passwordTokens(text);
  secrets.insert(secrets.end(), tokens.begin(), tokens.end());
  return maskRanges(text, merged(std::move(secrets)));
}

std::string maskApiKeys(std::string_view text) { return maskRanges(text, secretRanges(text)); }

}  // namespace marbelot
