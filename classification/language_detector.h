// The language detector's parts that the classifier shares the lines of a text with.
#pragma once

#include <optional>
#include <string_view>

#include "classification/language_clues.h"
#include "classification/line_counts.h"

namespace marbelot {

std::string_view languageName(Language language);

// The beginning of a text that its language is told from.
std::string_view leadingLines(std::string_view text);

// The language of a text without white space at its ends; `headLines` are its leading lines'.
std::optional<std::string_view> languageOf(std::string_view trimmed, const LineCounts& headLines);

// The language that the clues speak for most, of those of which a signal stands in the text.
std::optional<Language> likeliest(const ClueCounts& counts, const ClueScores& scores,
                                  std::string_view trimmed);

}  // namespace marbelot
