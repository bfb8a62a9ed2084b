#include "classification/code_lines.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::array<std::string_view, 17> leadingWords = {
    "if",    "for",    "while",   "else",  "return", "switch", "case",   "func",   "def",
    "class", "public", "private", "const", "let",    "var",    "import", "package"};

bool endsAtWord(std::string_view line, std::size_t at) {
  return at == line.size() || !text::isWordCharacter(text::scalarAt(line, at).value);
}

bool startsWithLeadingWord(std::string_view line) {
  if (line.front() < 'c' || line.front() > 'w') return false;
  return std::any_of(leadingWords.begin(), leadingWords.end(), [line](std::string_view word) {
    return line.starts_with(word) && endsAtWord(line, word.size());
  });
}

// True when a character of \w, then perhaps white space, comes before `bracket`.
bool followsName(std::string_view line, std::size_t bracket) {
  while (bracket > 0) {
    const text::Scalar before = text::scalarBefore(line, bracket);
    if (!text::isBlankOrNewline(before.value)) return text::isWordCharacter(before.value);
    bracket -= before.bytes;
  }
  return false;
}

}  // namespace

bool hasCall(std::string_view line) {
  const std::size_t open = line.find('(');
  if (open == line.npos) return false;
  // Whatever bracket follows a name, the last closing one tells whether any closes it.
  const std::size_t lastClose = line.rfind(')');
  if (lastClose == line.npos) return false;
  for (std::size_t at = open; at < lastClose; at = line.find('(', at + 1)) {
    if (followsName(line, at)) return true;
  }
  return false;
}

bool isCodeLine(std::string_view line) {
  if (line.empty()) return false;
  const char last = line.back();
  if (last == ';' || last == '{' || last == '}') return true;
  if (line.front() == '*' || line.starts_with("//")) return true;
  if (line.size() == 1) return false;
  if (startsWithLeadingWord(line)) return true;
  return line.find("=>") != line.npos || line.find("::") != line.npos || hasCall(line);
}

bool looksLikeCode(const LineCounts& lines) {
  constexpr std::size_t fewestLines = 3;
  return lines.nonBlank >= fewestLines && lines.code * 2 >= lines.nonBlank;
}

}  // namespace marbelot
