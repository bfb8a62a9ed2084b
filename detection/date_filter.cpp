#include "detection/date_filter.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;

// Whether a date or a time may go on with this word behind its first number, be it spelled or not.
bool mayFollowNumber(const DateSource& source, const Token& word) {
  // "5 p.m."
  if (word.range.length == 1 && (word.lower == "a" || word.lower == "p")) {
    return source.byte(word.end()) == '.';
  }
  static const WordSet spaced(
      "am pm uhr o'clock o’clock oclock to and bis of past after before till in at on through thru "
      "tonight tomorrow today this minutes second de del di do uur horas hora");
  static const WordSet joined("am pm uhr h t st nd rd th er e m d w y s 年");
  if ((word.spaced ? spaced : joined).has(word.lower)) return true;
  const Kind kind = source.meaning(word).kind;
  return kind == Kind::month || kind == Kind::unit;
}

// Whether a date may go on with the symbol behind its first number.
bool mayFollowNumber(const DateSource& source, const Token& number, const Token& symbol) {
  const char next = source.byte(number.end() + 1);
  switch (symbol.symbol) {
    case ':':
      return isDigit(next);
    case '.':
      return isAlnum(next) || isAlpha(source.byte(source.pastBlank(number.end() + 1)));
    case '/':
      return isAlnum(next);
    case '-':
    case U'–':
    case U'—':
    case '&':
      return true;
    default:
      return false;
  }
}

}  // namespace

bool mayStartDate(const DateSource& source, const Token& first) {
  // Only a few characters stand behind such a number.
  constexpr std::string_view mayStandBehind = " -/.:\t'AFJMNOSDUaefhjmnoprstudwy&P\xC2\xE2\xE3\xE5";
  const char behind = source.byte(first.end());
  if (behind == '\0' || mayStandBehind.find(behind) == std::string_view::npos) return false;
  const Token second = source.after(first);
  if (second.isWord()) return mayFollowNumber(source, second);
  return second.kind == Token::Kind::symbol && mayFollowNumber(source, first, second);
}

bool mayStartDate(const DateSource& source, const Token& first, const DateWord& meaning) {
  const Token second = source.after(first);
  const DateWord next = source.meaning(second);
  static const WordSet amounts("couple few half quarter");
  static const WordSet afterHalf("past a an");
  static const WordSet afterQuarter("past to before after of till til");
  static const WordSet ofOrThe("of the de del di do den to");
  static const WordSet afterWithin("the about around approximately roughly exactly under circa");
  switch (meaning.kind) {
    case Kind::none:
      return false;
    case Kind::within:
      return second.isNumber() || next.kind == Kind::count || next.kind == Kind::fraction ||
             second.lower == "sept" || afterWithin.has(second.lower);
    case Kind::count:
      if (meaning.weak) return next.kind == Kind::unit || amounts.has(second.lower);
      return next.kind == Kind::count || next.kind == Kind::ordinal || next.kind == Kind::weekday ||
             next.kind == Kind::noon || second.is('-') || second.kind == Token::Kind::end ||
             (second.isWord() && mayFollowNumber(source, second));
    case Kind::fraction:
      return (meaning.value == 30 ? afterHalf : afterQuarter).has(second.lower);
    case Kind::ordinal:
      return second.lower == "of" || second.lower == "day" || next.kind == Kind::month ||
             next.kind == Kind::weekday;
    case Kind::edge:
      return second.lower == "of";
    case Kind::month:
      return !second.isWord() || next.kind != Kind::none || ofOrThe.has(second.lower);
    case Kind::weekday:
      return !meaning.weak || first.capital || second.isNumber() || next.kind == Kind::month;
    case Kind::unit:
      return second.lower == "after" || second.lower == "before";
    case Kind::qualifier:
      return second.spaced && second.isWord() &&
             (next.kind != Kind::none || partOfDay(second.lower) != PartOfDay::unknown ||
              second.lower == "weekend");
    default:
      return true;
  }
}

}  // namespace marbelot::detection
