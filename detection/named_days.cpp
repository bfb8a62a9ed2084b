// Days with the name of their month.
#include "detection/counts.h"
#include "detection/day_reader.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using std::chrono::local_days;
using std::chrono::year_month_day;

bool isConnector(const Token& token) {
  static const WordSet words("of de del di do");
  return words.has(token.lower);
}

// Whether the word ends the sentence's date rather than names what a number before it counts.
bool mayFollowYear(const Token& token) {
  static const WordSet words("at from to until till and or in for um à @ through is was the");
  return !token.isWord() || words.has(token.lower);
}

// "He may 3 times", "5 May be": the month's name is a verb.
bool isVerb(const DateSource& source, const Token& month) {
  static const WordSet words("be have not also well never i we he she it they you only");
  return month.lower == "may" && words.has(source.after(month).lower);
}

bool joins(const Token& token) {
  static const WordSet words("to and bis through thru");
  return isDash(token) || token.is('&') || words.has(token.lower);
}

// "13:45:30", as behind the day in the logs of servers.
bool startsStamp(const DateSource& source, std::size_t at) {
  return twoDigits(source.text, at, 23) >= 0 && source.byte(at + 2) == ':' &&
         twoDigits(source.text, at + 3, 59) >= 0 && source.byte(at + 5) == ':';
}

}  // namespace

std::optional<Day> DayReader::withYear(int day, int m, std::size_t at, Year wanted) const {
  Token token = source_.token(at);
  const bool comma = token.is(',');
  if (comma || isConnector(token)) token = source_.after(token);
  const bool apostrophe = token.is('\'') || token.is(U'’') || token.is(U'‘');
  const Token year = apostrophe ? source_.after(token) : token;
  const bool apart = token.spaced || source_.byte(at) != ' ';
  const bool stops = source_.stopsAt(year.end()) &&
                     (source_.byte(year.end()) != ':' || startsStamp(source_, year.end() + 1));
  if (year.isNumber() && apart && stops) {
    const int value = numberOf(year.lower);
    // "May 3, 1200 people": years of running text are near.
    if (year.range.length == 4 && value >= 1500 && value < 2200) {
      return valid(value, m, day, year.end());
    }
    const bool bare = wanted == Year::shortToo && !comma && mayFollowYear(source_.after(year));
    if (year.range.length == 2 && ((apostrophe && !year.spaced) || bare)) {
      if (auto found = valid(fullYear(value), m, day, year.end())) return found;
    }
  }
  if (wanted == Year::required) return std::nullopt;
  return upcoming(day, m, at);
}

std::optional<Day> DayReader::upcoming(int day, int m, std::size_t end) const {
  const int thisYear = static_cast<int>(year_month_day(today_).year());
  for (int y = thisYear; y < thisYear + 9; ++y) {
    if (auto found = valid(y, m, day, end); found && local_days(found->date) >= today_) {
      found->guessedYear = true;
      return found;
    }
  }
  return std::nullopt;
}

// Past "- 22", "to 22nd", ", 4th and 5th" behind a day of the month.
std::size_t DayReader::pastMoreDays(std::size_t at) const {
  for (int more = 0; more < 4; ++more) {
    const Token joint = source_.token(at);
    if (!joins(joint) && !joint.is(',')) break;
    const Token number = source_.after(joint);
    const std::optional<Ordinal> ordinal = readOrdinal(source_, number.range.start);
    const bool plain = number.isNumber() && number.range.length <= 2 && !joint.is(',');
    if (!plain && !(ordinal && !ordinal->spelled)) break;
    if (numberOf(number.lower) < 1 || numberOf(number.lower) > 31) break;
    const std::size_t end = ordinal ? ordinal->end : number.end();
    // "May 3 - 5 pm".
    static const WordSet halves("am pm a p uhr");
    if (source_.byte(end) == ':' || halves.has(source_.token(end).lower)) break;
    at = end;
  }
  return at;
}

// "3 May", "3rd of May 2026", "3. Mai", "3-May-2026", "3–5 May", "the twenty-fourth of May".
std::optional<Day> DayReader::dayFirst(std::size_t at) const {
  const Token first = source_.token(at);
  const std::optional<Ordinal> ordinal = readOrdinal(source_, at);
  if (!ordinal && !first.isNumber()) return std::nullopt;
  const int day = ordinal ? ordinal->value : numberOf(first.lower);
  if ((first.isNumber() && first.range.length > 2) || day < 1 || day > 31) return std::nullopt;
  Token token = ordinal ? source_.token(ordinal->end) : source_.after(first);
  char mark = '\0';
  if (!ordinal && token.is('.') && !token.spaced) token = source_.after(token);
  if (joins(token)) {
    const Token last = source_.after(token);
    if (last.isNumber() && last.range.length <= 2) {
      const std::size_t end = pastMoreDays(token.range.start);
      if (end == token.range.start) return std::nullopt;
      token = source_.token(end);
      if (token.is('.') && !token.spaced) token = source_.after(token);
    } else if (isDash(token)) {
      if (!token.spaced) mark = source_.byte(token.range.start);
      token = last;
    }
  } else if (token.is('/') && !token.spaced) {
    mark = '/';
    token = source_.after(token);
  }
  if (isConnector(token)) token = source_.after(token);
  const DateWord month = source_.meaning(token);
  if (month.kind != Kind::month || (!ordinal && isVerb(source_, token))) return std::nullopt;
  std::size_t end = token.end();
  if (month.weak && source_.byte(end) == '.' && token.lower != "may" &&
      (source_.token(end + 1).isNumber() || source_.byte(end + 1) != ' ')) {
    ++end;
  }
  if (source_.byte(end) == (mark ? mark : '-') && isDigit(source_.byte(end + 1))) ++end;
  const bool everyday = month.weak && !token.capital && !ordinal;
  return withYear(day, month.value, end, everyday ? Year::required : Year::shortToo);
}

