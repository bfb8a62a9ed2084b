#include "detection/address_tail.h"

#include <string>

#include "detection/address_words.h"
#include "detection/scan.h"
#include "detection/tokens.h"

namespace marbelot::detection {
namespace {

constexpr int kMostWords = 14;
constexpr int kMostNumbers = 2;
constexpr std::size_t kMostSeparators = 5;

Token read(std::string_view text, std::size_t at) { return tokenAt(text, at, Hyphens::join); }

bool isUpperWord(std::string_view text, const Token& token) {
  for (std::size_t i = token.range.start; i < token.end(); ++i) {
    if (!isUpper(text[i])) return false;
  }
  return token.isWord();
}

// The end of a number of `digits` digits at `at`, blanks (and one comma) skipped; 0 for none.
std::size_t codeNumberEnd(std::string_view text, std::size_t at, std::size_t digits) {
  Token token = read(text, at);
  if (token.is(',')) token = read(text, token.end());
  if (!token.isNumber() || token.range.length != digits) return 0;
  const std::size_t end = token.end();
  if (end < text.size() && (isAlpha(text[end]) || text[end] == '_' || text[end] == '%')) return 0;
  if (end + 1 < text.size() && (text[end] == '.' || text[end] == ',') && isDigit(text[end + 1])) {
    return 0;
  }
  return end;
}

std::size_t zipEnd(std::string_view text, std::size_t at) {
  const std::size_t end = codeNumberEnd(text, at, 5);
  if (end == 0 || end + 5 > text.size() || text[end] != '-') return end;
  const std::size_t plus_four = codeNumberEnd(text, end + 1, 4);
  return plus_four == end + 5 ? plus_four : end;
}

// The end of a town's name at `at`: "Frankfurt am Main", "Paris Cedex 08"; 0 for none.
std::size_t townEnd(std::string_view text, std::size_t at) {
  std::size_t end = 0;
  bool cedex = false;
  for (int words = 0; words < 5; ++words) {
    const Token token = read(text, at);
    if (cedex && token.isNumber() && token.range.length <= 2) return token.end();
    if (!token.isWord() || (end == 0 && !token.capital)) break;
    if (!token.capital && !isCityParticle(token.lower)) break;
    bool standalone = false;
    if (end != 0 &&
        (!token.spaced || germanStreetType(token.lower, standalone) == StreetType::clear)) {
      break;
    }
    cedex = token.lower == "cedex";
    at = token.end();
    if (token.capital) end = at;
    if (token.lower == "st" && at < text.size() && text[at] == '.') ++at;
  }
  return end;
}

// Reads the code if one starts at `at`.
std::optional<AddressTail> codeAt(std::string_view text, std::size_t at, bool after_comma,
                                  std::size_t separators) {
  const Token token = read(text, at);
  if (!token.isWord() || !token.capital || !isAscii(text[token.range.start])) return std::nullopt;
  const auto postcode = [](std::size_t end) { return AddressTail{end, AddressCode::postcode}; };
  const std::string_view rest = text.substr(token.range.start);
  if (const std::size_t length = ukPostcodeLength(rest)) {
    return postcode(token.range.start + length);
  }
  const std::size_t end = token.end();
  std::size_t state_end = 0;
  bool named = false;
  if (isUpperWord(text, token) && token.range.length <= 3) {
    if (token.range.length == 2 && isUsState(token.lower)) state_end = end;
    if (isAustralianState(token.lower)) {
      if (const std::size_t code = codeNumberEnd(text, end, 4)) return postcode(code);
    }
    if (isCanadianProvince(token.lower)) {
      Token next = read(text, end);
      if (next.is(',')) next = read(text, next.end());
      if (const std::size_t length = canadianPostcodeLength(text.substr(next.range.start))) {
        return postcode(next.range.start + length);
      }
    }
  } else if (rest.starts_with("D.C.")) {
    state_end = token.range.start + 4;
  } else if (isUsStateName(token.lower)) {
    state_end = end;
    named = true;
  } else if (const Token next = startsUsStateName(token.lower) ? read(text, end) : Token{};
             next.isWord() && isUsStateName(token.lower + '-' + next.lower)) {
    state_end = next.end();
    named = true;
  }
  if (state_end == 0) return std::nullopt;
  if (const std::size_t zip = zipEnd(text, state_end)) return postcode(zip);
  // "IN" and "OR" in a title are no states; "Springfield, IL" is one.
  if (!after_comma || read(text, state_end).isWord()) return std::nullopt;
  // "Washington" right behind the street is the town, so that the state is still to come.
  if (named && separators < 2) return std::nullopt;
  return AddressTail{state_end, AddressCode::state};
}

}  // namespace

std::optional<AddressTail> readTown(std::string_view text, std::size_t at) {
  Token token = read(text, at);
  std::size_t separators = 0;
  while (token.is(',') || token.kind == Token::Kind::newline) {
    if (++separators > 2) return std::nullopt;
    at = token.end();
    token = read(text, at);
  }
  // "D-10115", "F-75002".
  if (token.isWord() && token.range.length <= 2 && isUpperWord(text, token) &&
      token.end() < text.size() && text[token.end()] == '-') {
    at = token.end() + 1;
    token = read(text, at);
  }
  if (!token.isNumber() || token.range.length > 5) return std::nullopt;
  std::size_t end = codeNumberEnd(text, at, 5);
  const bool short_code = end == 0;
  if (short_code) end = codeNumberEnd(text, at, 4);
  if (end == 0) return std::nullopt;
  const std::size_t town = townEnd(text, end);
  if (town == 0) return std::nullopt;
  return AddressTail{town, AddressCode::town, separators, short_code};
}

std::optional<AddressTail> readAddressTail(std::string_view text, std::size_t at) {
  int words = 0;
  int numbers = 0;
  std::size_t separators = 0;
  bool after_comma = false;
  bool after_unit = false;
  std::size_t word_length = 0;
  std::optional<AddressTail> state;
  while (words <= kMostWords) {
    const Token token = read(text, at);
    switch (token.kind) {
      case Token::Kind::word: {
        if (words > 0 || separators > 0) {
          if (auto tail = codeAt(text, at, after_comma, separators)) {
            tail->separators = separators;
            // "New York, New York 10001": a code that is yet to come says more.
            const bool may_go_on = tail->code == AddressCode::state && !isUpperWord(text, token);
            if (!may_go_on || state) return tail;
            state = tail;
          }
        }
        if (!token.capital && !isCityParticle(token.lower) && !isFrenchParticle(token.lower) &&
            token.lower != "of" && token.lower != "the" && token.lower != "and" &&
            !(words == 0 && frenchStreetType(token.lower) != StreetType::none) &&
            token.range.length > 1 && token.lower.find('\'') != 1) {
          return state;
        }
        ++words;
        after_unit = isUnitWord(token.lower);
        word_length = token.range.length;
        break;
      }
      case Token::Kind::number: {
        if (separators > 0 || words > 1) {
          if (auto tail = readTown(text, at)) {
            tail->separators = separators;
            return tail;
          }
        }
        const Token next = read(text, token.end());
        const bool glued = next.isWord() && !next.spaced;
        const bool ordinal = glued && next.range.length == 2;
        if ((!after_unit && !ordinal) || ++numbers > kMostNumbers) return state;
        at = glued ? next.end() : token.end();
        after_unit = after_comma = false;
        word_length = 0;
        ++words;
        continue;
      }
      case Token::Kind::newline:
        if (++separators > kMostSeparators) return state;
        after_unit = false;
        break;
      case Token::Kind::symbol:
        if (token.is(',')) {
          if (++separators > kMostSeparators) return state;
          after_unit = false;
        } else if (token.is('#')) {
          after_unit = true;
        } else if (!token.is('.') || token.spaced || word_length == 0 || word_length > 4) {
          // A full stop only closes abbreviations.
          return state;
        }
        word_length = 0;
        break;
      case Token::Kind::end:
        return state;
    }
    after_comma = token.is(',') || (after_comma && token.kind == Token::Kind::newline);
    at = token.end();
  }
  return state;
}

std::size_t afterCountry(std::string_view text, std::size_t at) {
  Token token = read(text, at);
  std::size_t separators = 0;
  while ((token.is(',') || token.kind == Token::Kind::newline) && ++separators <= 2) {
    token = read(text, token.end());
  }
  if (!token.isWord() || !token.capital) return at;
  const Token next = read(text, token.end());
  if (next.isWord() && isCountry(token.lower + '-' + next.lower)) return next.end();
  return isCountry(token.lower) ? token.end() : at;
}

}  // namespace marbelot::detection
