#include "classification/terminal_test.h"

#include <algorithm>
#include <array>

#include "classification/code_lines.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// First words that make a line a command. Sorted; the second list holds those that are everyday
// words too, which need more to be believed.
constexpr std::string_view kCommands[] = {"ansible",    "apk",      "apt",       "apt-get",
                                          "awk",        "aws",      "az",        "bash",
                                          "bower",      "brew",     "bundle",    "bzip2",
                                          "cargo",      "cd",       "chgrp",     "chmod",
                                          "chown",      "clang",    "cmake",     "conda",
                                          "cp",         "crontab",  "curl",      "dd",
                                          "deno",       "df",       "diff",      "dig",
                                          "dir",        "dnf",      "docker",    "docker-compose",
                                          "dotnet",     "dpkg",     "du",        "egrep",
                                          "emacs",      "env",      "ffmpeg",    "flutter",
                                          "g++",        "gcc",      "gcloud",    "gdb",
                                          "gem",        "gh",       "git",       "gpg",
                                          "gradle",     "grep",     "gunzip",    "gzip",
                                          "helm",       "hg",       "htop",      "ifconfig",
                                          "ip",         "iptables", "java",      "javac",
                                          "journalctl", "jq",       "kubectl",   "ldd",
                                          "ln",         "ls",       "lsblk",     "lsof",
                                          "lspci",      "mkdir",    "mv",        "mvn",
                                          "mysql",      "nano",     "netstat",   "nginx",
                                          "nmap",       "node",     "nohup",     "npm",
                                          "npx",        "openssl",  "pacman",    "perl",
                                          "php",        "pip",      "pip3",      "pkill",
                                          "pnpm",       "printf",   "ps",        "psql",
                                          "pwd",        "python",   "python3",   "rails",
                                          "rake",       "rm",       "rmdir",     "rsync",
                                          "ruby",       "rustc",    "scp",       "sed",
                                          "sftp",       "sh",       "snap",      "sqlite3",
                                          "ssh",        "stat",     "strace",    "su",
                                          "sudo",       "svn",      "swift",     "systemctl",
                                          "tar",        "tcpdump",  "terraform", "tmux",
                                          "traceroute", "tsc",      "ufw",       "umount",
                                          "uname",      "unzip",    "uptime",    "useradd",
                                          "vagrant",    "vi",       "vim",       "virtualenv",
                                          "wc",         "wget",     "whoami",    "xargs",
                                          "xcodebuild", "xcrun",    "xz",        "yarn",
                                          "yum",        "zcat",     "zip",       "zsh"};
constexpr std::string_view kEverydayCommands[] = {
    "cat",  "clear", "code",  "cut",    "date",    "echo",    "exit", "export", "fetch",  "file",
    "find", "free",  "go",    "head",   "history", "install", "join", "kill",   "less",   "make",
    "man",  "more",  "mount", "open",   "paste",   "ping",    "read", "reboot", "screen", "service",
    "set",  "sleep", "sort",  "source", "split",   "start",   "tail", "tee",    "test",   "time",
    "top",  "touch", "tr",    "type",   "unset",   "watch",   "which"};
static_assert(std::is_sorted(std::begin(kCommands), std::end(kCommands)));
static_assert(std::is_sorted(std::begin(kEverydayCommands), std::end(kEverydayCommands)));

