// What single lines of code look like, without their blanks at both ends. Linear in the line.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/ascii.h"

namespace marbelot {

inline bool isBlank(char c) { return c == ' ' || c == '\t'; }
inline bool isName(char c) { return isAlnum(c) || c == '_' || !isAscii(c); }

std::size_t skipName(std::string_view line, std::size_t at);
std::size_t skipBlanks(std::string_view line, std::size_t at);

// Where the code of a line ends that a comment follows: "int a;  /* of it */".
std::size_t endOfCode(std::string_view line);

// The quote that closes the one at `open`, or npos.
std::size_t closingQuote(std::string_view line, std::size_t open);

// An assignment or a call with nothing to end it.
bool isBareStatement(std::string_view line);

// What opens a rule of a style sheet: classes, identities and elements, none of them a keyword's.
bool isSelector(std::string_view line);

// Something.DoIt(: methods with capitals.
bool holdsPascalCall(std::string_view line);

// What a terminal prints, or a list or quotation.
bool isForeign(std::string_view line);

}  // namespace marbelot
