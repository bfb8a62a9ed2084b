// The terminal test: sessions, command lines and what tools print when they fail.
#pragma once

#include <string_view>

#include "classification/line_counts.h"

namespace marbelot {

enum class TerminalLine {
  none,
  prompt,        // a command behind a prompt
  mark,          // a command behind "# ", "% " or "> "
  error,         // what a tool says when something went wrong
  command,       // a command rich in shell operators, without a prompt
  hash,          // "# " and no command: a comment or a heading
  quote,         // "> " and no command
  everydayHash,  // the same with a word that is a command's name, too
  everydayQuote,
};

// `line` as it stands; `trimmed` without blanks at its ends (not empty). A line of code is no
// command.
TerminalLine terminalLine(std::string_view line, std::string_view trimmed, bool isCode);

bool looksLikeTerminal(const LineCounts& lines);

}  // namespace marbelot
