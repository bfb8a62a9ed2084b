#include "classification/line_counts.h"

#include <algorithm>

#include "classification/code_lines.h"
#include "classification/line_reader.h"
#include "classification/terminal_test.h"
#include "platform/text.h"

namespace marbelot {
namespace {

bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

// A line of running text: some words, begun as a sentence is or ended as one.
bool isSentence(std::string_view line) {
  constexpr int kFewWords = 4, kManyWords = 8;
  constexpr std::size_t kLookAt = 400;  // a longer line needs no more to be known
  if (line.size() <= 2 * kFewWords) return false;
  const std::string_view head = line.substr(0, kLookAt);
  const auto gaps = std::count(head.begin(), head.end(), ' ');
  if (gaps < kFewWords) return false;
  const char last = line.back();
  const bool ends = last == '.' || last == '!' || last == '?' || last == ',' || last == ':';
  return (isUpper(line.front()) && (ends || gaps >= kManyWords)) || (ends && gaps >= kManyWords);
}

bool isMarkup(std::string_view line) {
  return line.starts_with("```") || line.starts_with("## ") || line.starts_with("### ") ||
         line.starts_with("- [") || line.starts_with("* **") || line.starts_with("- **");
}

}  // namespace

LineCounts countLines(std::string_view text) {
  LineCounts counts;
  LineReader reader(text);
  while (const auto line = reader.next()) {
    const std::string_view trimmed = text::trimmedBlanks(*line);
    if (trimmed.empty()) continue;
    ++counts.nonBlank;
    const bool isCode = isCodeLine(trimmed);
    if (isCode) ++counts.code;
    switch (terminalLine(*line, trimmed, isCode)) {
      case TerminalLine::prompt:
        ++counts.prompts;
        break;
      case TerminalLine::mark:
        ++counts.marks;
        if (counts.nonBlank == 1) counts.beginsWithMark = true;
        break;
      case TerminalLine::error:
        ++counts.errors;
        break;
      case TerminalLine::command:
        ++counts.commands;
        break;
      case TerminalLine::everydayQuote:
        ++counts.everyday;
        [[fallthrough]];
      case TerminalLine::quote:
        ++counts.prose;
        break;
      case TerminalLine::everydayHash:
        ++counts.everyday;
        [[fallthrough]];
      case TerminalLine::hash:
        ++counts.hashes;
        break;
      case TerminalLine::none:
        if (isMarkup(trimmed) || isSentence(trimmed)) ++counts.prose;
        break;
    }
  }
  return counts;
}

}  // namespace marbelot
