// Postal addresses. Every one has digits, so those are where the parser starts; the house number
// stands before the street (English, French), behind it (German), or is that of a post box.
#include <string>

#include "detection/address_tail.h"
#include "detection/address_words.h"
#include "detection/boxes.h"
#include "detection/finder.h"
#include "detection/scan.h"
#include "detection/tokens.h"
#include "detection/us_address.h"

namespace marbelot::detection {
namespace {

constexpr std::size_t longestHouseNumber = 5;

struct Street {
  std::size_t end = 0;      // with its type
  std::size_t nameEnd = 0;  // of all the words that may be the street's
  StreetType type = StreetType::none;
  bool title = false;  // holds a word that is in headings rather than in names of streets
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
  std::size_t gridNumberEnd(std::size_t direction) const;
  std::size_t germanStreetStart(std::size_t word, bool nameFollows) const;
  Street englishStreet(std::size_t at) const;
  Street frenchStreet(std::size_t at) const;
  std::size_t unitStart(std::size_t number) const;
  std::optional<Detection> spelledAddress(std::size_t zip, std::size_t zipEnd) const;

  Token read(std::size_t at) const { return tokenAt(text(), at, Hyphens::join); }
  char byteAt(std::size_t at) const { return marbelot::byteAt(text(), at); }
  Detection address(std::size_t start, std::size_t end) const;
};

std::optional<Detection> AddressFinder::examine(std::size_t digit) {
  std::size_t end = digit;
  while (end < text().size() && isDigit(text()[end])) ++end;
  skipTo(end);
  if (end - digit > longestHouseNumber) return std::nullopt;
  std::size_t start = digit;
  if (digit > floor()) {
    const char before = text()[digit - 1];
    const char wordEnd = digit > 1 ? text()[digit - 2] : ' ';
    const bool noBreak = before == '\xA0' && wordEnd == '\xC2';
    if ((before == ' ' && (isAlpha(wordEnd) || wordEnd == '.')) || noBreak) {
      if (auto found = germanAddress(digit)) return found;
      if (auto found = boxAddress(digit)) return found;
      if (auto found = spelledAddress(digit, end)) return found;
    }
    if (text()[digit - 1] == '#') {
      if (auto found = boxAddress(digit)) return found;
    }
    // "W204N11912": numbers in the grid of a county.
    constexpr std::string_view directions = "NSEW";
    if (directions.find(before) != std::string_view::npos && !isAlnum(wordEnd)) --start;
    constexpr std::string_view glue = ".,:;/-_$#%&@+*='\\";
    if (start < digit) return numberFirstAddress(start);
    if (isAlnum(before) || glue.find(before) != std::string_view::npos) return std::nullopt;
    if (!isAscii(before) && !noBreak && text::isLetter(text::scalarBefore(text(), digit).value)) {
      return std::nullopt;
    }
  }
  return numberFirstAddress(start);
}

// The end of "204N11912" behind a direction; 0 when it is something else.
std::size_t AddressFinder::gridNumberEnd(std::size_t direction) const {
  std::size_t at = direction;
  std::size_t digits = 0;
  for (int parts = 0; parts < 2; ++parts) {
    if (std::string_view("NSEW").find(byteAt(at)) == std::string_view::npos) break;
    for (++at; isDigit(byteAt(at)); ++at) ++digits;
  }
  return digits < 3 || isAlnum(byteAt(at)) ? 0 : at;
}

// "12", "221B", "123-A", "10-12", "12/34a", "12 1/2"; 0 when the digits are something else, like
// "5th" or "3.5".
std::size_t AddressFinder::houseNumberEnd(std::size_t digit) const {
  if (!isDigit(byteAt(digit))) return gridNumberEnd(digit);
  std::size_t at = digit;
  for (int part = 0; part < 2; ++part) {
    const std::size_t start = at;
    while (isDigit(byteAt(at))) ++at;
    if (at == start || at - start > longestHouseNumber) return 0;
    const std::size_t letter = byteAt(at) == '-' ? at + 1 : at;
    if (isAlpha(byteAt(letter)) && !isAlpha(byteAt(letter + 1)) && isAscii(byteAt(letter + 1))) {
      at = letter + 1;
    }
    const bool dash = text().substr(at, 3) == "\u2013";
    const std::size_t mark = dash ? 3 : byteAt(at) == '-' || byteAt(at) == '/' ? 1 : 0;
    if (mark == 0 || !isDigit(byteAt(at + mark))) break;
    if (part == 1) return 0;  // 3/5/2026
    at += mark;
  }
  if (text().substr(at, 4) == " 1/2") at += 4;
  if (const std::string_view half = "½"; text().substr(at, half.size()) == half) {
    at += half.size();
  }
  return isAlnum(byteAt(at)) || byteAt(at) == '_' ? 0 : at;
}

// The start of a name of up to four words that ends before `word`: capitalised ones, and particles
// between them. `word` itself when nothing of the kind is there.
std::size_t AddressFinder::germanStreetStart(std::size_t word, bool nameFollows) const {
  std::size_t start = word;
  std::size_t at = word;
  for (int words = 0; words < 3 && at > floor() && text()[at - 1] == ' '; ++words) {
    const std::size_t begin = wordStart(text(), at - 1, floor());
    if (begin == at - 1) break;
    const Token token = read(begin);
    const bool particle = isGermanParticle(token.lower);
    if (!token.capital && !particle) break;
    // In front of a street's own name only "Am" and its like still belong to it.
    if (nameFollows && !particle) break;
    at = begin;
    if (token.capital) start = begin;
  }
  return start;
}

std::optional<Detection> AddressFinder::germanAddress(std::size_t digit) const {
  std::size_t wordEnd = digit - (text()[digit - 1] == ' ' ? 1 : 2);
  const bool dotted = wordEnd > floor() && text()[wordEnd - 1] == '.';
  wordEnd -= dotted;
  const std::size_t word = wordStart(text(), wordEnd, floor());
  // Nouns and names: in plain prose that is all that is looked at.
  if (word == wordEnd || isLower(text()[word])) return std::nullopt;
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
  if (town && !(town->shortCode && type == StreetType::none)) {
    return address(start, afterCountry(text(), town->end));
  }
  if (type != StreetType::clear || !read(start).capital) return std::nullopt;
  const char after = byteAt(end);
  const bool more = (after == '.' || after == ',' || after == ':') && isDigit(byteAt(end + 1));
  return more ? std::nullopt : std::optional(address(start, end));
}

std::optional<Detection> AddressFinder::boxAddress(std::size_t digit) const {
  const Range box = boxAt(text(), digit, floor());
  if (box.length == 0) return std::nullopt;
  const UsAddress american = readUsAddress(text(), digit, box.end(), UsStart::box);
  if (american.whole > 0) return address(box.start, afterCountry(text(), american.whole));
  std::optional<AddressTail> tail = readTown(text(), box.end());
  if (!tail) tail = readAddressTail(text(), box.end());
  if (!tail) return std::nullopt;
  return address(box.start, afterCountry(text(), tail->end));
}

// The words of "Main Street" up to what is no word of a name.
Street AddressFinder::englishStreet(std::size_t at) const {
  Street street;
  street.nameEnd = at;
  for (int words = 0; words < 6; ++words) {
    const Token token = read(street.nameEnd);
    const Token next = token.isNumber() ? read(token.end()) : Token{};
    const bool ordinal = next.isWord() && !next.spaced && next.range.length == 2;
    const bool small = words > 0 && (token.lower == "of" || token.lower == "the");
    if (!(token.isWord() && (token.capital || small)) && !ordinal) break;
    if (!token.spaced) break;
    street.title = street.title || isNoStreetName(token.lower);
    street.nameEnd = ordinal ? next.end() : token.end();
    if (words > 0 && token.capital) {
      street.type = std::max(street.type, englishStreetType(token.lower));
    }
    // "St." and "E." are abbreviated; the stop of a sentence follows a longer word.
    if (byteAt(street.nameEnd) == '.' && token.range.length <= 4) ++street.nameEnd;
  }
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

std::optional<Detection> AddressFinder::numberFirstAddress(std::size_t digit) const {
  const std::size_t numberEnd = houseNumberEnd(digit);
  if (numberEnd == 0) return std::nullopt;
  const char after = byteAt(numberEnd);
  if (after != ' ' && after != ',' && after != '\t' && isAscii(after)) return std::nullopt;
  // In lower case only the French types of streets follow a number, or all is in lower case.
  const char next = byteAt(numberEnd + 1);
  constexpr std::string_view frenchInitials = "rabicpqfetvs";
  const bool small = isLower(next);
  if (small && frenchInitials.find(next) == std::string_view::npos &&
      !hasZipNear(text(), numberEnd)) {
    return std::nullopt;
  }
  // Nor does a number follow one, but for "5th".
  if (after == ' ' && isDigit(next)) {
    std::size_t end = numberEnd + 1;
    while (isDigit(byteAt(end)) && end - numberEnd <= longestHouseNumber) ++end;
    if (!isAlpha(byteAt(end))) return std::nullopt;
  }
  Street street = frenchStreet(numberEnd);
  if (street.type != StreetType::none) {
    std::optional<AddressTail> tail = readAddressTail(text(), street.end);
    if (!tail) tail = readTown(text(), street.end);
    if (tail) return address(unitStart(digit), afterCountry(text(), tail->end));
  }
  const Token first = read(numberEnd);
  const bool ordinal = first.isNumber() && isAlpha(byteAt(first.end()));
  if (!first.spaced || !(first.isWord() || ordinal)) return std::nullopt;
  if (small && !hasZipNear(text(), numberEnd)) return std::nullopt;
  const UsAddress american = readUsAddress(text(), digit, numberEnd, UsStart::number);
  if (american.whole > 0) {
    return address(unitStart(digit), afterCountry(text(), american.whole));
  }
  if (small) return std::nullopt;
  street = englishStreet(numberEnd);
  const bool typed = street.type != StreetType::none;
  // Without a type, "1 Broadway" must at least be a line of its own.
  const Token stop = read(street.nameEnd);
  const bool line = stop.is(',') || stop.kind == Token::Kind::newline;
  if (const auto tail = typed || line ? readAddressTail(text(), numberEnd) : std::nullopt;
      tail && tail->postcode && (typed || tail->separators > 0) &&
      !(street.title && street.type != StreetType::clear)) {
    return address(unitStart(digit), afterCountry(text(), tail->end));
  }
  if (american.street == 0) return std::nullopt;
  return address(unitStart(digit), american.street);
}

// "One Liberty Plaza, New York, NY 10006", found by its ZIP code.
std::optional<Detection> AddressFinder::spelledAddress(std::size_t zip, std::size_t zipEnd) const {
  if (zipEnd - zip != 5 || zip < floor() + 3 || !isUpper(text()[zip - 2])) return std::nullopt;
  constexpr std::size_t farthest = 110;
  static const WordSet numbers("one two three four five six seven eight nine ten");
  const std::size_t bound = std::max(floor(), zip - std::min(zip, farthest));
  const std::string_view before = text().substr(bound, zip - bound);
  for (std::size_t at = before.size(); at-- > 0;) {
    const bool start = isUpper(before[at]) && (at == 0 || !isAlnum(before[at - 1]));
    if (!start || std::string_view("OTFSEN").find(before[at]) == std::string_view::npos) continue;
    const Token word = read(bound + at);
    if (!numbers.has(word.lower)) continue;
    const UsAddress found = readUsAddress(text(), word.range.start, word.end(), UsStart::spelled);
    if (found.whole > zip) return address(word.range.start, afterCountry(text(), found.whole));
  }
  return std::nullopt;
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

std::unique_ptr<Finder> makeAddressFinder(std::string_view text, const DetectionContext&) {
  return std::make_unique<AddressFinder>(text);
}

}  // namespace marbelot::detection