constexpr std::string_view kPathStarts[] = {"./", "../", "~/", "/usr/", "/bin/", "/opt/", "/home/"};

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWord(char c) {
  return isLower(c) || isUpper(c) || isDigit(c) || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// No command's name is longer than what this looks at.
std::string_view firstWord(std::string_view line) {
  constexpr std::size_t kLookAt = 100;
  line = line.substr(0, kLookAt);
  const auto end = std::find_if(line.begin(), line.end(), isBlank);
  return line.substr(0, static_cast<std::size_t>(end - line.begin()));
}

// NAME=value, as it may stand before a command.
bool isAssignment(std::string_view word) {
  const std::size_t equals = word.find('=');
  return equals != word.npos && equals > 0 &&
         std::all_of(word.begin(), word.begin() + static_cast<std::ptrdiff_t>(equals),
                     [](char c) { return isUpper(c) || isDigit(c) || c == '_'; });
}

enum class FirstWord { unlikely, possible, everyday, command };

FirstWord judgeFirstWord(std::string_view word) {
  if (word.empty() || static_cast<unsigned char>(word.front()) >= 0x80) return FirstWord::unlikely;
  if (std::binary_search(std::begin(kCommands), std::end(kCommands), word)) {
    return FirstWord::command;
  }
  if (std::binary_search(std::begin(kEverydayCommands), std::end(kEverydayCommands), word)) {
    return FirstWord::everyday;
  }
  for (const std::string_view start : kPathStarts) {
    if (word.starts_with(start)) return FirstWord::command;
  }
  if (isAssignment(word)) return FirstWord::everyday;
  const bool plain = std::all_of(word.begin(), word.end(), [](char c) {
    return isLower(c) || isDigit(c) || c == '-' || c == '_' || c == '.';
  });
  return plain && !word.empty() && isLower(word.front()) && word.back() != '.'
             ? FirstWord::possible
             : FirstWord::unlikely;
}

// How much the shell operators of a line speak for a command: an operator that prose uses too,
// as the stroke in "and/or", counts half of one that stands as in a shell.
int operatorPoints(std::string_view line) {
  constexpr int kEnough = 12;
  constexpr std::size_t kLookAt = 1000;  // a longer line has shown its operators by then
  line = line.substr(0, kLookAt);
  int points = 0;
  const auto at = [line](std::size_t i) { return i < line.size() ? line[i] : ' '; };
  for (std::size_t i = 0; i < line.size() && points < kEnough; ++i) {
    const char before = i > 0 ? line[i - 1] : ' ', after = at(i + 1);
    switch (line[i]) {
      case '-':
        if (isBlank(before) && (isWord(after) || (after == '-' && isWord(at(i + 2))))) points += 2;
        break;
      case '/':
        if ((isBlank(before) || before == '.' || before == '~') && isWord(after)) {
          points += 2;
        } else if (isWord(before) && isWord(after)) {
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

bool endsAsSentence(std::string_view line) {
  const char last = line.back();
  if (last == ',' || last == '!' || last == '?' || last == ':') return true;
  return last == '.' && line.size() > 1 && isWord(line[line.size() - 2]);
}

// One word, a path and nothing else: copied to name a file. A blank in it is behind a backslash.
bool isPathAlone(std::string_view line) {
  constexpr std::size_t kLongestPath = 4096;
  if (line.size() > kLongestPath || line.find_first_of("|&;<>$`(\t") != line.npos) return false;
  for (std::size_t at = line.find(' '); at != line.npos; at = line.find(' ', at + 1)) {
    if (at == 0 || line[at - 1] != '\\') return false;
  }
  return std::any_of(std::begin(kPathStarts), std::end(kPathStarts),
                     [line](std::string_view start) { return line.starts_with(start); });
}

bool isCommandLine(std::string_view line) {
  constexpr std::size_t kShortest = 4;  // "a -b"
  if (line.size() < kShortest || endsAsSentence(line) || isPathAlone(line)) return false;
  const int needed = [word = judgeFirstWord(firstWord(line))] {
    switch (word) {
      case FirstWord::command:
        return 1;
      case FirstWord::everyday:
        return 2;
      case FirstWord::possible:
        return 4;
      case FirstWord::unlikely:
        break;
    }
    return 100;
  }();
  return needed < 100 && operatorPoints(line) >= needed;
}

// The first words of a line, as far as it is looked at.
class Words {
 public:
  explicit Words(std::string_view line) {
    constexpr std::size_t kLookAt = 1000;
    line = line.substr(0, kLookAt);
    while (count_ < words_.size() && !line.empty()) {
      const std::string_view word = line.substr(0, line.find(' '));
      line.remove_prefix(std::min(line.size(), word.size() + 1));
      if (!word.empty()) words_[count_++] = word;
    }
  }
  std::size_t size() const { return count_; }
  std::string_view operator[](std::size_t i) const { return i < count_ ? words_[i] : ""; }
  template <typename Test>
  bool anyBehindFirst(Test test) const {
    return count_ > 1 && std::any_of(words_.begin() + 1, words_.begin() + count_, test);
  }

 private:
  std::array<std::string_view, 24> words_;
  std::size_t count_ = 0;
};

template <std::size_t size>
bool isOneOf(std::string_view word, const std::string_view (&words)[size]) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

bool isFileName(std::string_view word) {
  const std::size_t dot = word.rfind('.');
  return dot != word.npos && dot > 0 && dot + 1 < word.size() && isWord(word[dot - 1]) &&
         isWord(word[dot + 1]) && word.find_first_of("@:") == word.npos;
}

bool isPath(std::string_view word) {
  if (word == "." || word == ".." || word == "~" || word == "/") return true;
  if (word.starts_with('/')) return word.size() > 1 && isWord(word[1]);
  return word.starts_with("./") || word.starts_with("../") || word.starts_with("~/");
}

bool isOption(std::string_view word) {
  if (word.starts_with("--")) word.remove_prefix(1);
  return word.size() > 1 && word.front() == '-' && isWord(word[1]);
}

// Whether the line holds what sentences do not: an operator between its words, or an option or a
// path close behind the first.
bool holdsShellWords(const Words& words) {
  constexpr std::string_view kOperators[] = {"|", "||", "&&", ">>", "<<", "2>&1", "&>", "\\"};
  constexpr std::size_t kFewWords = 3;
  const auto isOperand = [](std::string_view word) {
    return isOption(word) || isPath(word) || isAssignment(word);
  };
  if (isOperand(words[1]) || (words.size() == 2 && isFileName(words[1]))) return true;
  if (words.size() <= kFewWords && words.anyBehindFirst(isOperand)) return true;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string_view word = words[i], next = words[i + 1];
    if (isOneOf(word, kOperators) || word.starts_with("$(") || word.starts_with("${")) return true;
    if ((word == ">" || word == "<") && (isPath(next) || isFileName(next))) return true;
  }
  return false;
}

// Commands named after things people write about, and what they are told to do.
bool isTalkedAbout(std::string_view command) {
  constexpr std::string_view kThings[] = {
      "bash",   "bower", "brew", "bundle", "cargo", "diff", "dig",  "emacs", "flutter", "gem",
      "gradle", "helm",  "ip",   "java",   "nano",  "node", "perl", "php",   "python",  "rails",
      "rake",   "ruby",  "snap", "stat",   "swift", "tar",  "yarn", "zip"};
  return isOneOf(command, kThings);
}
bool isSubcommand(std::string_view word) {
  constexpr std::string_view kSubcommands[] = {
      "add",      "addr",    "build", "check",  "clean",     "config", "create", "deploy",
      "exec",     "get",     "init",  "info",   "install",   "link",   "list",   "new",
      "outdated", "package", "push",  "remove", "route",     "run",    "search", "server",
      "start",    "status",  "test",  "tool",   "uninstall", "update", "upgrade"};
  return isOneOf(word, kSubcommands);
}

// Words that sentences are held together by.
bool isFunctionWord(std::string_view word) {
  constexpr std::string_view kWords[] = {
      "a",    "also", "and", "are", "as",   "at",   "be",   "but",  "can",   "did", "does",
      "for",  "from", "had", "has", "have", "i",    "in",   "is",   "it",    "me",  "my",
      "not",  "of",   "on",  "or",  "our",  "out",  "so",   "sure", "that",  "the", "then",
      "this", "to",   "up",  "was", "we",   "were", "will", "with", "works", "you", "your"};
  return isOneOf(word, kWords);
}

enum class Behind { text, everydayWord, command };

// What stands behind a mark that is a prompt, but that quotes and comments begin with, too.
Behind judgeBehindMark(char mark, std::string_view line) {
  if (line.empty() || endsAsSentence(line)) return Behind::text;
  const Words words(line);
  const bool shell = holdsShellWords(words);
  const bool talks = words.anyBehindFirst(isFunctionWord);
  FirstWord first = judgeFirstWord(words[0]);
  if (first == FirstWord::command && isTalkedAbout(words[0]) && !isSubcommand(words[1])) {
    first = FirstWord::everyday;
  }
  switch (first) {
    case FirstWord::command:
      return shell || (words.size() <= 4 && !talks) ? Behind::command : Behind::text;
    case FirstWord::everyday: {
      // Comments that begin with "% " are rare beside the sessions of a shell that prompts so.
      const bool short_command = mark == '%' && words.size() <= 2 && !talks;
      return shell || short_command ? Behind::command : Behind::everydayWord;
    }
    case FirstWord::possible:
      return shell && operatorPoints(line) >= 4 ? Behind::command : Behind::text;
    case FirstWord::unlikely:
      break;
  }
  return Behind::text;
}

// After "$ " a price may stand, but hardly anything else that is not a command.
bool isDollarCommand(std::string_view rest) {
  return !rest.empty() && !isDigit(rest.front()) && !rest.starts_with("-");
}

bool isHostCharacter(char c) { return isWord(c) || c == '.' || c == '-'; }

std::size_t skipHost(std::string_view line, std::size_t at) {
  while (at < line.size() && isHostCharacter(line[at])) ++at;
  return at;
}

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
  std::size_t end = 0;
  while (end < line.size() && isWord(line[end])) ++end;
  constexpr std::string_view kError = "Error";
  return end > kError.size() && end < line.size() && line[end] == ':' &&
         line.substr(0, end).ends_with(kError);
}

constexpr std::string_view kErrorStarts[] = {"fatal:", "error:", "warning:"};

bool startsAsError(std::string_view line) {
  return std::any_of(std::begin(kErrorStarts), std::end(kErrorStarts),
                     [line](std::string_view start) { return line.starts_with(start); });
}

// An error behind the place it was found at, as compilers print it: "a.c:12:5: error: …".
bool startsWithLocatedError(std::string_view line) {
  const std::string_view place = firstWord(line);
  if (place.size() < 4 || place.back() != ':' || place.size() + 1 >= line.size()) return false;
  const std::size_t digit = place.find_first_of("0123456789");
  if (digit == place.npos || digit == 0) return false;
  if (line.starts_with("fatal ")) return true;
  std::string_view rest = line.substr(place.size() + 1);
  if (rest.starts_with("fatal ")) rest.remove_prefix(6);
  return startsAsError(rest);
}

// The phrases of failing tools; in a sentence they are only talked about.
bool holdsErrorPhrase(std::string_view line) {
  constexpr std::string_view kShortest = "Permission denied";
  if (line.size() < kShortest.size()) return false;
  if (line.find("Traceback (most recent call last)") != line.npos) return true;
  for (const std::string_view phrase :
       {"command not found", "Permission denied", "No such file or directory"}) {
    const std::size_t at = line.find(phrase);
    if (at == line.npos) continue;
    const std::string_view before = line.substr(0, at), after = line.substr(at + phrase.size());
    if (before.empty() || before.ends_with(": ") || before.ends_with(" - ") ||
        before.ends_with("(") || after.starts_with(":")) {
      return true;
    }
    if (after.empty() && std::count(before.begin(), before.end(), ' ') < 5) return true;
  }
  return false;
}

}  // namespace

TerminalLine terminalLine(std::string_view line, std::string_view trimmed, bool isCode) {
  const char first = line.front();
  if (line.size() > 1 && line[1] == ' ') {
    const std::string_view rest = text::trimmedBlanks(line.substr(2));
    if (first == '$' && isDollarCommand(rest)) return TerminalLine::prompt;
    if (first == '#' || first == '%' || first == '>') {
      switch (judgeBehindMark(first, rest)) {
        case Behind::command:
          return TerminalLine::mark;
        case Behind::everydayWord:
          return first == '>' ? TerminalLine::everydayQuote : TerminalLine::everydayHash;
        case Behind::text:
          return first == '>' ? TerminalLine::quote : TerminalLine::hash;
      }
    }
  }
  if (first == '>' && (line.size() == 1 || line[1] == '>')) return TerminalLine::quote;
  constexpr std::size_t kShortest = 4;  // no prompt, error or command is shorter
  if (line.size() < kShortest) return TerminalLine::none;
  if (startsWithHostPrompt(line) || startsWithPowerShellPrompt(line)) return TerminalLine::prompt;
  if (startsAsError(line) || startsWithErrorName(line) || startsWithLocatedError(line) ||
      holdsErrorPhrase(line)) {
    return TerminalLine::error;
  }
  // What ends find's -exec is no end of a statement.
  const bool mayBeCommand = !isCode || trimmed.ends_with("\\;");
  return mayBeCommand && isCommandLine(trimmed) ? TerminalLine::command : TerminalLine::none;
}

bool looksLikeTerminal(const LineCounts& lines) {
  // A manual that shows a command now and then is no session; one that errs at length still is.
  constexpr std::size_t kProseForOne = 4;
  const std::size_t sure = lines.prompts + lines.errors;
  if (sure > 0) return (sure + lines.marks + lines.everyday) * kProseForOne >= lines.prose;
  if (lines.marks > 0) {
    // Lines that a quote or a comment could hold, too: a session begins with one.
    return lines.marks * (lines.beginsWithMark ? kProseForOne : 1) >= lines.prose;
  }
  if (lines.commands == 0 || looksLikeCode(lines)) return false;
  return lines.commands * 2 >= lines.nonBlank - lines.hashes && lines.prose <= lines.commands;
}

}  // namespace marbelot
