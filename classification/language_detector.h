// The language detector's parts that the classifier shares the lines of a text with.
#pragma once

#include <optional>
#include <string_view>

#include "classification/line_counts.h"

namespace marbelot {

// The beginning of a text that its language is told from.
std::string_view leadingLines(std::string_view text);

// The language of a text without white space at its ends; `headLines` are its leading lines'.
std::optional<std::string_view> languageOf(std::string_view trimmed, const LineCounts& headLines);

}  // namespace marbelot
