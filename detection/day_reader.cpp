#include "detection/day_reader.h"

#include "detection/clock_reader.h"
#include "detection/counts.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using std::chrono::days;
using std::chrono::local_days;
using std::chrono::year;
using std::chrono::year_month_day;

bool isOneOf(std::string_view regions, const std::string& region) {
  const std::size_t at = regions.find(region);
  return region.size() == 2 && at != std::string_view::npos && at % 3 == 0;
}

}  // namespace

DayReader::DayReader(DateSource source, const std::string& region, local_days today)
    : source_(source),
      month_first_(isOneOf("US PH PR GU VI AS MP FM MH PW", region)),
      dotted_years_(
          isOneOf("DE AT CH LI PL CZ SK RU UA NO FI DK TR HU RO BG EE LV HR SI RS", region)),
      year_first_(isOneOf("HU LT CN JP KR TW", region)),
      today_(today) {}

std::optional<Day> DayReader::read(std::size_t at) const {
  const std::optional<Day> day = single(at);
  return day ? std::optional(pastRange(*day)) : std::nullopt;
}

std::optional<Day> DayReader::single(std::size_t at) const {
  const Token token = source_.token(at);
  Date day;
  if (token.isNumber()) day = startingWithNumber(token);
  if (token.isWord()) day = startingWithWord(token);
  if (!day) return std::nullopt;
  return withPart(withWeekdayBehind(*day));
}

std::optional<Day> DayReader::startingWithNumber(const Token& first) const {
  if (auto day = numeric(first)) return day;
  if (auto day = ideographic(first)) return day;
  if (auto day = yearThenMonth(first)) return day;
  if (const std::optional<Ordinal> ordinal = readOrdinal(source_, first.range.start)) {
    if (auto day = nth(ordinal->value, ordinal->end)) return day;
  }
  return dayFirst(first.range.start);
}

std::optional<Day> DayReader::startingWithWord(const Token& first) const {
  const DateWord word = source_.meaning(first);
  switch (word.kind) {
    case Kind::month:
      return monthFirst(first, word);
    case Kind::weekday:
      return weekday(first, word);
    case Kind::qualifier:
      return qualified(first, word.value);
    case Kind::day:
      return relative(first, word);
    case Kind::unit:
      return besideTomorrow(first);
    case Kind::feast:
      return feast(first, word.value);
    case Kind::edge:
      return edge(first, word.value == 1);
    case Kind::count:
    case Kind::ordinal:
      if (const std::optional<Ordinal> ordinal = readOrdinal(source_, first.range.start)) {
        if (auto day = nth(ordinal->value, ordinal->end)) return day;
        return dayFirst(first.range.start);
      }
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

std::optional<Day> DayReader::valid(int y, int m, int d, std::size_t end) const {
  const year_month_day date{year(y), std::chrono::month(static_cast<unsigned>(m)),
                            std::chrono::day(static_cast<unsigned>(d))};
  if (m < 1 || d < 1 || !date.ok() || y < 1000 || y > 2999) return std::nullopt;
  Day day;
  day.end = end;
  day.date = date;
  return day;
}

std::optional<Day> DayReader::inYearAt(std::size_t at, const Day& day) const {
  const Token token = source_.token(at);
  if (!token.isNumber() || !token.spaced || token.range.length != 4) return std::nullopt;
  const int y = numberOf(token.lower);
  if (y < 1900 || y >= 2200 || !source_.stopsAt(token.end()) || source_.byte(token.end()) == ':') {
    return std::nullopt;
  }
  return valid(y, static_cast<int>(static_cast<unsigned>(day.date.month())),
               static_cast<int>(static_cast<unsigned>(day.date.day())), token.end());
}

Day DayReader::onWeekday(const Day& day, int weekday) const {
  // Within six years most days fall on each weekday.
  constexpr int near = 6;
  const year thisYear = year_month_day(today_).year();
  std::optional<Day> nearest;
  days distance{};
  for (int y = near; y >= -near; --y) {
    const year_month_day date =
        (thisYear + std::chrono::years(y)) / day.date.month() / day.date.day();
    if (!date.ok()) continue;
    const local_days when(date);
    if (static_cast<int>(std::chrono::weekday(when).c_encoding()) != weekday) continue;
    const days away = when < today_ ? today_ - when : when - today_;
    if (nearest && away >= distance) continue;
    distance = away;
    nearest = day;
    nearest->date = date;
  }
  return nearest.value_or(day);
}

Day DayReader::withPart(Day day) const {
  const Token token = source_.token(day.end);
  PartOfDay part = partOfDay(token.lower);
  if (part != PartOfDay::unknown && token.lower != "tonight") {
    day.end = token.end();
  } else {
    part = readPartOfDay(source_, day.end, day.end);
  }
  if (part != PartOfDay::unknown) {
    day.part = part;
    day.needsTime = false;
  }
  return day;
}

// "Dec 8 (Tuesday)", "December 8, Tuesday".
Day DayReader::withWeekdayBehind(Day day) const {
  if (day.weekday || day.weekdayTold || day.period) return day;
  const Token mark = source_.token(day.end);
  if (!mark.is(',') && !mark.is('(')) return day;
  const Token name = source_.after(mark);
  const DateWord word = source_.meaning(name);
  if (word.kind != Kind::weekday || (word.weak && !name.capital)) return day;
  const Token behind = source_.after(name);
  if (mark.is('(') != behind.is(')')) return day;
  const Token further = source_.pastComma(behind);
  // "Mon 4 Jan, Mon, Feb 29": the name belongs to the next day.
  const bool time = readClock(source_, further.range.start, ClockStyle::colon).has_value();
  if (mark.is(',') && ((further.isNumber() && !time) || source_.isA(further, Kind::month))) {
    return day;
  }
  if (day.guessedYear) day = onWeekday(day, word.value);
  const local_days when(day.date);
  const bool fits = static_cast<int>(std::chrono::weekday(when).c_encoding()) == word.value;
  if (fits) day.end = mark.is('(') ? behind.end() : name.end();
  return day;
}

// Past the last day of "Dec 28 - Jan 3", which may tell the year of both.
Day DayReader::pastRange(Day day) const {
  static const WordSet joints("to through thru until till bis au");
  const Token joint = source_.token(day.end);
  if (!isDash(joint) && !joints.has(joint.lower)) return day;
  // In "2026-11-21 -05:00" and "Friday -ish" nothing is joined.
  const Token last = source_.after(joint);
  if (isDash(joint) && joint.spaced != last.spaced) return day;
  const std::optional<Day> end = single(last.range.start);
  if (!end || end->needsTime != day.needsTime || end->period) return day;
  if (day.guessedYear && !end->guessedYear && !day.weekday && !end->weekday) {
    year_month_day shared = end->date.year() / day.date.month() / day.date.day();
    if (shared > end->date) shared -= std::chrono::years(1);
    if (shared.ok()) day.date = shared;
    day.guessedYear = false;
  }
  day.end = end->end;
  return day;
}

}  // namespace marbelot::detection
