// What the lines of a text look like, counted in one pass for the tests that judge by lines.
#pragma once

#include <cstddef>
#include <string_view>

namespace marbelot {

struct LineCounts {
  std::size_t nonBlank = 0;
  std::size_t code = 0;      // lines that look like source code
  std::size_t prompts = 0;   // a command behind a prompt
  std::size_t marks = 0;     // a command behind a mark that begins quotes and comments, too
  std::size_t everyday = 0;  // an everyday word behind one, perhaps a command
  bool beginsWithMark = false;
  std::size_t errors = 0;    // what tools say when something went wrong
  std::size_t commands = 0;  // a command rich in shell operators, without a prompt
  std::size_t hashes = 0;    // "# " and no command: a comment or a heading
  std::size_t prose = 0;     // sentences, quoted lines, headings, fences
};

// Lines end at LF, CR LF or CR.
LineCounts countLines(std::string_view text);

}  // namespace marbelot
