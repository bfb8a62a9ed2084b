// The code-line test: source code is told by the shape of its lines.
#pragma once

#include <string_view>

#include "classification/line_counts.h"

namespace marbelot {

// `line` without blanks at its ends.
bool isCodeLine(std::string_view line);

// A name, then an opening bracket, closed on the same line: \w+\s*\([^)]*\).
bool hasCall(std::string_view line);

bool looksLikeCode(const LineCounts& lines);

}  // namespace marbelot
