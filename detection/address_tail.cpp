#include "detection/address_tail.h"

#include <string>

#include "detection/address_words.h"
#include "detection/tokens.h"
#include "platform/ascii.h"

namespace marbelot::detection {
namespace {

constexpr int mostWords = 14;
constexpr int mostNumbers = 2;
constexpr std::size_t mostSeparators = 5;

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

// The end of the postcode if one starts at `at`, the state before it included; 0 for none.
std::size_t postcodeEnd(std::string_view text, std::size_t at) {
  const Token token = read(text, at);
  if (!token.isWord() || !token.capital || !isAscii(text[token.range.start])) return 0;
  const std::string_view rest = text.substr(token.range.start);
  if (const std::size_t length = ukPostcodeLength(rest)) return token.range.start + length;
  const bool state = isUpperWord(text, token) && token.range.length <= 3;
  if (state && isAustralianState(token.lower)) return codeNumberEnd(text, token.end(), 4);
  if (!(state && isCanadianProvince(token.lower)) && !isCanadianProvinceName(token.lower)) return 0;
  Token next = read(text, token.end());
  if (next.is(',')) next = read(text, next.end());
  const std::size_t length = canadianPostcodeLength(text.substr(next.range.start));
  return length > 0 ? next.range.start + length : 0;
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
  const bool shortCode = end == 0;
  if (shortCode) end = codeNumberEnd(text, at, 4);
  if (end == 0) return std::nullopt;
  const std::size_t town = townEnd(text, end);
  if (town == 0) return std::nullopt;
  return AddressTail{town, false, separators, shortCode};
}

std::optional<AddressTail> readAddressTail(std::string_view text, std::size_t at) {
  int words = 0;
  int numbers = 0;
  std::size_t separators = 0;
  bool afterUnit = false;
  std::size_t wordLength = 0;
  while (words <= mostWords) {
    const Token token = read(text, at);
    switch (token.kind) {
      case Token::Kind::word: {
        if (const std::size_t end = words + separators > 0 ? postcodeEnd(text, at) : 0) {
          return AddressTail{end, true, separators, false};
        }
        if (!token.capital && !isCityParticle(token.lower) && !isFrenchParticle(token.lower) &&
            token.lower != "of" && token.lower != "the" && token.lower != "and" &&
            !(words == 0 && frenchStreetType(token.lower) != StreetType::none) &&
            token.range.length > 1 && token.lower.find('\'') != 1) {
          return std::nullopt;
        }
        ++words;
        afterUnit = isUnitWord(token.lower);
        wordLength = token.range.length;
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
        if ((!afterUnit && !ordinal) || ++numbers > mostNumbers) return std::nullopt;
        at = glued ? next.end() : token.end();
        afterUnit = false;
        wordLength = 0;
        ++words;
        continue;
      }
      case Token::Kind::newline:
        if (++separators > mostSeparators) return std::nullopt;
        afterUnit = false;
        break;
      case Token::Kind::symbol:
        if (token.is(',')) {
          if (++separators > mostSeparators) return std::nullopt;
          afterUnit = false;
        } else if (token.is('#')) {
          afterUnit = true;
        } else if (!token.is('.') || token.spaced || wordLength == 0 || wordLength > 4) {
          // A full stop only closes abbreviations.
          return std::nullopt;
        }
        wordLength = 0;
        break;
      case Token::Kind::end:
        return std::nullopt;
    }
    at = token.end();
  }
  return std::nullopt;
}

std::size_t afterCountry(std::string_view text, std::size_t at) {
  Token token = read(text, at);
  std::size_t separators = 0;
  while ((token.is(',') || token.kind == Token::Kind::newline) && ++separators <= 2) {
    token = read(text, token.end());
  }
  if (!token.isWord() || !token.capital) return at;
  if (text.substr(token.range.start, 6) == "U.S.A.") return token.range.start + 6;
  const Token next = read(text, token.end());
  if (next.isWord() && isCountry(token.lower + '-' + next.lower)) return next.end();
  return isCountry(token.lower) ? token.end() : at;
}

}  // namespace marbelot::detection
