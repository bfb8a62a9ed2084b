#include "detection/tokens.h"

#include <algorithm>

#include "platform/ascii.h"

namespace marbelot::detection {
namespace {

constexpr std::size_t mostBlanks = 64;
constexpr std::size_t longestWord = 48;

bool isLetterAt(std::string_view text, std::size_t at, std::size_t& bytes) {
  if (at >= text.size()) return false;
  if (isAscii(text[at])) {
    bytes = 1;
    return isAlpha(text[at]);
  }
  const text::Scalar scalar = text::scalarAt(text, at);
  bytes = scalar.bytes;
  return text::isLetter(scalar.value);
}

// The bytes of an apostrophe, or of a hyphen when those join.
std::size_t joinerAt(std::string_view text, std::size_t at, Hyphens hyphens) {
  if (at >= text.size()) return 0;
  if (text[at] == '\'') return 1;
  if (text[at] == '-') return hyphens == Hyphens::join ? 1 : 0;
  return text.substr(at, 3) == "\u2019" ? 3 : 0;
}

std::size_t skipBlanks(std::string_view text, std::size_t at) {
  const std::size_t bound = at + mostBlanks;
  for (std::size_t blank = 0; at < bound && (blank = blankAt(text, at)) > 0;) at += blank;
  return at;
}

}  // namespace

Token tokenAt(std::string_view text, std::size_t at, Hyphens hyphens) {
  Token token;
  const std::size_t start = skipBlanks(text, at);
  token.spaced = start > at;
  token.range.start = start;
  if (start >= text.size()) return token;
  std::size_t end = start;
  std::size_t bytes = 0;
  if (isDigit(text[start])) {
    while (end < text.size() && isDigit(text[end]) && end - start <= longestWord) ++end;
    token.kind = Token::Kind::number;
    token.lower = text.substr(start, end - start);
  } else if (isLetterAt(text, start, bytes)) {
    bool ascii = isAscii(text[start]);
    token.capital =
        ascii ? isUpper(text[start]) : text::isUppercase(text::scalarAt(text, start).value);
    while (end - start <= longestWord) {
      while (end < text.size() && isAlpha(text[end])) ++end;
      const char after = end < text.size() ? text[end] : ' ';
      if (isAscii(after) && after != '\'' && after != '-') break;
      ascii = ascii && isAscii(after);
      if (isLetterAt(text, end, bytes)) {
        end += bytes;
      } else if (const std::size_t joiner = joinerAt(text, end, hyphens);
                 joiner > 0 && isLetterAt(text, end + joiner, bytes)) {
        end += joiner;
      } else {
        break;
      }
    }
    token.kind = Token::Kind::word;
    const std::string_view word = text.substr(start, end - start);
    if (ascii) {
      token.lower = word;
      for (char& c : token.lower) c = lower(c);
    } else {
      token.lower = text::lowercased(word);
    }
  } else if (text[start] == '\n' || text[start] == '\r') {
    end += text.substr(start, 2) == "\r\n" ? 2 : 1;
    end = skipBlanks(text, end);
    token.kind = Token::Kind::newline;
  } else {
    const text::Scalar scalar = text::scalarAt(text, start);
    token.kind = Token::Kind::symbol;
    token.symbol = scalar.value;
    end += scalar.bytes;
  }
  if (end - start > longestWord) token.kind = Token::Kind::end;
  token.range.length = end - start;
  return token;
}

std::size_t wordStart(std::string_view text, std::size_t end, std::size_t floor) {
  std::size_t start = end;
  while (start > floor && end - start <= longestWord) {
    if (isAscii(text[start - 1])) {
      const char c = text[start - 1];
      if (!isAlpha(c) && !(start < end && (c == '-' || c == '\''))) break;
      --start;
    } else {
      const text::Scalar scalar = text::scalarBefore(text, start);
      if (start - scalar.bytes < floor ||
          !(text::isLetter(scalar.value) || (start < end && scalar.value == 0x2019))) {
        break;
      }
      start -= scalar.bytes;
    }
  }
  while (start < end && !isAlpha(text[start]) && isAscii(text[start])) ++start;
  return end - start > longestWord ? end : start;
}

std::size_t blankAt(std::string_view text, std::size_t at) {
  if (at >= text.size()) return 0;
  if (isAscii(text[at])) return text[at] == ' ' || text[at] == '\t' ? 1 : 0;
  const text::Scalar scalar = text::scalarAt(text, at);
  return text::isBlank(scalar.value) ? scalar.bytes : 0;
}

std::size_t blankBefore(std::string_view text, std::size_t end) {
  if (end == 0) return 0;
  if (isAscii(text[end - 1])) return text[end - 1] == ' ' || text[end - 1] == '\t' ? 1 : 0;
  const text::Scalar scalar = text::scalarBefore(text, end);
  return text::isBlank(scalar.value) ? scalar.bytes : 0;
}

WordSet::WordSet(std::string_view words) {
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    if (end > 0) words_.emplace(words.substr(0, end));
    words.remove_prefix(std::min(end + 1, words.size()));
  }
}

int numberOf(std::string_view digits) {
  int value = 0;
  for (const char c : digits.substr(0, 9)) value = value * 10 + (c - '0');
  return value;
}

int twoDigits(std::string_view text, std::size_t at, int most) {
  if (!isDigit(byteAt(text, at)) || !isDigit(byteAt(text, at + 1)) ||
      isDigit(byteAt(text, at + 2))) {
    return -1;
  }
  const int value = numberOf(text.substr(at, 2));
  return value <= most ? value : -1;
}

}  // namespace marbelot::detection
