#include "classification/line_counts.h"

#include <algorithm>

#include "classification/code_lines.h"
#include "classification/line_reader.h"
#include "classification/line_shapes.h"
#include "platform/text.h"

namespace marbelot {
namespace {

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
  TerminalReader terminal;
  LineReader reader(text);
  while (const auto line = reader.next()) {
    const std::string_view trimmed = text::trimmedBlanks(*line);
    if (trimmed.empty()) {
      terminal.readBlank();
      continue;
    }
    ++counts.nonBlank;
    const bool isCode = isCodeLine(trimmed);
    if (isCode) ++counts.code;
    const TerminalLine kind = terminal.read(*line, trimmed, isCode);
    const bool isText = kind == TerminalLine::none && (isMarkup(trimmed) || isSentence(trimmed));
    if (isText || kind == TerminalLine::quotation) ++counts.prose;
  }
  counts.terminal = terminal.counts();
  return counts;
}

}  // namespace marbelot
