// The text that dates are read from, with the words that its reader knows.
#pragma once

#include <cstddef>
#include <string_view>

#include "detection/date_words.h"
#include "detection/tokens.h"
#include "platform/ascii.h"

namespace marbelot::detection {

struct DateSource {
  std::string_view text;
  const DateWords& words;

  Token token(std::size_t at) const { return tokenAt(text, at); }
  Token after(const Token& token) const { return tokenAt(text, token.end()); }
  char byte(std::size_t at) const { return byteAt(text, at); }
  std::size_t pastBlank(std::size_t at) const { return at + blankAt(text, at); }
  DateWord meaning(const Token& token) const {
    return token.isWord() ? words.find(token.lower) : DateWord{};
  }
  bool isA(const Token& token, DateWord::Kind kind) const { return meaning(token).kind == kind; }

  // The token behind a comma, if the token is one.
  Token pastComma(const Token& token) const { return token.is(',') ? after(token) : token; }

  // Whether something ends at `end`: neither letters nor more digits of a version follow.
  bool stopsAt(std::size_t end) const {
    const char next = byte(end);
    if (isAlnum(next) || next == '_' || next == '%') return false;
    return !((next == '.' || next == '-' || next == '/' || next == ',') && isDigit(byte(end + 1)));
  }
};

inline bool isDash(const Token& token) { return token.is('-') || token.is(U'–') || token.is(U'—'); }

}  // namespace marbelot::detection
