// What a copied text is, and what of it must not be shown. Pure functions of one text (UTF-8);
// linear in its length, no recursion, safe to call from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace marbelot {

// The position of a case is stored as the filter value of the history menu: append, never reorder.
enum class ClipCategory {
  apiKey,
  password,
  url,
  email,
  phone,
  address,
  number,
  terminal,
  code,
  text,
  image,
};
inline constexpr int clipCategoryCount = 11;

// The case's name, e.g. "apiKey".
std::string_view rawValue(ClipCategory category);

ClipCategory classify(std::string_view text);

// API keys and tokens, sorted by start, not overlapping.
std::vector<Range> secretRanges(std::string_view text);

bool looksLikeSecretToken(std::string_view token);

// Whitespace-separated tokens, less the punctuation at their edges, that look like passwords.
std::vector<Range> passwordTokens(std::string_view text);

// The programming or markup language of a snippet, e.g. "Python"; none for anything else.
std::optional<std::string_view> detectLanguage(std::string_view text);

// The answers to all these questions, for less than asking one after the other.
struct TextFacts {
  ClipCategory category = ClipCategory::text;
  std::string_view language;   // of source code; empty when unknown
  std::vector<Range> secrets;  // what is hidden where it is shown; sorted, not overlapping
};
TextFacts factsOf(std::string_view text);

}  // namespace marbelot
