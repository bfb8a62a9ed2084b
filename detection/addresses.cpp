// Postal addresses. Every one has digits, so those are where the parser starts; the house number
// stands before the street (English, French), behind it (German), or is that of a post box.
#include <string>

#include "detection/address_tail.h"
#include "detection/address_words.h"
#include "detection/finder.h"
#include "detection/scan.h"
#include "detection/tokens.h"

namespace marbelot::detection {
namespace {

constexpr std::size_t kLongestHouseNumber = 5;

struct Street {
  std::size_t end = 0;
  std::size_t name_end = 0;  // of all the words that may be the street's
  StreetType type = StreetType::none;
  bool complete = false;  // nothing follows that could belong to the name
  bool title = false;     // holds a word that is in headings rather than in names of streets
};

class AddressFinder final : public TriggerFinder {
 public:
  using TriggerFinder::TriggerFinder;

 private:
  std::size_t nextTrigger(std::size_t from, std::size_t end) const override {
    return findByte<DigitClass>(text(), from, end);
  }
  std::optional<Detection> examine(std::size_t digit) override;

  std::optional<Detection> boxAddress(std::size_t digit) const;
  std::optional<Detection> germanAddress(std::size_t digit) const;
  std::optional<Detection> numberFirstAddress(std::size_t digit) const;

  std::size_t houseNumberEnd(std::size_t digit) const;
  std::size_t germanStreetStart(std::size_t word, bool name_follows) const;
  Street englishStreet(std::size_t at) const;
  Street frenchStreet(std::size_t at) const;
  std::size_t unitStart(std::size_t number) const;
  std::size_t loneTownEnd(std::size_t street_end) const;

