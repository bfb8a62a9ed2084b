// The order of the tests: what must not be shown comes first, then what a text is.
#include "classification/classifier.h"

#include <algorithm>
#include <array>

#include "classification/code_lines.h"
#include "classification/language_detector.h"
#include "classification/line_counts.h"
#include "classification/masking.h"
#include "classification/password_tokens.h"
#include "classification/secret_scanner.h"
#include "classification/terminal_test.h"
#include "platform/ascii.h"
#include "platform/detection.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// Words between spaces, line feeds and tabs; counts no further than `limit`.
int wordCount(std::string_view text, int limit) {
  int words = 0;
  bool inWord = false;
  for (const char c : text) {
    const bool separates = c == ' ' || c == '\n' || c == '\t';
    if (!separates && !inWord && ++words == limit) break;
    inWord = !separates;
  }
  return words;
}

// Whether a token that looks like a password is believed to be one.
bool mayHoldPassword(std::string_view text) {
  constexpr int fewWords = 3;
  return wordCount(text, fewWords + 1) <= fewWords || mentionsSecret(text);
}

// ^[0-9][0-9 ,.()+_-]*$
bool isNumberLike(std::string_view text) {
  return isDigit(text.front()) && std::all_of(text.begin(), text.end(), [&](char c) {
           return isDigit(c) || std::string_view(" ,.()+_-").find(c) != std::string_view::npos;
         });
}

std::string_view schemeOf(std::string_view url) { return url.substr(0, url.find(':')); }

std::optional<ClipCategory> detected(std::string_view text) {
  if (const auto found = firstDetection(text, DetectionKind::link | DetectionKind::phone)) {
    if (found->kind == DetectionKind::phone) return ClipCategory::phone;
    const std::string scheme = text::lowercased(schemeOf(found->value));
    if (scheme == "mailto") return ClipCategory::email;
    if (scheme == "http" || scheme == "https") return ClipCategory::url;
  }
  if (firstDetection(text, static_cast<unsigned>(DetectionKind::address))) {
    return ClipCategory::address;
  }
  return std::nullopt;
}

struct Kind {
  ClipCategory category;
  std::string_view language;  // of source code; empty when unknown
};

// `hasPassword` tells whether there is a token that looks like a password.
template <class HasPassword>
Kind kindOf(std::string_view trimmed, bool hasKey, HasPassword hasPassword) {
  if (trimmed.empty()) return {ClipCategory::text, {}};
  if (hasKey) return {ClipCategory::apiKey, {}};
  if (looksLikeSecretToken(trimmed)) return {ClipCategory::password, {}};
  if (mayHoldPassword(trimmed) && hasPassword()) return {ClipCategory::password, {}};
  const std::string_view head = leadingLines(trimmed);
  LineCounts lines = countLines(head);
  if (const auto language = languageOf(trimmed, lines)) return {ClipCategory::code, *language};
  if (head.size() < trimmed.size()) lines = countLines(trimmed);
  if (looksLikeTerminal(lines)) return {ClipCategory::terminal, {}};
  if (looksLikeCode(lines)) return {ClipCategory::code, {}};
  if (const auto category = detected(trimmed)) return {*category, {}};
  return {isNumberLike(trimmed) ? ClipCategory::number : ClipCategory::text, {}};
}

}  // namespace

std::string_view rawValue(ClipCategory category) {
  constexpr std::array<std::string_view, clipCategoryCount> names = {
      "apiKey", "password", "url",  "email", "phone", "address",
      "number", "terminal", "code", "text",  "image"};
  return names[static_cast<std::size_t>(category)];
}

ClipCategory classify(std::string_view text) {
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(text);
  return kindOf(trimmed, containsSecret(trimmed), [=] { return hasPasswordToken(trimmed); })
      .category;
}

TextFacts factsOf(std::string_view text) {
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(text);
  std::vector<Range> keys = secretRanges(trimmed);
  const std::vector<Range> passwords = passwordTokens(trimmed);
  const Kind kind = kindOf(trimmed, !keys.empty(), [&] { return !passwords.empty(); });
  TextFacts facts{kind.category, kind.language, hiddenRanges(trimmed, std::move(keys), passwords)};
  for (Range& secret : facts.secrets)
    secret.start += static_cast<std::size_t>(trimmed.data() - text.data());
  return facts;
}

}  // namespace marbelot
