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
  constexpr int fewWords = 4, manyWords = 8;
  constexpr std::size_t lookAt = 400;  // a longer line needs no more to be known
  if (line.size() <= 2 * fewWords) return false;
  const std::string_view head = line.substr(0, lookAt);
  const auto gaps = std::count(head.begin(), head.end(), ' ');
  if (gaps < fewWords) return false;
  const char last = line.back();
  const bool ends = last == '.' || last == '!' || last == '?' || last == ',' || last == ':';
  return (isUpper(line.front()) && (ends || gaps >= manyWords)) || (ends && gaps >= manyWords);
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