  Token read(std::size_t at) const { return tokenAt(text(), at, Hyphens::join); }
  char byteAt(std::size_t at) const { return at < text().size() ? text()[at] : '\0'; }
  Detection address(std::size_t start, std::size_t end) const;
};

std::optional<Detection> AddressFinder::examine(std::size_t digit) {
  std::size_t end = digit;
  while (end < text().size() && isDigit(text()[end])) ++end;
  skipTo(end);
  if (end - digit > kLongestHouseNumber) return std::nullopt;
  if (digit > floor()) {
    const char before = text()[digit - 1];
    const char word_end = digit > 1 ? text()[digit - 2] : ' ';
    const bool no_break = before == '\xA0' && word_end == '\xC2';
    if ((before == ' ' && (isAlpha(word_end) || word_end == '.')) || no_break) {
      if (auto found = germanAddress(digit)) return found;
      if (auto found = boxAddress(digit)) return found;
    }
    constexpr std::string_view kGlue = ".,:;/-_$#%&@+*='\\";
    if (isAlnum(before) || kGlue.find(before) != std::string_view::npos) return std::nullopt;
    if (!isAscii(before) && !no_break && text::isLetter(text::scalarBefore(text(), digit).value)) {
      return std::nullopt;
    }
  }
  return numberFirstAddress(digit);
}

// "12", "221B", "10-12", "12/34a"; 0 when the digits are something else, like "5th" or "3.5".
std::size_t AddressFinder::houseNumberEnd(std::size_t digit) const {
  std::size_t at = digit;
  for (int part = 0; part < 2; ++part) {
    const std::size_t start = at;
    while (isDigit(byteAt(at))) ++at;
    if (at == start || at - start > kLongestHouseNumber) return 0;
    if (isAlpha(byteAt(at)) && !isAlpha(byteAt(at + 1)) && isAscii(byteAt(at + 1))) ++at;
    const bool dash = text().substr(at, 3) == "\u2013";
    const std::size_t mark = dash ? 3 : byteAt(at) == '-' || byteAt(at) == '/' ? 1 : 0;
    if (mark == 0 || !isDigit(byteAt(at + mark))) break;
    if (part == 1) return 0;  // 3/5/2026
    at += mark;
  }
  return isAlnum(byteAt(at)) || byteAt(at) == '_' ? 0 : at;
}

// The start of a name of up to four words that ends before `word`: capitalised ones, and particles
// between them. `word` itself when nothing of the kind is there.
std::size_t AddressFinder::germanStreetStart(std::size_t word, bool name_follows) const {
  std::size_t start = word;
  std::size_t at = word;
  for (int words = 0; words < 3 && at > floor() && text()[at - 1] == ' '; ++words) {
    const std::size_t begin = wordStart(text(), at - 1, floor());
    if (begin == at - 1) break;
    const Token token = read(begin);
    const bool particle = isGermanParticle(token.lower);
    if (!token.capital && !particle) break;
    // In front of a street's own name only "Am" and its like still belong to it.
    if (name_follows && !particle) break;
    at = begin;
    if (token.capital) start = begin;
  }
  return start;
}

std::optional<Detection> AddressFinder::germanAddress(std::size_t digit) const {
  std::size_t word_end = digit - (text()[digit - 1] == ' ' ? 1 : 2);
  const bool dotted = word_end > floor() && text()[word_end - 1] == '.';
  word_end -= dotted;
  const std::size_t word = wordStart(text(), word_end, floor());
  // Nouns and names: in plain prose that is all that is looked at.
  if (word == word_end || isLower(text()[word])) return std::nullopt;
  std::size_t end = houseNumberEnd(digit);
  if (end == 0) return std::nullopt;
  if (byteAt(end) == ' ' && isLower(byteAt(end + 1)) && !isAlnum(byteAt(end + 2)) &&
      isAscii(byteAt(end + 2)) && byteAt(end + 2) != '\'') {
    end += 2;  // "12 a"
  }
  const Token token = read(word);
  bool standalone = false;
  StreetType type = germanStreetType(token.lower, standalone);
  const bool abbreviated = token.lower.ends_with("str");
  if (abbreviated != dotted && (abbreviated || dotted)) type = StreetType::none;
  if (type == StreetType::none && byteAt(end) != ',' && byteAt(end) != '\n') return std::nullopt;
  const std::optional<AddressTail> town = readTown(text(), end);
  if (type == StreetType::none && !(town && !dotted && town->separators > 0)) return std::nullopt;
  if (!token.capital && !standalone) return std::nullopt;
  const bool named = type != StreetType::none && !standalone;
  const std::size_t start = germanStreetStart(word, named);
  if (standalone && start == word) return std::nullopt;
  if (town && !(town->short_code && type == StreetType::none)) {
    return address(start, afterCountry(text(), town->end));
  }
  if (type != StreetType::clear || !read(start).capital) return std::nullopt;
  const char after = byteAt(end);
  const bool more = (after == '.' || after == ',' || after == ':') && isDigit(byteAt(end + 1));
  return more ? std::nullopt : std::optional(address(start, end));
}

std::optional<Detection> AddressFinder::boxAddress(std::size_t digit) const {
  // The last letters of "box", "bag", "postfach" and "bp".
  constexpr std::string_view kLastLetters = "xXgGhHpP";
  if (digit < floor() + 3 || kLastLetters.find(text()[digit - 2]) == std::string_view::npos) {
    return std::nullopt;
  }
  const std::size_t from = digit - std::min<std::size_t>(digit - floor(), 12);
  std::string before(text().substr(from, digit - from));
  for (char& c : before) c = lower(c);
  std::size_t length = 0;
  for (const std::string_view intro :
       {"po box ", "p.o. box ", "p.o.box ", "gpo box ", "locked bag ", "postfach ", "bp "}) {
    if (before.ends_with(intro)) length = std::max(length, intro.size());
  }
  if (length == 0) return std::nullopt;
  const std::size_t start = digit - length;
  if (start > 0 && isAlnum(text()[start - 1])) return std::nullopt;
  std::size_t end = digit;
  // German boxes are written in pairs: "12 34 56".
  while (isDigit(byteAt(end)) ||
         (byteAt(end) == ' ' && end - digit < 8 && isDigit(byteAt(end + 1)) &&
          isDigit(byteAt(end + 2)) && !isDigit(byteAt(end + 3)))) {
    ++end;
  }
  std::optional<AddressTail> tail = readTown(text(), end);
  if (!tail) tail = readAddressTail(text(), end);
  if (!tail) return std::nullopt;
  return address(start, afterCountry(text(), tail->end));
}

// The words of "Main Street NW, Apt 4" up to the unit.
Street AddressFinder::englishStreet(std::size_t at) const {
  Street street;
  int words = 0;
  std::size_t end = at;
  while (words < 6) {
    Token token = read(end);
    const Token next = token.isNumber() ? read(token.end()) : Token{};
    const bool ordinal = next.isWord() && !next.spaced && next.range.length == 2;
    const bool small = words > 0 && (token.lower == "of" || token.lower == "the");
    if (!(token.isWord() && (token.capital || small)) && !ordinal) break;
    if (!token.spaced) break;
    street.title = street.title || isNoStreetName(token.lower);
    end = ordinal ? next.end() : token.end();
    const StreetType type =
        words > 0 && token.capital ? englishStreetType(token.lower) : StreetType::none;
    // "St." and "E." are abbreviated; the stop of a sentence follows a longer word.
    if (byteAt(end) == '.' && token.range.length <= 4) ++end;
    ++words;
    if (type != StreetType::none) {
      street.type = std::max(street.type, type);
      street.end = end;
      street.complete = words <= 4;
    } else if (street.end != 0 && isDirection(token.lower)) {
      street.end = end;
    } else {
      street.complete = false;
    }
  }
  street.name_end = end;
  return street;
}

// The words of "rue de la Paix"; the type comes first and may be in lower case.
Street AddressFinder::frenchStreet(std::size_t at) const {
  Street street;
  Token token = read(at);
  if (token.is(',')) token = read(token.end());
  if (token.lower == "bis" || token.lower == "ter") token = read(token.end());
  if (token.is(',')) token = read(token.end());
  if (!token.isWord()) return street;
  const StreetType type = frenchStreetType(token.lower);
  if (type == StreetType::none) return street;
  for (int words = 0; words < 8; ++words) {
    token = read(token.end());
    // "rue du 8 mai 1945".
    const bool date = token.isNumber() && token.range.length <= 2 && words > 0;
    const Token month = date ? read(token.end()) : Token{};
    const Token year = month.isWord() ? read(month.end()) : Token{};
    if (year.isNumber() && year.range.length == 4) {
      token = year;
      street.end = token.end();
    } else if (token.isWord() && (token.capital || token.lower.find('\'') == 1)) {
      street.end = token.end();
    } else if (!(token.isWord() && isFrenchParticle(token.lower)) && !date) {
      break;
    }
    if (!token.spaced) break;
  }
  if (street.end != 0) street.type = type;
  street.complete = true;
  return street;
}

// The start of "Flat 3, " before the house number, or the number itself.
std::size_t AddressFinder::unitStart(std::size_t number) const {
  std::size_t at = number;
  const auto back = [&](auto accepts) {
    const std::size_t from = at;
    while (at > floor() && number - at < 24 && accepts(text()[at - 1])) --at;
    return at < from;
  };
  const auto isBlank = [](char c) { return c == ' '; };
  if (!back(isBlank)) return number;
  // "Unit 4/12 George Street".
  const std::size_t unit = wordStart(text(), at, floor());
  if (unit < at && read(unit).capital && isUnitWord(read(unit).lower)) return unit;
  if (at > floor() && text()[at - 1] == ',') --at;
  if (!back(isAlnum) || !back(isBlank)) return number;
  const std::size_t word = wordStart(text(), at, floor());
  return word < at && read(word).capital && isUnitWord(read(word).lower) ? word : number;
}

// The end of ", Springfield" behind a street when the line ends there.
std::size_t AddressFinder::loneTownEnd(std::size_t street_end) const {
  Token token = read(street_end);
  if (!token.is(',')) return street_end;
  std::size_t end = token.end();
  for (int words = 0;; ++words) {
    token = read(end);
    if (!token.isWord() || !token.capital || words == 3) break;
    end = token.end();
  }
  const bool stops = token.kind == Token::Kind::end || token.kind == Token::Kind::newline ||
                     token.is('.') || token.is(')');
  return stops && end > street_end + 1 ? end : street_end;
}

std::optional<Detection> AddressFinder::numberFirstAddress(std::size_t digit) const {
  const std::size_t number_end = houseNumberEnd(digit);
  if (number_end == 0) return std::nullopt;
  const char after = byteAt(number_end);
  if (after != ' ' && after != ',' && after != '\t' && isAscii(after)) return std::nullopt;
  // In lower case only the French types of streets follow a number.
  const char next = byteAt(number_end + 1);
  constexpr std::string_view kFrenchInitials = "rabicpqfetvs";
  if (isLower(next) && kFrenchInitials.find(next) == std::string_view::npos) return std::nullopt;
  // Nor does a number follow one, but for "5th".
  if (after == ' ' && isDigit(next)) {
    std::size_t end = number_end + 1;
    while (isDigit(byteAt(end)) && end - number_end <= kLongestHouseNumber) ++end;
    if (!isAlpha(byteAt(end))) return std::nullopt;
  }
  Street street = frenchStreet(number_end);
  const bool french = street.type != StreetType::none;
  if (!french) {
    const Token first = read(number_end);
    const bool ordinal = first.isNumber() && isAlpha(byteAt(first.end()));
    if (!first.spaced || !((first.isWord() && first.capital) || ordinal)) return std::nullopt;
    street = englishStreet(number_end);
  }
  const bool typed = street.type != StreetType::none;
  // Without a type, "1 Broadway" must at least be a line of its own.
  if (const Token stop = read(street.name_end);
      !typed && !stop.is(',') && stop.kind != Token::Kind::newline) {
    return std::nullopt;
  }
  // A French street's number may have "bis" and a comma behind it; the words begin after those.
  const std::optional<AddressTail> tail =
      french ? readAddressTail(text(), street.end) : readAddressTail(text(), number_end);
  const std::optional<AddressTail> town =
      french && !tail ? readTown(text(), street.end) : std::nullopt;
  if (town) return address(unitStart(digit), afterCountry(text(), town->end));
  if (tail) {
    const bool postcode = tail->code == AddressCode::postcode;
    const bool state = tail->code == AddressCode::state;
    const bool credible = french || (typed && postcode) ||
                          (typed && state && tail->separators > 0) ||
                          (postcode && tail->separators > 0);
    const bool heading = street.title && street.type != StreetType::clear;
    if (credible && !heading) return address(unitStart(digit), afterCountry(text(), tail->end));
  }
  // A street alone: a year before "Wall Street" is no house.
  const int number = numberOf(text().substr(digit, number_end - digit).substr(0, 4));
  const bool year = number_end - digit == 4 && number >= 1900 && number < 2100;
  if (street.type != StreetType::clear || !street.complete || street.title || year) {
    return std::nullopt;
  }
  std::size_t end = loneTownEnd(street.end);
  if (text()[end - 1] == '.') --end;
  return address(unitStart(digit), end);
}

Detection AddressFinder::address(std::size_t start, std::size_t end) const {
  // The line ends become commas, blanks are single.
  std::string line;
  for (const char c : text().substr(start, end - start)) {
    if (c == '\n' || c == '\r') {
      while (!line.empty() && (line.back() == ' ' || line.back() == ',')) line.pop_back();
      line += ", ";
    } else if (c != ' ' && c != '\t') {
      line += c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  return {DetectionKind::address, {start, end - start}, std::move(line)};
}

}  // namespace

std::unique_ptr<Finder> makeAddressFinder(std::string_view text) {
  return std::make_unique<AddressFinder>(text);
}

}  // namespace marbelot::detection
