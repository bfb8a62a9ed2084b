#include "classification/terminal_test.h"

#include <algorithm>

#include "classification/code_lines.h"
#include "classification/command_words.h"
#include "classification/line_counts.h"
#include "classification/line_shapes.h"
#include "classification/operator_lines.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// After "$ " a price or a formula may stand, but hardly anything else that is not a command.
bool isDollarCommand(std::string_view rest) {
  return !rest.empty() && !isDigit(rest.front()) && rest.front() != '-' && rest.back() != '$';
}

// Behind the characters of words, and behind those in `others`.
std::size_t skipWord(std::string_view line, std::size_t at, std::string_view others) {
  while (at < line.size()) {
    const auto [scalar, bytes] = text::scalarAt(line, at);
    const bool other = isAscii(line[at]) && others.find(line[at]) != others.npos;
    if (!other && !text::isWordCharacter(scalar)) break;
    at += bytes;
  }
  return at;
}

std::size_t skipHost(std::string_view line, std::size_t at) { return skipWord(line, at, ".-"); }

// ^[\w.\-]+@[\w.\-]+:.*[$#%]\s
bool startsWithHostPrompt(std::string_view line) {
  const std::size_t user = skipHost(line, 0);
  if (user == 0 || user >= line.size() || line[user] != '@') return false;
  const std::size_t host = skipHost(line, user + 1);
  if (host == user + 1 || host >= line.size() || line[host] != ':') return false;
  for (std::size_t at = line.find_first_of("$#%", host); at != line.npos && at + 1 < line.size();
       at = line.find_first_of("$#%", at + 1)) {
    if (text::isBlankOrNewline(text::scalarAt(line, at + 1).value)) return true;
  }
  return false;
}

// ^PS [A-Za-z]:\\.*>
bool startsWithPowerShellPrompt(std::string_view line) {
  return line.size() > 6 && line.starts_with("PS ") && (isUpper(line[3]) || isLower(line[3])) &&
         line[4] == ':' && line[5] == '\\' && line.find('>') != line.npos;
}

// ^\w+Error:
bool startsWithErrorName(std::string_view line) {
  const std::size_t end = skipWord(line, 0, {});
  constexpr std::string_view error = "Error";
  return end > error.size() && end < line.size() && line[end] == ':' &&
         line.substr(0, end).ends_with(error);
}

bool endsAsCode(std::string_view line) {
  return std::string_view(",;{").find(line.back()) != std::string_view::npos;
}

// A label of C and a key of a table have nothing behind their colon, or end as code does.
bool startsAsFailure(std::string_view line) {
  for (const std::string_view start : {"fatal:", "error:", "warning:"}) {
    if (line.starts_with(start)) return line.size() > start.size() && !endsAsCode(line);
  }
  return startsWithErrorName(line) && !endsAsCode(line);
}

enum class Phrase { none, talkedAbout, quoted, printed };

bool isInQuotes(std::string_view before) {
  return std::count(before.begin(), before.end(), '"') % 2 == 1 || before.ends_with('\'') ||
         before.ends_with('(');
}

// The phrases of failing tools; in a sentence they are only talked about.
Phrase errorPhrase(std::string_view line) {
  constexpr std::string_view shortest = "Permission denied";
  constexpr std::size_t lookAt = 4096;
  constexpr std::ptrdiff_t fewGaps = 5;
  if (line.size() < shortest.size()) return Phrase::none;
  line = line.substr(0, lookAt);
  constexpr std::string_view traceback = "Traceback (most recent call last)";
  if (line.starts_with(traceback)) return Phrase::printed;
  if (line.find(traceback) != line.npos) return Phrase::quoted;
  for (const std::string_view phrase :
       {"command not found", "Permission denied", "No such file or directory"}) {
    const std::size_t at = line.find(phrase);
    if (at == line.npos) continue;
    const std::string_view before = line.substr(0, at), after = line.substr(at + phrase.size());
    const bool printed = before.empty() || before.ends_with(": ") || before.ends_with(" - ") ||
                         before.ends_with("] ") || before.ends_with(", ") ||
                         before.ends_with('(') || after.starts_with(':') ||
                         (after.empty() && std::count(before.begin(), before.end(), ' ') < fewGaps);
    if (!printed) return Phrase::talkedAbout;
    return isInQuotes(before) || endsAsCode(line) ? Phrase::quoted : Phrase::printed;
  }
  return Phrase::none;
}

enum class Behind { remark, word, command };

// A command named by an everyday word, and what it is told to do.
bool isEverydayOrder(const Words& words) {
  const std::string_view command = words[0];
  if (words.size() == 2 && command == "make") return true;
  if (command == "go") return isSubcommand(words[1]);
  if (command == "kill" || command == "sleep") return holdsTechnicalWord(words);
  return words.size() == 3 && command == "service" && isSubcommand(words[2]);
}

// The same of a command that is no everyday word; headings are made of its name, too.
bool isOrder(const Words& words) {
  const std::string_view second = words[1];
  return isTerse(words[0]) || isSubcommand(second) || holdsFileName(words) ||
         holdsTechnicalWord(words) || second.size() == 1 || second.starts_with('"') ||
         second.starts_with('\'');
}

// "of", "the" … between other words; an "a" at the end is a file.
bool talks(const Words& words) {
  for (std::size_t i = 1; i + 1 < words.size(); ++i) {
    if (isFunctionWord(words[i])) return true;
  }
  const std::string_view last = words[words.size() - 1];
  return words.size() > 1 && last.size() > 1 && isFunctionWord(last);
}

