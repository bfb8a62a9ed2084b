// Days told by others: by today, by their weekday, by their place in a month.
#include <algorithm>

#include "detection/counts.h"
#include "detection/day_reader.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using std::chrono::days;
using std::chrono::local_days;
using std::chrono::months;
using std::chrono::year_month_day;
using std::chrono::years;

Day dayAt(local_days date, std::size_t end) {
  Day day;
  day.end = end;
  day.date = year_month_day(date);
  return day;
}

int weekdayOf(local_days day) { return static_cast<int>(std::chrono::weekday(day).c_encoding()); }

// The Monday of the day's week.
local_days weekOf(local_days day) { return day - days((weekdayOf(day) + 6) % 7); }

local_days inWeek(local_days monday, int weekday) { return monday + days((weekday + 6) % 7); }

local_days lastOfMonth(year_month_day day) {
  return local_days(day.year() / day.month() / std::chrono::last);
}

// The same day of the month, or the last one of a shorter month.
year_month_day withinMonth(year_month_day day) {
  return day.ok() ? day : year_month_day(lastOfMonth(day));
}

bool isArticle(const Token& token) {
  static const WordSet words("the den der le");
  return words.has(token.lower);
}

}  // namespace

Day DayReader::next(int weekday, std::size_t end) const {
  return dayAt(today_ + days((weekday - weekdayOf(today_) + 7) % 7), end);
}

// "Fri 3 May", "Friday", "Sat at 8pm", "Friday the 27th", "Tuesday next week".
std::optional<Day> DayReader::weekday(const Token& first, const DateWord& word) const {
  std::size_t after = first.end();
  // "Tues. at noon", but not the end of a sentence.
  if (word.weak && source_.byte(after) == '.' &&
      source_.token(after + 1).kind != Token::Kind::end) {
    ++after;
  }
  Token token = source_.pastComma(source_.token(after));
  const bool bracket = token.is('(');
  if (bracket) token = source_.after(token);
  if (isArticle(token)) token = source_.after(token);
  const DateWord meaning = source_.meaning(token);
  if (token.isNumber() || meaning.kind == Kind::month || meaning.kind == Kind::ordinal) {
    auto date = token.isNumber() ? startingWithNumber(token) : startingWithWord(token);
    const Token closing = date ? source_.token(date->end) : token;
    if (date && bracket == closing.is(')')) {
      if (bracket) date->end = closing.end();
      date->needsTime = false;
      date->weekdayTold = true;
      return date->guessedYear ? onWeekday(*date, word.value) : date;
    }
    const std::optional<Ordinal> ordinal = readOrdinal(source_, token.range.start);
    if (ordinal && !ordinal->spelled && !bracket) {
      // "Friday the 27th": within half a year, as later ones would be given with their month.
      for (int i = 0; i < 183; ++i) {
        const local_days day = today_ + days(i);
        const auto number = static_cast<unsigned>(year_month_day(day).day());
        if (weekdayOf(day) == word.value && static_cast<int>(number) == ordinal->value) {
          return dayAt(day, ordinal->end);
        }
      }
    }
  }
  // "so" and "do" are words, "sat" and "sun" too: they count before a time, when capitalised.
  if (word.weak && (!first.capital || first.range.length < 3)) return std::nullopt;
  Day day = next(word.value, after);
  day.weekday = true;
  day.needsTime = word.weak;
  Token behind = source_.token(day.end);
  if (behind.lower == "prochain" || behind.lower == "week") {
    if (behind.lower == "week") day = dayAt(local_days(day.date) + days(7), behind.end());
    day.end = behind.end();
    day.needsTime = false;
    return day;
  }
  if (behind.lower == "of" || behind.lower == "in") behind = source_.after(behind);
  const DateWord qualifier = source_.meaning(behind);
  const Token unit = source_.after(behind);
  if (qualifier.kind == Kind::qualifier && unit.lower == "week") {
    const local_days monday = weekOf(today_) + days(7 * qualifier.value);
    day.date = year_month_day(inWeek(monday, word.value));
    day.end = unit.end();
    day.needsTime = false;
  }
  return day;
}

// "on Thursday" or "Friday" behind "next week".
std::optional<Day> DayReader::weekdayIn(Day period, std::size_t at) const {
  Token token = source_.pastComma(source_.token(at));
  if (token.lower == "on") token = source_.after(token);
  const DateWord word = source_.meaning(token);
  if (word.kind != Kind::weekday || word.weak) return std::nullopt;
  const local_days monday = weekOf(local_days(period.date));
  return dayAt(inWeek(monday, word.value), token.end());
}

