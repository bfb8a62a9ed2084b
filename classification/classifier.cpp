// The order of the tests: what must not be shown comes first, then what a text is.
#include "classification/classifier.h"

#include <algorithm>
#include <array>

#include "classification/code_lines.h"
#include "classification/language_detector.h"
#include "classification/line_counts.h"
#include "classification/password_tokens.h"
#include "classification/terminal_test.h"
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

bool holdsPassword(std::string_view text) {
  constexpr int fewWords = 3;
  const bool mayHold = wordCount(text, fewWords + 1) <= fewWords || mentionsSecret(text);
  return mayHold && hasPasswordToken(text);
}

// ^[0-9][0-9 ,.()+_-]*$
bool isNumberLike(std::string_view text) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
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

}  // namespace

std::string_view rawValue(ClipCategory category) {
  constexpr std::array<std::string_view, clipCategoryCount> names = {
      "apiKey", "password", "url",  "email", "phone", "address",
      "number", "terminal", "code", "text",  "image"};
  return names[static_cast<std::size_t>(category)];
}

ClipCategory classify(std::string_view text) {
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(text);
  if (trimmed.empty()) return ClipCategory::text;
  if (!secretRanges(trimmed).empty()) return ClipCategory::apiKey;
  if (looksLikeSecretToken(trimmed)) return ClipCategory::password;
  if (holdsPassword(trimmed)) return ClipCategory::password;
  const std::string_view head = leadingLines(trimmed);
  LineCounts lines = countLines(head);
  if (languageOf(trimmed, lines)) return ClipCategory::code;
  if (head.size() < trimmed.size()) lines = countLines(trimmed);
  if (looksLikeTerminal(lines)) return ClipCategory::terminal;
  if (looksLikeCode(lines)) return ClipCategory::code;
  if (const auto category = detected(trimmed)) return *category;
  return isNumberLike(trimmed) ? ClipCategory::number : ClipCategory::text;
}

}  // namespace marbelot
