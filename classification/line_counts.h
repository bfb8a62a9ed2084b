// What the lines of a text look like, counted in one pass for the tests that judge by lines.
#pragma once

#include <cstddef>
#include <string_view>

#include "classification/terminal_test.h"

namespace marbelot {

struct LineCounts {
  std::size_t nonBlank = 0;
  std::size_t code = 0;   // lines that look like source code
  std::size_t prose = 0;  // sentences, quoted lines, headings, fences
  TerminalCounts terminal;
};

// Lines end at LF, CR LF or CR.
LineCounts countLines(std::string_view text);

}  // namespace marbelot