// "next Monday", "this evening", "last week", "the coming Thursday".
std::optional<Day> DayReader::qualified(const Token& first, int direction) const {
  Token token = source_.after(first);
  DateWord word = source_.meaning(token);
  if (direction == 0 && word.kind == Kind::qualifier && word.value != 0) {
    direction = word.value;
    // "This coming Thursday" is not that of next week.
    token = source_.after(token);
    word = source_.meaning(token);
    if (word.kind != Kind::weekday) return std::nullopt;
    direction = std::min(direction, 0);
  }
  if (!token.isWord() || !token.spaced) return std::nullopt;
  const bool coming = first.lower == "coming" || first.lower == "upcoming";
  if (const PartOfDay part = partOfDay(token.lower);
      part != PartOfDay::unknown && token.lower != "tonight" && direction <= 0 && !coming) {
    const bool past = direction < 0 && (first.lower != "past") && part >= PartOfDay::evening;
    if (direction < 0 && !past) return std::nullopt;
    Day day = dayAt(today_ + days(direction), token.end());
    day.part = part;
    return day;
  }
  if (token.lower == "day" && direction < 0) return nth(-1, token.range.start);
  if (word.kind == Kind::feast) return direction > 0 ? feast(token, word.value) : std::nullopt;
  if (word.kind == Kind::weekday && (!word.weak || token.capital)) {
    if (direction < 0) {
      if (auto found = nth(-1, token.range.start)) return found;
      Day day = next(word.value, token.end());
      day.date = year_month_day(local_days(day.date) - days(7));
      return day;
    }
    if (direction == 0 || coming) return next(word.value, token.end());
    return dayAt(inWeek(weekOf(today_) + days(7), word.value), token.end());
  }
  if (token.lower == "weekend" && direction >= 0 && !coming) {
    const local_days saturday = inWeek(weekOf(today_), 6);
    return dayAt(direction == 0 ? std::max(saturday, today_) : saturday + days(7), token.end());
  }
  if (word.kind != Kind::unit || direction == 0 || first.lower == "past") return std::nullopt;
  year_month_day date(today_);
  switch (word.value) {
    case TimeUnit::week:
      date = year_month_day(today_ + days(7 * direction));
      break;
    case TimeUnit::month:
      date = withinMonth(date + months(direction));
      break;
    case TimeUnit::year:
      date = withinMonth(date + years(direction));
      break;
    default:
      return std::nullopt;
  }
  Day day = dayAt(local_days(date), token.end());
  day.period = true;
  if (word.value == TimeUnit::week) return weekdayIn(day, token.end()).value_or(day);
  if (word.value != TimeUnit::month) return day;
  // "next month on the 3rd".
  const Token on = source_.after(token);
  const Token article = source_.after(on);
  const std::optional<Ordinal> ordinal = readOrdinal(source_, article.end());
  if (on.lower != "on" || article.lower != "the" || !ordinal) return day;
  auto exact =
      valid(static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            ordinal->value, ordinal->end);
  return exact ? exact : day;
}

// "tomorrow evening", "tonight".
std::optional<Day> DayReader::relative(const Token& first, const DateWord& word) const {
  // German "Morgen" with a capital is the morning, and a greeting.
  if (word.weak && first.capital) return std::nullopt;
  Day day = dayAt(today_ + days(word.value), first.end());
  if (first.lower == "tonight") day.part = PartOfDay::night;
  return day;
}

// "day after tomorrow", "day before yesterday", from "day" on.
std::optional<Day> DayReader::besideTomorrow(const Token& first) const {
  if (first.lower != "day") return std::nullopt;
  const Token middle = source_.after(first);
  const Token last = source_.after(middle);
  const bool after = middle.lower == "after" && last.lower == "tomorrow";
  if (!after && !(middle.lower == "before" && last.lower == "yesterday")) return std::nullopt;
  return dayAt(today_ + days(after ? 2 : -2), last.end());
}

// "May 2027", "May", "next month": the first day of it.
std::optional<Day> DayReader::someMonth(std::size_t at) const {
  Token token = source_.token(at);
  if (isArticle(token)) token = source_.after(token);
  const DateWord word = source_.meaning(token);
  year_month_day first = year_month_day(today_).year() / year_month_day(today_).month() / 1;
  if (token.lower == "month") return dayAt(local_days(first), token.end());
  if (word.kind == Kind::qualifier) {
    const Token unit = source_.after(token);
    if (unit.lower != "month") return std::nullopt;
    return dayAt(local_days(first + months(word.value)), unit.end());
  }
  if (word.kind != Kind::month || (word.weak && !token.capital)) return std::nullopt;
  if (auto dated = monthAndYear(word.value, source_.after(token), true)) return dated;
  first = first.year() / std::chrono::month(static_cast<unsigned>(word.value)) / 1;
  if (lastOfMonth(first) < today_) first += years(1);
  Day day = dayAt(local_days(first), token.end());
  day.guessedYear = true;
  return day;
}