// What stands behind a mark that is a prompt, but that quotes and comments begin with, too.
Behind judgeBehindMark(char mark, std::string_view line) {
  constexpr std::size_t fewWords = 4;
  if (line.empty() || endsAsSentence(line) || line.back() == '{') return Behind::remark;
  if (isShellBlock(line)) return Behind::command;
  const Words words(line);
  const FirstWord first = judgeFirstWord(words[0]);
  if (first == FirstWord::unlikely) return Behind::remark;
  const bool known = first != FirstWord::possible;
  if (known && holdsShellWords(words)) return Behind::command;
  if (talks(words)) return Behind::remark;
  if (first == FirstWord::command && holdsOption(words)) return Behind::command;
  if (words.size() > fewWords) return Behind::remark;
  if (!known) {
    return holdsOption(words) || holdsOperator(words) ? Behind::command : Behind::remark;
  }
  if (words.size() == 1) return words[0].starts_with("./") ? Behind::command : Behind::word;
  // Comments that begin with "% " are rare beside the sessions of a shell that prompts so.
  if (mark == '%' && words.size() == 2) return Behind::command;
  if (isWrapper(words[0]) && judgeFirstWord(words[1]) == FirstWord::command) return Behind::command;
  const bool isOrdered = first == FirstWord::command ? isOrder(words) : isEverydayOrder(words);
  return isOrdered ? Behind::command : Behind::remark;
}

bool isPrompt(const MarkCounts& mark) {
  if (mark.beginsWithCommand) return true;
  if (mark.remarks > 0) return false;
  return mark.commands > 0 || mark.beginsWithWord;
}

// Compilers show a few lines of a source between what they say.
bool isToolOutput(const LineCounts& lines) {
  constexpr std::size_t fewest = 2;
  return lines.terminal.toolLines >= fewest && lines.terminal.toolLines * 4 >= lines.nonBlank;
}

}  // namespace

void TerminalReader::readBlank() {
  if (word_ == nullptr) return;
  // A heading stands alone.
  --word_->words;
  ++word_->remarks;
  word_ = nullptr;
}

TerminalLine TerminalReader::readMark(MarkCounts& mark, char c, std::string_view rest) {
  const bool first = isFirst_;
  isFirst_ = false;
  switch (judgeBehindMark(c, rest)) {
    case Behind::command:
      ++mark.commands;
      mark.beginsWithCommand = mark.beginsWithCommand || first;
      mark.showsFile = mark.showsFile || (first && showsFile(Words(rest)[0]));
      return TerminalLine::session;
    case Behind::word:
      ++mark.words;
      mark.beginsWithWord = mark.beginsWithWord || first;
      word_ = &mark;
      break;
    case Behind::remark:
      ++mark.remarks;
      break;
  }
  return c == '>' ? TerminalLine::quotation : TerminalLine::comment;
}

TerminalLine TerminalReader::read(std::string_view line, std::string_view trimmed, bool isCode) {
  word_ = nullptr;
  const char first = line.front();
  if (line.size() > 1 && line[1] == ' ') {
    const std::string_view rest = text::trimmedBlanks(line.substr(2));
    if (first == '#') return readMark(counts_.hash, first, rest);
    if (first == '%') return readMark(counts_.percent, first, rest);
    if (first == '>') return readMark(counts_.angle, first, rest);
    if (first == '$' && isDollarCommand(rest)) {
      ++counts_.prompts;
      return TerminalLine::session;
    }
  }
  isFirst_ = false;
  if (first == '>' && (line.size() == 1 || line[1] == '>')) return TerminalLine::quotation;
  constexpr std::size_t shortest = 4;  // no prompt, failure or command is shorter
  if (line.size() < shortest) return TerminalLine::none;
  if (startsWithHostPrompt(line) || startsWithPowerShellPrompt(line)) {
    ++counts_.prompts;
    return TerminalLine::session;
  }
  const Phrase phrase = errorPhrase(trimmed);
  const bool indented = isBlank(first);
  if (startsAsFailure(line) || (phrase == Phrase::printed && !indented)) {
    ++counts_.failures;
  } else if (phrase == Phrase::printed || phrase == Phrase::quoted) {
    ++counts_.mentions;
  } else if (isToolLine(trimmed)) {
    ++counts_.toolLines;
  } else if (isCommandLine(trimmed, isCode)) {
    ++counts_.commands;
  } else {
    return TerminalLine::none;
  }
  return TerminalLine::session;
}

bool showsSession(const LineCounts& lines) {
  const TerminalCounts& counts = lines.terminal;
  // A source may begin with a comment that says how to install what it needs.
  return counts.prompts + counts.failures > 0 || counts.hash.showsFile ||
         counts.percent.beginsWithCommand || counts.angle.beginsWithCommand || isToolOutput(lines);
}

bool looksLikeTerminal(const LineCounts& lines) {
  const TerminalCounts& counts = lines.terminal;
  if (showsSession(lines) || counts.mentions > 0) return true;
  if (isPrompt(counts.hash) || isPrompt(counts.percent) || isPrompt(counts.angle)) return true;
  if (counts.commands == 0 || looksLikeCode(lines)) return false;
  return counts.commands * 2 >= lines.nonBlank - counts.hash.remarks &&
         lines.prose <= counts.commands;
}

}  // namespace marbelot
