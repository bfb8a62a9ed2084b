#include "classification/operator_lines.h"

#include <algorithm>

#include "classification/command_words.h"
#include "classification/line_shapes.h"

namespace marbelot {
namespace {

// How much the shell operators of a line speak for a command: an operator that prose uses too,
// as the stroke in "and/or", counts half of one that stands as in a shell.
int operatorPoints(std::string_view line) {
  constexpr int enough = 12;
  constexpr std::size_t lookAt = 1000;  // a longer line has shown its operators by then
  line = line.substr(0, lookAt);
  int points = 0;
  const auto at = [line](std::size_t i) { return i < line.size() ? line[i] : ' '; };
  for (std::size_t i = 0; i < line.size() && points < enough; ++i) {
    const char before = i > 0 ? line[i - 1] : ' ', after = at(i + 1);
    switch (line[i]) {
      case '-':
        if (isBlank(before) && (isName(after) || (after == '-' && isName(at(i + 2))))) points += 2;
        break;
      case '/':
        if ((isBlank(before) || before == '.' || before == '~') && isName(after)) {
          points += 2;
        } else if (isName(before) && isName(after)) {
          points += 1;
        }
        break;
      case '|':
        if (isBlank(before) || after == '|') points += 2;
        break;
      case '>':
        if (isBlank(before) || isDigit(before) || before == '>') points += 1;
        break;
      case '&':
        if (after == '&') points += 2;
        break;
      case '~':
        if (isBlank(before) && (after == '/' || isBlank(after))) points += 2;
        break;
      case '$':
        if (after == '(') points += 2;
        break;
      case ';':
        if (isBlank(after) && i + 1 < line.size()) points += 1;
        break;
      default:
        break;
    }
  }
  return points;
}

// One word, a path and nothing else: copied to name a file. A blank in it is behind a backslash.
bool isPathAlone(std::string_view line) {
  constexpr std::size_t longestPath = 4096;
  if (line.size() > longestPath || !startsAsPath(line)) return false;
  if (line.find_first_of("|&;<>$`(\t") != line.npos) return false;
  for (std::size_t at = line.find(' '); at != line.npos; at = line.find(' ', at + 1)) {
    if (at == 0 || line[at - 1] != '\\') return false;
  }
  return true;
}

bool endsStatement(std::string_view line) {
  return line.back() == ';' || line.back() == '{' || line.back() == '}';
}

// No command's name is longer than what this looks at.
std::string_view firstWord(std::string_view line) {
  constexpr std::size_t lookAt = 100;
  line = line.substr(0, lookAt);
  return line.substr(0, line.find_first_of(" \t"));
}

// The name of the tool that speaks: "make[1]:" and "/usr/bin/ld:" as "make" and "/usr/bin/ld".
std::string_view speaker(std::string_view word) {
  if (word.size() < 2 || word.back() != ':') return word;
  word.remove_suffix(1);
  return word.substr(0, word.find('['));
}

// "src/main.c:12:5: …": a path, and a line of the file. A link has a host and a port.
bool startsWithPlace(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == line.npos || colon + 1 >= line.size() || !isDigit(line[colon + 1])) return false;
  const std::string_view path = line.substr(0, colon);
  const bool isPath = path.find('/') != path.npos && path.find(' ') == path.npos;
  const std::size_t end = line.find_first_not_of("0123456789:", colon);
  return isPath && (end == line.npos || line[end - 1] == ':' || isBlank(line[end]));
}

// A numbered line of a source, or marks below it.
bool isGutterLine(std::string_view line) {
  if (line.front() != '|' && !isDigit(line.front())) return false;
  const std::size_t number = line.find_first_not_of("0123456789");
  if (number == line.npos || number > 6) return false;
  const std::size_t bar = skipBlanks(line, number);
  if (bar >= line.size() || line[bar] != '|') return false;
  if (number > 0) return bar + 1 == line.size() || isBlank(line[bar + 1]);
  const std::size_t mark = line.find_first_not_of("| _", bar);
  return mark != line.npos && (line[mark] == '^' || line[mark] == '~');
}

}  // namespace

bool endsAsSentence(std::string_view line) {
  const char last = line.back();
  if (last == ',' || last == '!' || last == '?' || last == ':') return true;
  return last == '.' && line.size() > 1 && isName(line[line.size() - 2]);
}

bool isShellBlock(std::string_view line) {
  return (line.starts_with("for ") || line.starts_with("while ") || line.starts_with("if ")) &&
         (line.find("; do ") != line.npos || line.find("; then ") != line.npos);
}

bool isCommandLine(std::string_view line, bool isCode) {
  constexpr std::size_t shortest = 4;  // "a -b"
  if (line.size() < shortest || endsAsSentence(line)) return false;
  if (isShellBlock(line)) return true;
  const bool endsFind = line.ends_with("\\;");  // its -exec, not a statement
  if (isCode && !endsFind && endsStatement(line)) return false;
  const FirstWord first = judgeFirstWord(speaker(firstWord(line)));
  if (first == FirstWord::unlikely || isPathAlone(line)) return false;
  if (isCode && !endsFind && first != FirstWord::command) return false;
  const int needed = first == FirstWord::command ? 1 : first == FirstWord::everyday ? 2 : 4;
  return operatorPoints(line) >= needed + (isCode ? 1 : 0);
}

bool isToolLine(std::string_view line) {
  return isGutterLine(line) || startsWithPlace(line) || line.starts_with("--> ");
}

}  // namespace marbelot
