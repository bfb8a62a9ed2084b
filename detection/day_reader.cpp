#include "detection/day_reader.h"

#include "detection/scan.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using std::chrono::days;
using std::chrono::local_days;
using std::chrono::month;
using std::chrono::year;
using std::chrono::year_month_day;

char byteAt(std::string_view text, std::size_t at) { return at < text.size() ? text[at] : '\0'; }

bool isOneOf(std::string_view regions, const std::string& region) {
  const std::size_t at = regions.find(region);
  return region.size() == 2 && at != std::string_view::npos && at % 3 == 0;
}

// The digits at `at` as a number; `end` moves past them. -1 unless there are `least` to `most`.
int readDigits(std::string_view text, std::size_t at, std::size_t least, std::size_t most,
               std::size_t& end) {
  std::size_t stop = at;
  while (isDigit(byteAt(text, stop)) && stop - at <= most) ++stop;
  if (stop - at < least || stop - at > most) return -1;
  end = stop;
  return numberOf(text.substr(at, stop - at));
}

// Whether a date may stop at `end`: neither more digits of a version nor letters follow.
bool stopsAt(std::string_view text, std::size_t end) {
  const char after = byteAt(text, end);
  const char further = byteAt(text, end + 1);
  if (isAlnum(after) || after == '_' || after == '%') return false;
  return !((after == '.' || after == '-' || after == '/' || after == ',') && isDigit(further));
}

bool isOrdinal(const std::string& word) {
  static const WordSet endings("st nd rd th er e");
  return endings.has(word);
}

}  // namespace

DayReader::DayReader(std::string_view text, const std::string& region, local_days today)
    : text_(text),
      month_first_(isOneOf("US PH PR GU VI AS MP FM MH PW", region)),
      dotted_years_(
          isOneOf("DE AT CH LI PL CZ SK RU UA NO FI DK TR HU RO BG EE LV HR SI RS", region)),
      year_first_(isOneOf("HU LT CN JP KR TW", region)),
      today_(today) {}

std::optional<Day> DayReader::valid(int y, int m, int d, std::size_t end) const {
  const year_month_day date{year{y}, month{static_cast<unsigned>(m)},
                            std::chrono::day{static_cast<unsigned>(d)}};
  if (m < 1 || d < 1 || !date.ok() || y < 1000 || y > 2999) return std::nullopt;
  return Day{end, date};
}

std::optional<Day> DayReader::withYear(int day, int m, std::size_t at, bool needs_year) const {
  Token token = tokenAt(text_, at);
  if (token.is(',')) token = tokenAt(text_, token.end());
  const bool short_year = token.is('\'') || token.is(U'’');
  std::size_t end = 0;
  const std::size_t digits = short_year ? token.end() : token.range.start;
  if (token.isNumber() || short_year) {
    const int y = readDigits(text_, digits, short_year ? 2 : 4, short_year ? 2 : 4, end);
    // "May 3, 1200 people": years of running text are near.
    if (y >= 0 && stopsAt(text_, end) && (short_year || (y >= 1500 && y < 2200)) &&
        (token.spaced || byteAt(text_, at) != ' ') && byteAt(text_, end) != ':') {
      return valid(short_year ? 2000 + y : y, m, day, end);
    }
  }
  if (needs_year) return std::nullopt;
  const int this_year = static_cast<int>(year_month_day(today_).year());
  for (int y = this_year; y < this_year + 9; ++y) {
    if (auto found = valid(y, m, day, at); found && local_days(found->date) >= today_) {
      found->guessed_year = true;
      return found;
    }
  }
  return std::nullopt;
}

std::optional<Day> DayReader::inYearAt(std::size_t at, const Day& day) const {
  const Token token = tokenAt(text_, at);
  if (!token.isNumber() || !token.spaced || token.range.length != 4) return std::nullopt;
  const int y = numberOf(token.lower);
  if (y < 1900 || y >= 2200 || !stopsAt(text_, token.end()) || byteAt(text_, token.end()) == ':') {
    return std::nullopt;
  }
  return valid(y, static_cast<int>(static_cast<unsigned>(day.date.month())),
               static_cast<int>(static_cast<unsigned>(day.date.day())), token.end());
}

