#include "classification/language_pieces.h"

#include <algorithm>
#include <array>

#include "classification/line_reader.h"
#include "classification/terminal_test.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// Of what a page is made, in lower case.
constexpr std::array<std::string_view, 48> kPageTags = {
    "a",     "abbr",  "b",  "blockquote", "body",   "br",      "button",   "code",   "dd",    "div",
    "dl",    "dt",    "em", "font",       "form",   "frame",   "frameset", "h1",     "h2",    "h3",
    "h4",    "head",  "hr", "html",       "i",      "iframe",  "img",      "input",  "label", "li",
    "nav",   "ol",    "p",  "pre",        "script", "section", "span",     "strong", "style", "svg",
    "table", "tbody", "td", "textarea",   "th",     "thead",   "tr",       "ul"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view withoutLeadingBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t");
  return start == text.npos ? std::string_view() : text.substr(start);
}

// The length of the string literal that `text` begins with; 0 if it does not.
std::size_t stringLength(std::string_view text) {
  if (!text.starts_with('"')) return 0;
  for (std::size_t at = 1; at < text.size(); ++at) {
    if (text[at] == '\\') {
      ++at;
    } else if (text[at] == '"') {
      return at + 1;
    }
  }
  return 0;
}

std::size_t numberLength(std::string_view text) {
  const bool begins = !text.empty() && (isDigit(text.front()) || text.front() == '-');
  return begins ? std::min(text.find_first_not_of("0123456789+-.eE"), text.size()) : 0;
}

enum class JsonLine { other, closed, open, closer };  // open: only a closer may follow

// Reads strings, numbers, words and marks, of which none may stand right behind its like.
JsonLine jsonLine(std::string_view line, bool& hasKey) {
  bool afterValue = false;
  const bool closes = line.front() == '}' || line.front() == ']';
  while (!(line = withoutLeadingBlanks(line)).empty()) {
    const char c = line.front();
    std::size_t length = stringLength(line);
    if (length == 0) length = numberLength(line);
    for (const std::string_view word : {"true", "false", "null"}) {
      if (line.starts_with(word)) length = word.size();
    }
    if (length > 0) {
      if (afterValue) return JsonLine::other;
      afterValue = true;
      const std::string_view rest = withoutLeadingBlanks(line.substr(length));
      hasKey = hasKey || (c == '"' && rest.starts_with(':'));
    } else if (c == '}' || c == ']') {
      length = 1;
      afterValue = true;
    } else if (c == '{' || c == '[' || c == ',' || (c == ':' && afterValue)) {
      length = 1;
      afterValue = false;
    } else {
      return JsonLine::other;
    }
    line.remove_prefix(length);
  }
  if (!afterValue) return closes ? JsonLine::closer : JsonLine::closed;
  return closes ? JsonLine::closer : JsonLine::open;
}

}  // namespace

bool isJsonPiece(std::string_view text) {
  bool hasKey = false;
  bool open = false;
  std::size_t lines = 0;
  LineReader reader(text);
  while (const auto line = reader.next()) {
    const std::string_view trimmed = text::trimmedBlanks(*line);
    if (trimmed.empty()) continue;
    const JsonLine kind = jsonLine(trimmed, hasKey);
    if (kind == JsonLine::other || (open && kind != JsonLine::closer)) return false;
    open = kind == JsonLine::open;
    ++lines;
  }
  return hasKey && lines > 1;
}

bool holdsPageTag(std::string_view text) {
  constexpr std::size_t kLongest = 10;
  for (std::size_t at = text.find('<'); at != text.npos; at = text.find('<', at + 1)) {
    std::size_t start = at + 1;
    if (start < text.size() && text[start] == '/') ++start;
    std::array<char, kLongest> name{};
    std::size_t length = 0;
    for (; length < kLongest && start + length < text.size(); ++length) {
      const char c = text[start + length];
      if ((c < 'a' || c > 'z') && (c < 'A' || c > 'Z') && !isDigit(c)) break;
      name[length] = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    const std::string_view tag(name.data(), length);
    if (std::binary_search(kPageTags.begin(), kPageTags.end(), tag)) return true;
  }
  return false;
}

std::optional<Language> interpreted(std::string_view text) {
  constexpr struct {
    std::string_view program;
    Language language;
  } kPrograms[] = {
      {"bash", Language::shell},      {"zsh", Language::shell}, {"ksh", Language::shell},
      {"dash", Language::shell},      {"sh", Language::shell},  {"python", Language::python},
      {"node", Language::javaScript}, {"ruby", Language::ruby}, {"php", Language::php}};
  if (!text.starts_with("#!")) return std::nullopt;
  std::string_view line = *LineReader(text).next();
  line = withoutLeadingBlanks(line.substr(2));
  if (!line.starts_with('/')) return std::nullopt;
  constexpr std::string_view kEnv = "/usr/bin/env ";
  line = line.starts_with(kEnv) ? line.substr(kEnv.size()) : line.substr(0, line.find(' '));
  line = line.substr(line.rfind('/') + 1);
  for (const auto& [program, language] : kPrograms) {
    if (line.starts_with(program)) return language;
  }
  return std::nullopt;
}

bool holdsPrompt(std::string_view text) {
  LineReader reader(text);
  while (const auto line = reader.next()) {
    const std::string_view trimmed = text::trimmedBlanks(*line);
    if (trimmed.empty()) continue;
    if (!trimmed.starts_with('#') && terminalLine(*line, trimmed, false) == TerminalLine::prompt) {
      return true;
    }
  }
  return false;
}

}  // namespace marbelot
