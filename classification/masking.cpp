#include "classification/masking.h"

#include <algorithm>
#include <utility>

#include "classification/classifier.h"

namespace marbelot {
namespace {

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

}  // namespace

std::vector<Range> allSecrets(std::vector<Range> keys, const std::vector<Range>& passwords) {
  keys.insert(keys.end(), passwords.begin(), passwords.end());
  std::sort(keys.begin(), keys.end(),
            [](const Range& a, const Range& b) { return a.start < b.start; });
  std::vector<Range> kept;
  for (const Range& range : keys) {
    // Those that only touch stay apart.
    if (!kept.empty() && range.start < kept.back().end()) {
      Range& last = kept.back();
      last.length = std::max(last.end(), range.end()) - last.start;
    } else {
      kept.push_back(range);
    }
  }
  return kept;
}

std::vector<Range> hiddenRanges(std::string_view text, std::vector<Range> keys,
                                const std::vector<Range>& passwords) {
  std::vector<Range> hidden = allSecrets(std::move(keys), passwords);
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(text);
  if (hidden.empty() && looksLikeSecretToken(trimmed))
    hidden.push_back({static_cast<std::size_t>(trimmed.data() - text.data()), trimmed.size()});
  return hidden;
}

std::string masked(std::string_view text, const std::vector<Range>& secrets) {
  std::string shown;
  std::size_t end = 0;
  for (const Range& secret : secrets) {
    shown += text.substr(end, secret.start - end);
    appendMask(shown, text.substr(secret.start, secret.length));
    end = secret.end();
  }
  shown += text.substr(end);
  return shown;
}

std::string maskSecrets(std::string_view text) {
  return masked(text, allSecrets(secretRanges(text), passwordTokens(text)));
}

std::string maskApiKeys(std::string_view text) { return masked(text, secretRanges(text)); }

std::string maskedForDisplay(std::string_view text) {
  return masked(text, hiddenRanges(text, secretRanges(text), passwordTokens(text)));
}

}  // namespace marbelot