Day DayReader::onWeekday(const Day& day, int weekday) const {
  // Within six years most days fall on each weekday.
  constexpr int kNear = 6;
  const year this_year = year_month_day(today_).year();
  std::optional<Day> nearest;
  days distance{};
  for (int y = kNear; y >= -kNear; --y) {
    const year_month_day date =
        (this_year + std::chrono::years(y)) / day.date.month() / day.date.day();
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

Day DayReader::next(int weekday, bool after_today, std::size_t end) const {
  const int today = static_cast<int>(std::chrono::weekday(today_).c_encoding());
  int distance = (weekday - today + 7) % 7;
  if (distance == 0 && after_today) distance = 7;
  return {end, year_month_day(today_ + days(distance))};
}

Day DayReader::withPart(Day day) const {
  const Token token = tokenAt(text_, day.end);
  const PartOfDay part = partOfDay(token.lower);
  if (part != PartOfDay::unknown && token.lower != "tonight") {
    day.part = part;
    day.end = token.end();
  }
  return day;
}

std::optional<Day> DayReader::read(std::size_t at) const {
  const Token token = tokenAt(text_, at);
  if (token.isNumber()) {
    if (auto day = numeric(token)) return day;
    return dayFirst(token);
  }
  if (!token.isWord()) return std::nullopt;
  const DateWord word = dateWord(token.lower);
  switch (word.kind) {
    case Kind::month:
      return monthFirst(token, word);
    case Kind::weekday:
      return weekday(token, word);
    case Kind::qualifier:
      return qualified(token, word.value);
    case Kind::day:
    case Kind::after:
      return relative(token, word);
    default:
      return std::nullopt;
  }
}

// "2026-05-03", "2026/5/3", "3/5/2026", "03.05.26", "3.5." with a time beside it.
std::optional<Day> DayReader::numeric(const Token& first) const {
  const char mark = byteAt(text_, first.end());
  if (mark != '-' && mark != '/' && mark != '.') return std::nullopt;
  std::size_t end = 0;
  const int second = readDigits(text_, first.end() + 1, 1, 2, end);
  if (second < 0) return std::nullopt;
  const std::size_t second_length = end - first.end() - 1;
  const int leading = numberOf(first.lower);
  const char second_mark = byteAt(text_, end);
  if (first.range.length == 4) {
    if (second_mark != mark || (mark == '.' && !year_first_)) return std::nullopt;
    const int day = readDigits(text_, end + 1, 1, 2, end);
    const char after = byteAt(text_, end);
    // The time of an ISO 8601 stamp follows behind a "T".
    const bool stamp = (after == 'T' || after == 't') && isDigit(byteAt(text_, end + 1));
    if (day < 0 || leading < 1500 || leading > 2199 || !(stamp || stopsAt(text_, end))) {
      return std::nullopt;
    }
    return valid(leading, second, day, end);
  }
  if (first.range.length > 2) return std::nullopt;
  const bool swap = mark == '/' || mark == '-' ? month_first_ ? second <= 31 && leading <= 12
                                                              : second > 12 && leading <= 12
                                               : false;
  const int day = swap ? second : leading;
  const int m = swap ? leading : second;
  if (second_mark == mark && isDigit(byteAt(text_, end + 1))) {
    std::size_t stop = 0;
    const int y = readDigits(text_, end + 1, 2, 4, stop);
    const std::size_t length = y < 0 ? 0 : stop - end - 1;
    if (y < 0 || length == 3 || !stopsAt(text_, stop)) return std::nullopt;
    if (length == 4) return y < 1500 || y > 2199 ? std::nullopt : valid(y, m, day, stop);
    // Two digits for the year are a version or a score as well, unless written with care.
    const bool careful = first.range.length == 2 && second_length == 2;
    if (mark == '/' || (mark == '.' && careful && dotted_years_)) {
      return valid(2000 + y, m, day, stop);
    }
    return std::nullopt;
  }
  // "3/5 at 5pm", "3.5. um 14 Uhr".
  if (mark == '-' || (mark == '.' && second_mark != '.')) return std::nullopt;
  if (mark == '.') ++end;
  if (!stopsAt(text_, end)) return std::nullopt;
  auto found = withYear(day, m, end, false);
  if (found) found->needs_time = true;
  return found;
}

// "3 May", "3rd of May 2026", "3. Mai", "3-May-2026", "3–5 May".
std::optional<Day> DayReader::dayFirst(const Token& first) const {
  const int day = numberOf(first.lower);
  if (first.range.length > 2 || day < 1 || day > 31) return std::nullopt;
  bool ordinal = false;
  Token token = tokenAt(text_, first.end());
  if (token.isWord() && !token.spaced && isOrdinal(token.lower)) {
    ordinal = true;
    token = tokenAt(text_, token.end());
  } else if (token.is('.') && !token.spaced) {
    token = tokenAt(text_, token.end());
  }
  const bool dash = token.is('-') || token.is(U'–');
  if (dash || token.lower == "to" || token.lower == "bis") {
    const Token last = tokenAt(text_, token.end());
    const Token after = tokenAt(text_, last.end());
    if (last.isNumber() && last.range.length <= 2) {
      token = after.is('.') && !after.spaced ? tokenAt(text_, after.end()) : after;
    } else if (dash) {
      token = last;
    }
  }
  if (token.lower == "of") token = tokenAt(text_, token.end());
  if (!token.isWord()) return std::nullopt;
  const DateWord month = dateWord(token.lower);
  if (month.kind != Kind::month) return std::nullopt;
  std::size_t end = token.end();
  if (month.weak && byteAt(text_, end) == '.' && token.lower != "may" &&
      (tokenAt(text_, end + 1).isNumber() || byteAt(text_, end + 1) != ' ')) {
    ++end;
  }
  if (byteAt(text_, end) == '-' && isDigit(byteAt(text_, end + 1))) ++end;
  return withYear(day, month.value, end, month.weak && !token.capital && !ordinal);
}

// "May 3rd, 2026", "Dec. 12", "May 3-5".
std::optional<Day> DayReader::monthFirst(const Token& first, const DateWord& month) const {
  Token token = tokenAt(text_, first.end());
  if (token.is('.') && month.weak && first.lower != "may" && first.lower != "march") {
    token = tokenAt(text_, token.end());
  }
  if (token.lower == "the") token = tokenAt(text_, token.end());
  if (!token.isNumber() || !token.spaced || token.range.length > 2) return std::nullopt;
  const int day = numberOf(token.lower);
  std::size_t end = token.end();
  bool ordinal = false;
  if (const Token ending = tokenAt(text_, end);
      ending.isWord() && !ending.spaced && isOrdinal(ending.lower)) {
    ordinal = true;
    end = ending.end();
  }
  if (const Token dash = tokenAt(text_, end); dash.is('-') || dash.is(U'–')) {
    const Token last = tokenAt(text_, dash.end());
    if (last.isNumber() && last.range.length <= 2 && byteAt(text_, last.end()) != ':') {
      end = last.end();
    }
  }
  const char after = byteAt(text_, end);
  if (!stopsAt(text_, end) || (after == ':' && isDigit(byteAt(text_, end + 1)))) {
    return std::nullopt;
  }
  return withYear(day, month.value, end, month.weak && !first.capital && !ordinal);
}

// "Fri 3 May", "Friday", "Sat at 8pm".
std::optional<Day> DayReader::weekday(const Token& first, const DateWord& word) const {
  std::size_t end = first.end();
  std::size_t after = end;
  if (word.weak && byteAt(text_, after) == '.') ++after;
  Token token = tokenAt(text_, after);
  if (token.is(',')) token = tokenAt(text_, token.end());
  if (token.lower == "the" || token.lower == "den" || token.lower == "le") {
    token = tokenAt(text_, token.end());
  }
  if (token.isNumber() || dateWord(token.lower).kind == Kind::month) {
    auto date = read(token.range.start);
    if (date) {
      date->needs_time = false;
      return date->guessed_year ? onWeekday(*date, word.value) : date;
    }
  }
  // "so" and "do" are words, "sat" and "sun" too: they count before a time, when capitalised.
  if (word.weak && (!first.capital || first.range.length < 3)) return std::nullopt;
  Day day = withPart(next(word.value, false, end));
  day.needs_time = word.weak;
  return day;
}

// "next Monday", "this evening", "last week".
std::optional<Day> DayReader::qualified(const Token& first, int direction) const {
  const Token token = tokenAt(text_, first.end());
  const DateWord word = dateWord(token.lower);
  if (!token.isWord() || !token.spaced) return std::nullopt;
  if (word.kind == Kind::weekday && (!word.weak || token.range.length >= 3)) {
    Day day = next(word.value, direction > 0, token.end());
    if (direction < 0) {
      day = next(word.value, true, token.end());
      day.date = year_month_day(local_days(day.date) - days(7));
      if (local_days(day.date) == today_) day.date = year_month_day(today_ - days(7));
    }
    return withPart(day);
  }
  if (direction <= 0 && partOfDay(token.lower) != PartOfDay::unknown) {
    const bool past = direction < 0;
    if (past && token.lower != "night") return std::nullopt;
    return Day{token.end(), year_month_day(today_ - days(past ? 1 : 0)), partOfDay(token.lower)};
  }
  if (direction == 0 || word.kind != Kind::unit) return std::nullopt;
  year_month_day date(today_);
  if (word.value == kWeek) {
    date = year_month_day(today_ + days(7 * direction));
  } else if (word.value == kMonth) {
    date += std::chrono::months(direction);
  } else if (word.value == kYear) {
    date += std::chrono::years(direction);
  } else {
    return std::nullopt;
  }
  if (!date.ok()) date = date.year() / date.month() / std::chrono::last;
  return Day{token.end(), date};
}

// "tomorrow evening", "tonight", "day after tomorrow".
std::optional<Day> DayReader::relative(const Token& first, const DateWord& word) const {
  if (word.kind == Kind::after) {
    const Token middle = tokenAt(text_, first.end());
    const Token last = tokenAt(text_, middle.end());
    if (middle.lower != "after" || last.lower != "tomorrow") return std::nullopt;
    return withPart({last.end(), year_month_day(today_ + days(2))});
  }
  // German "Morgen" with a capital is the morning, and a greeting.
  if (word.weak && first.capital) return std::nullopt;
  Day day = withPart({first.end(), year_month_day(today_ + days(word.value))});
  if (first.lower == "tonight") day.part = PartOfDay::evening;
  return day;
}

}  // namespace marbelot::detection
