#include "classification/line_shapes.h"

#include <algorithm>

namespace marbelot {

std::size_t skipName(std::string_view line, std::size_t at) {
  while (at < line.size() && isName(line[at])) ++at;
  return at;
}

std::size_t skipBlanks(std::string_view line, std::size_t at) {
  while (at < line.size() && isBlank(line[at])) ++at;
  return at;
}

std::size_t endOfCode(std::string_view line) {
  std::size_t end = line.size();
  if (line.ends_with("*/")) end = std::min(line.rfind("/*"), end);
  if (end == line.size() || end == 0) return line.size();
  const std::size_t last = line.find_last_not_of(" \t", end - 1);
  return last == line.npos ? line.size() : last + 1;
}

std::size_t closingQuote(std::string_view line, std::size_t open) {
  const char quote = line[open];
  for (std::size_t at = open + 1; at < line.size(); ++at) {
    if (line[at] == '\\') {
      ++at;
    } else if (line[at] == quote) {
      return at;
    }
  }
  return line.npos;
}

bool isBareStatement(std::string_view line) {
  std::size_t at = 0;
  while (at < line.size() && (isName(line[at]) || line[at] == '.')) ++at;
  const std::size_t index = at > 0 && at < line.size() && line[at] == '[' ? line.find(']', at) : at;
  if (index != at && index != line.npos) at = index + 1;
  const char last = line.back();
  if (at == 0 || at == line.size() || last == ';' || last == '{' || last == ',') return false;
  if (line[at] == '(') return last == ')';
  at = skipBlanks(line, at);
  if (at + 1 < line.size() && (line[at] == '+' || line[at] == '-')) ++at;
  return at + 2 < line.size() && line[at] == '=' && isBlank(line[at + 1]);
}

bool isSelector(std::string_view line) {
  if (line.size() < 3 || (line.back() != '{' && line.back() != ',')) return false;
  if (line.find_first_of("()=;'\"<$@!&|") != line.npos) return false;
  const bool classOrId = line.front() == '.' || line.front() == '#';
  const bool nested =
      line.find(" .") != line.npos || line.find(" #") != line.npos || line.find(" > ") != line.npos;
  return (classOrId && isName(line[1])) || nested;
}

bool holdsPascalCall(std::string_view line) {
  for (std::size_t dot = line.find('.'); dot != line.npos; dot = line.find('.', dot + 1)) {
    if (dot + 1 >= line.size() || !isUpper(line[dot + 1])) continue;
    const std::size_t end = skipName(line, dot + 1);
    if (end < line.size() && line[end] == '(' && isLower(line[end - 1])) return true;
  }
  return false;
}

bool isForeign(std::string_view line) {
  return line.starts_with("$ ") || line.starts_with("> ") || line.starts_with("- ") ||
         line.starts_with("```") || line.starts_with("|") || line.starts_with("+---");
}

}  // namespace marbelot