// "August 2026", "Aug. '26", "March of 2026", "May–June 2026".
std::optional<Day> DayReader::monthAndYear(int month, const Token& behind, bool of) const {
  Token token = behind;
  if (isDash(token) || token.lower == "to" || token.is('/')) {
    const Token last = source_.after(token);
    if (!source_.isA(last, Kind::month)) return std::nullopt;
    token = source_.after(last);
  }
  if (token.is(',') || (of && token.lower == "of")) token = source_.after(token);
  if (!token.isNumber() || !token.spaced || token.range.length != 4) return std::nullopt;
  const int year = numberOf(token.lower);
  if (year < 1900 || year >= 2200 || !source_.stopsAt(token.end())) return std::nullopt;
  if (source_.byte(token.end()) == ':') return std::nullopt;
  return valid(year, month, 1, token.end());
}

// "May 3rd, 2026", "Dec. 12", "May 3-5", "May twenty-fourth", "Aug-10-2026".
std::optional<Day> DayReader::monthFirst(const Token& first, const DateWord& month) const {
  Token token = source_.after(first);
  const bool abbreviated = month.weak && first.lower != "may" && first.lower != "march";
  if (token.is('.') && !token.spaced && abbreviated) token = source_.after(token);
  if (!month.weak || first.capital) {
    if (auto found = monthAndYear(month.value, token, true)) return found;
  }
  char mark = '\0';
  if ((token.is('-') || token.is('/')) && !token.spaced) {
    mark = source_.byte(token.range.start);
    token = source_.after(token);
  } else if (token.lower == "the" || token.lower == "den") {
    token = source_.after(token);
  }
  if (mark == '\0' ? !token.spaced : token.spaced) return std::nullopt;
  const std::optional<Ordinal> ordinal = readOrdinal(source_, token.range.start);
  const bool everyday = month.weak && !first.capital;
  if (!ordinal && (!token.isNumber() || token.range.length > 2)) return std::nullopt;
  if (ordinal && ordinal->spelled && everyday) return std::nullopt;
  const int day = ordinal ? ordinal->value : numberOf(token.lower);
  std::size_t end = ordinal ? ordinal->end : token.end();
  // In "Dec 28 - 3 Jan" the second number has a month of its own.
  if (const std::size_t more = pastMoreDays(end);
      mark == '\0' && !source_.isA(source_.token(more), Kind::month)) {
    end = more;
  }
  if (mark != '\0' && (source_.byte(end) != mark || !isDigit(source_.byte(end + 1)))) {
    return std::nullopt;
  }
  if (mark != '\0') return withYear(day, month.value, end + 1, Year::required);
  const char after = source_.byte(end);
  if (!source_.stopsAt(end) || (after == ':' && isDigit(source_.byte(end + 1)))) {
    return std::nullopt;
  }
  const bool wantsYear = everyday && !ordinal;
  return withYear(day, month.value, end, wantsYear ? Year::required : Year::optional);
}

// "2026 May 3", "2026/Aug/10".
std::optional<Day> DayReader::yearThenMonth(const Token& year) const {
  const int value = numberOf(year.lower);
  if (year.range.length != 4 || value < 1500 || value >= 2200) return std::nullopt;
  Token token = source_.after(year);
  const bool marked = (token.is('/') || token.is('-') || token.is('.')) && !token.spaced;
  const char32_t mark = token.symbol;
  if (marked || token.is(',')) token = source_.after(token);
  const DateWord month = source_.meaning(token);
  if (month.kind != Kind::month || (month.weak && !token.capital)) return std::nullopt;
  Token day = source_.after(token);
  if (marked) {
    if (!day.is(mark) || day.spaced) return std::nullopt;
    day = source_.after(day);
  }
  const std::optional<Ordinal> ordinal = readOrdinal(source_, day.range.start);
  if (!ordinal && (!day.isNumber() || day.range.length > 2)) return std::nullopt;
  const std::size_t end = ordinal ? ordinal->end : day.end();
  if (!source_.stopsAt(end) || source_.byte(end) == ':') return std::nullopt;
  return valid(value, month.value, ordinal ? ordinal->value : numberOf(day.lower), end);
}

}  // namespace marbelot::detection
