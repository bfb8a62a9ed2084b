#include "detection/us_address.h"

#include <algorithm>
#include <string>

#include "detection/address_tail.h"
#include "detection/address_words.h"
#include "detection/scan.h"
#include "detection/tokens.h"
#include "detection/us_words.h"

namespace marbelot::detection {
namespace {

constexpr int mostWords = 16;
constexpr int mostSeparators = 5;

// Of the everyday words that streets end in, those that a number and a name rarely precede
// otherwise.
bool isUsualStreet(const std::string& word) {
  static const WordSet words(
      "drive dr court ct place pl square sq terrace ter terr circle cir trail trl way loop highway "
      "hwy crescent cres close mews gardens gdns grove heights hts");
  return words.has(word);
}

// One walk over the words of an address. What has been passed decides how much more is needed.
class Walk {
 public:
  Walk(std::string_view text, std::size_t at, UsStart kind) : text_(text), at_(at), kind_(kind) {
    if (kind == UsStart::box) typed_ = clear_ = true;
  }

  // The end of the address, with town, state or code; 0 for none.
  std::size_t wholeEnd() {
    while (words_ <= mostWords && step()) {
    }
    return best_;
  }

  // The end of the street and its units, if that is all there is: "5 Main Street".
  std::size_t streetEnd() const {
    constexpr int mostStreetWords = 5;
    if (!typed_ || street_title_ || street_lower_ || type_at_ > mostStreetWords) return 0;
    // In "9 Wall Street Journal stories" the street is part of a name.
    const Token next = read(street_end_);
    return next.isWord() && next.capital ? 0 : street_end_;
  }
  bool isClear() const { return clear_; }
  bool isUsual() const { return clear_ || usual_; }

 private:
  bool step();
  bool takeWord(const Token& token);
  bool takeNumber(const Token& token);
  bool takeSymbol(const Token& token);
  bool takeUnit(const Token& token, UnitWord unit);
  bool takeState();
  bool takeZip();
  bool accepts(const State& state, bool zip) const;

  Token read(std::size_t at) const { return tokenAt(text_, at, Hyphens::join); }
  bool endsLine(std::size_t at) const {
    const Token next = read(at);
    return next.kind == Token::Kind::end ? at >= text_.size() || next.range.start >= text_.size()
                                         : next.kind == Token::Kind::newline || next.is('.') ||
                                               next.is(',') || next.is(')') || next.is(';');
  }

