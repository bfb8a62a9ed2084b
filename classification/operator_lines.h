// Lines without a prompt that a shell was given, or that tools print: rich in the operators of
// shells.
#pragma once

#include <string_view>

namespace marbelot {

// `line` without blanks at its ends; not empty.
bool endsAsSentence(std::string_view line);

// "tar -xzf a.tgz | less": a command and its options, paths and operators. `line` as above; a line
// that reads as code needs more to be believed.
bool isCommandLine(std::string_view line, bool isCode);

// "for f in *; do rm $f; done"
bool isShellBlock(std::string_view line);

// What compilers and searches show of a source: "src/a.c:12:", "12 | int a;" and "   |     ^~~~".
bool isToolLine(std::string_view line);

}  // namespace marbelot