// "Monday of May" behind "first" (or -1 for "last"); "of next month" behind "5th".
std::optional<Day> DayReader::nth(int which, std::size_t at) const {
  const Token name = source_.token(at);
  const DateWord word = source_.meaning(name);
  const bool weekday = word.kind == Kind::weekday && (!word.weak || name.capital);
  const bool counted = weekday || name.lower == "day";
  const Token of = counted ? source_.after(name) : name;
  if (of.lower != "of" && !(counted && of.lower == "in")) return std::nullopt;
  std::optional<Day> first = someMonth(of.end());
  if (!first) return std::nullopt;
  if (!counted) {
    // "the 3rd of May" is read elsewhere, with its year.
    const Token last = source_.token(wordStart(source_.text, first->end, 0));
    if (last.lower != "month" || which < 1) return std::nullopt;
    return valid(static_cast<int>(first->date.year()),
                 static_cast<int>(static_cast<unsigned>(first->date.month())), which, first->end);
  }
  if (which > 5) return std::nullopt;
  for (int tries = 0; tries < 2; ++tries, first->date += years(1)) {
    const local_days begin(first->date);
    const local_days end = lastOfMonth(first->date);
    const int step = weekday ? 7 : 1;
    const int fromBegin = weekday ? (word.value - weekdayOf(begin) + 7) % 7 : 0;
    const int fromEnd = weekday ? (weekdayOf(end) - word.value + 7) % 7 : 0;
    const local_days day =
        which < 0 ? end - days(fromEnd) : begin + days(fromBegin + step * (which - 1));
    if (year_month_day(day).month() != first->date.month()) return std::nullopt;
    if (!first->guessedYear || day >= today_) return dayAt(day, first->end);
  }
  return std::nullopt;
}

// "New Year's Eve", "Christmas Day 2027".
std::optional<Day> DayReader::feast(const Token& first, int which) const {
  Token token = source_.after(first);
  if (which == Feast::newYear) {
    if (token.lower != "year's" && token.lower != "year’s" && token.lower != "years") {
      return std::nullopt;
    }
    token = source_.after(token);
  }
  const bool eve = token.lower == "eve" && which <= Feast::christmas;
  if (!eve && token.lower != "day") return std::nullopt;
  const std::size_t end = token.end();
  switch (which) {
    case Feast::newYear:
      return eve ? withYear(31, 12, end, Year::optional) : withYear(1, 1, end, Year::optional);
    case Feast::christmas:
      return withYear(eve ? 24 : 25, 12, end, Year::optional);
    case Feast::valentine:
      return withYear(14, 2, end, Year::optional);
    default:
      return withYear(26, 12, end, Year::optional);
  }
}

// "end of the month", "end of May 2027", "start of next month", "end of 2027".
std::optional<Day> DayReader::edge(const Token& first, bool last) const {
  const Token of = source_.after(first);
  if (of.lower != "of") return std::nullopt;
  Token token = source_.after(of);
  if (const std::optional<Day> found = someMonth(of.end())) {
    // The start of this month is over and seldom meant.
    const bool past = local_days(found->date) < today_;
    if (last) return dayAt(lastOfMonth(found->date), found->end);
    return past ? std::nullopt : found;
  }
  int year = static_cast<int>(year_month_day(today_).year());
  if (isArticle(token)) token = source_.after(token);
  if (const DateWord word = source_.meaning(token); word.kind == Kind::qualifier) {
    year += word.value;
    token = source_.after(token);
  }
  if (token.isNumber() && token.range.length == 4 && numberOf(token.lower) >= 1900) {
    return valid(numberOf(token.lower), last ? 12 : 1, last ? 31 : 1, token.end());
  }
  if (token.lower != "year") return std::nullopt;
  return valid(year, last ? 12 : 1, last ? 31 : 1, token.end());
}

// "on the 15th", "by the 28th": nothing that the number could count follows.
std::optional<Day> DayReader::ofAnyMonth(std::size_t at) const {
  const std::optional<Ordinal> ordinal = readOrdinal(source_, at);
  if (!ordinal || ordinal->spelled || ordinal->value < 1) return std::nullopt;
  static const WordSet mayFollow("at from until till and or if because but when we i you @ please");
  const Token next = source_.token(ordinal->end);
  if (next.isNumber() || (next.isWord() && !mayFollow.has(next.lower)) || isDash(next)) {
    return std::nullopt;
  }
  for (int i = 0; i < 62; ++i) {
    const local_days day = today_ + days(i);
    if (static_cast<int>(static_cast<unsigned>(year_month_day(day).day())) == ordinal->value) {
      return withPart(dayAt(day, ordinal->end));
    }
  }
  return std::nullopt;
}

}  // namespace marbelot::detection