  std::string_view text_;
  std::size_t at_;
  UsStart kind_;
  std::size_t best_ = 0;
  std::size_t street_end_ = 0;  // with the street's type and what belongs to it
  std::size_t word_length_ = 0;
  int words_ = 0;
  int street_words_ = 0;  // before the first separator
  int town_words_ = 0;    // since the street's type or the first separator
  int separators_ = 0;
  bool typed_ = false;  // the street names its type
  bool clear_ = false;
  bool usual_ = false;  // one that may stand alone on a line
  bool title_ = false;
  bool lower_ = false;      // words in lower case that are no particles
  bool road_ = false;       // a road's number may follow
  bool direction_ = false;  // the last word is one
  int type_at_ = 0;         // how many words the street has
  bool street_title_ = false;
  bool street_lower_ = false;
};

// Whether what has been passed makes an address with this state, and a ZIP code behind it.
bool Walk::accepts(const State& state, bool zip) const {
  const bool heading = title_ && !clear_;
  if (heading || street_words_ == 0) return kind_ == UsStart::box && zip;
  if (lower_ && !(typed_ && zip)) return false;
  if (kind_ == UsStart::spelled && !zip) return false;
  if (zip) return typed_ || (separators_ > 0 && town_words_ > 0 && street_words_ <= 5);
  if (!typed_ || state.end == 0) return false;
  // "IN" and "OR" in a title are no states; "Springfield, IL" is one.
  if (read(state.end).isWord()) return false;
  // "Washington" right behind the street is the town, so that the state is still to come.
  if (state.full) return separators_ > 1 || (separators_ == 1 && town_words_ > 0);
  return (separators_ > 0 || endsLine(state.end)) && state.code;
}

// Sees whether the state stands here. False when the walk is over.
bool Walk::takeState() {
  const State state = readState(text_, at_);
  if (state.end == 0) return true;
  const std::size_t zip = readZip(text_, state.end);
  if (zip == 0 && !state.code && !state.full) return true;
  if (!accepts(state, zip != 0)) {
    // No word in two letters of a town is a state with a code.
    return zip == 0;
  }
  best_ = zip != 0 ? zip : state.end;
  // "New York, New York 10001": a code that is yet to come says more.
  return zip == 0 && state.full;
}

// "1711 Main St 60201", "Golf Rd, Evanston, 60201". False when the walk is over.
bool Walk::takeZip() {
  const std::size_t end = readZip(text_, at_);
  if (end == 0) return true;
  if (typed_ && !title_ && !lower_ && street_words_ > 0 && kind_ != UsStart::spelled) best_ = end;
  return false;
}

bool Walk::step() {
  const Token token = read(at_);
  switch (token.kind) {
    case Token::Kind::word:
      return takeWord(token);
    case Token::Kind::number:
      return takeNumber(token);
    case Token::Kind::newline:
      if (++separators_ > mostSeparators) return false;
      if (separators_ == 1) town_words_ = 0;
      word_length_ = 0;
      road_ = direction_ = false;
      at_ = token.end();
      return true;
    case Token::Kind::symbol:
      return takeSymbol(token);
    case Token::Kind::end:
      break;
  }
  return false;
}

bool Walk::takeSymbol(const Token& token) {
  const bool apart = token.spaced && byteAt(text_, token.end()) == ' ';
  if (token.is(',') || token.is(';') || (apart && (token.is('-') || token.is('|')))) {
    if (++separators_ > mostSeparators) return false;
    if (separators_ == 1) town_words_ = 0;
    road_ = direction_ = false;
  } else if (token.is('#')) {
    return takeUnit(token, UnitWord::numbered);
  } else if (token.is('-')) {
    // "I-35".
    if (token.spaced || word_length_ != 1) return false;
    road_ = true;
  } else if (token.is('.')) {
    // A full stop only closes abbreviations.
    if (token.spaced || word_length_ == 0 || word_length_ > 4) return false;
    if (street_end_ == token.range.start) street_end_ = token.end();
  } else {
    return false;
  }
  word_length_ = 0;
  at_ = token.end();
  return true;
}

// Past "Apt 4B", "# 12", "15th Floor", "Rear".
bool Walk::takeUnit(const Token& token, UnitWord unit) {
  std::size_t end = token.end();
  Token id = read(end);
  while (id.is('.') || id.is('#')) id = read(end = id.end());
  const bool separate = id.is(',') || id.kind == Token::Kind::newline;
  const bool letter = id.isWord() && id.range.length <= 2 && id.capital && id.spaced;
  if (id.isNumber() || (letter && unit == UnitWord::numbered) || (letter && id.range.length == 1)) {
    end = id.end();
    // "12B", "4-C", "D304", "B-12".
    for (int i = 0; i < 3; ++i) {
      const Token more = read(byteAt(text_, end) == '-' ? end + 1 : end);
      if (more.spaced || !(more.isNumber() || (more.isWord() && more.range.length <= 2))) break;
      end = more.end();
    }
  } else if (!separate && (unit == UnitWord::everyday || unit == UnitWord::numbered)) {
    return false;
  } else if (separate) {
    end = token.end();
  }
  if (separators_ == 0 || typed_) street_end_ = typed_ ? end : street_end_;
  ++words_;
  word_length_ = token.range.length;
  at_ = end;
  return true;
}

bool Walk::takeWord(const Token& token) {
  if (street_words_ > 0 || kind_ == UsStart::box) {
    const std::size_t before = best_;
    if (!takeState()) return false;
    if (best_ != before && best_ > at_) {
      at_ = best_;
      ++words_;
      ++town_words_;
      return true;
    }
    if (const UnitWord unit = usUnit(token.lower); unit != UnitWord::none) {
      if (takeUnit(token, unit)) return true;
    }
  }
  static const WordSet particles("of the and de la del las los el du des y");
  const bool small =
      words_ > 0 && (particles.has(token.lower) || (separators_ > 0 && token.lower == "or"));
  if (!token.capital && !small) {
    static const WordSet stops(
        "to in on at is was are and or for with from by that this it we he she they you i has had "
        "have who which when where not but as his her my our their people");
    if (words_ > 7 || !isAscii(text_[token.range.start]) || stops.has(token.lower)) return false;
    if (!lower_ && !hasZipNear(text_, at_)) return false;
    lower_ = true;
  }
  if (!token.spaced && word_length_ != 0) return false;
  const bool interstate = byteAt(text_, token.end()) == '-';  // "I-35"
  title_ = title_ || (separators_ == 0 && !interstate && isNoStreetName(token.lower));
  StreetType type = StreetType::none;
  if (separators_ == 0 && street_words_ > 0) type = englishStreetType(token.lower);
  if (street_words_ == 0 && isLeadingStreetType(token.lower)) type = StreetType::vague;
  direction_ = isDirection(token.lower);
  ++words_;
  if (separators_ == 0) {
    ++street_words_;
  }
  ++town_words_;
  if (type != StreetType::none && street_words_ <= 6) {
    typed_ = true;
    clear_ = clear_ || type == StreetType::clear;
    usual_ = isUsualStreet(token.lower);
    street_end_ = token.end();
    town_words_ = 0;
    type_at_ = street_words_;
    street_title_ = title_;
    street_lower_ = lower_;
  } else if (direction_ && street_end_ != 0 && separators_ == 0) {
    street_end_ = token.end();
    town_words_ = 0;
  }
  road_ = isRoadNumbered(token.lower);
  word_length_ = token.range.length;
  at_ = token.end();
  return true;
}

bool Walk::takeNumber(const Token& token) {
  const Token behind = read(token.end());
  const bool glued = behind.isWord() && !behind.spaced;
  static const WordSet endings("st nd rd th");
  if (glued && endings.has(behind.lower)) {
    // "5th Ave", "15th Floor".
    const Token next = read(behind.end());
    if (street_words_ > 0 && usUnit(next.lower) == UnitWord::numbered) {
      if (typed_) street_end_ = next.end();
      at_ = next.end();
    } else if (separators_ > 0) {
      return false;
    } else {
      ++street_words_;
      at_ = behind.end();
    }
    ++words_;
    word_length_ = 0;
    return true;
  }
  if (!takeZip()) return false;
  // "County Road 43", "Hwy 89A", and the grid of Utah: "550 S 400 E".
  const bool grid = direction_ && street_words_ == 1 && behind.isWord() &&
                    isDirection(behind.lower) && behind.spaced;
  if (separators_ > 0 || (!road_ && !grid) || token.range.length > 5) return false;
  typed_ = true;
  clear_ = clear_ || grid || street_words_ > 1;
  at_ = glued && behind.range.length == 1 ? behind.end() : token.end();
  if (grid) at_ = behind.end();
  street_end_ = at_;
  ++street_words_;
  ++words_;
  town_words_ = 0;
  road_ = direction_ = false;
  word_length_ = 0;
  return true;
}

// Whether nothing else stands on the line.
bool isAlone(std::string_view text, std::size_t start, std::size_t end) {
  while (start > 0 && (text[start - 1] == ' ' || text[start - 1] == '\t')) --start;
  while (end < text.size() && (text[end] == ' ' || text[end] == '.' || text[end] == ',')) ++end;
  return (start == 0 || text[start - 1] == '\n') &&
         (end >= text.size() || text[end] == '\n' || text[end] == '\r');
}

// "Chapter 12 The Long Road".
bool followsHeading(std::string_view text, std::size_t start) {
  static const WordSet words(
      "chapter section part page volume vol no number episode step figure table level room lesson "
      "item verse act scene track season day week version model");
  if (start < 2 || text[start - 1] != ' ') return false;
  const std::size_t word = wordStart(text, start - 1, start - std::min<std::size_t>(start, 16));
  return words.has(tokenAt(text, word).lower);
}

// The end of ", Springfield" behind a street when the line ends there.
std::size_t loneTownEnd(std::string_view text, std::size_t streetEnd) {
  Token token = tokenAt(text, streetEnd, Hyphens::join);
  const bool line = token.kind == Token::Kind::newline;
  if (!token.is(',') && !line) return streetEnd;
  std::size_t end = token.end();
  for (int words = 0;; ++words) {
    token = tokenAt(text, end, Hyphens::join);
    if (!token.isWord() || !token.capital || words == 3) break;
    end = token.end();
  }
  if (token.is(',') && end > streetEnd) {
    if (const std::size_t country = afterCountry(text, end); country > end) return country;
  }
  const bool stops = token.kind == Token::Kind::end || token.kind == Token::Kind::newline ||
                     token.is('.') || token.is(')');
  return stops && !line && end > streetEnd + 1 ? end : streetEnd;
}

}  // namespace

bool hasZipNear(std::string_view text, std::size_t at) {
  constexpr std::size_t far = 90;
  const std::size_t bound = std::min(text.size(), at + far);
  while ((at = findByte<DigitClass>(text, at, bound)) < bound) {
    const std::size_t start = at;
    while (isDigit(byteAt(text, at))) ++at;
    if (at - start == 5) return true;
  }
  return false;
}

UsAddress readUsAddress(std::string_view text, std::size_t start, std::size_t at, UsStart kind) {
  Walk walk(text, at, kind);
  UsAddress address;
  address.whole = walk.wholeEnd();
  std::size_t end = walk.streetEnd();
  if (kind != UsStart::number || end == 0) return address;
  // A year before "Wall Street" is no house.
  const int number = numberOf(text.substr(start, at - start).substr(0, 4));
  const bool year = at - start == 4 && number >= 1900 && number < 2100;
  if (!walk.isUsual() || followsHeading(text, start)) return address;
  end = loneTownEnd(text, end);
  if ((year || !walk.isClear()) && !isAlone(text, start, end)) return address;
  address.street = text[end - 1] == '.' ? end - 1 : end;
  return address;
}

}  // namespace marbelot::detection
