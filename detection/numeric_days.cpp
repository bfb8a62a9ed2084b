// Days written with digits alone.
#include "detection/day_reader.h"

namespace marbelot::detection {
namespace {

// The digits at `at` as a number; `end` moves past them. -1 unless there are `least` to `most`.
int readDigits(const DateSource& source, std::size_t at, std::size_t least, std::size_t most,
               std::size_t& end) {
  std::size_t stop = at;
  while (isDigit(source.byte(stop)) && stop - at <= most) ++stop;
  if (stop - at < least || stop - at > most) return -1;
  end = stop;
  return numberOf(source.text.substr(at, stop - at));
}

bool isYear(int year) { return year >= 1500 && year < 2200; }

}  // namespace

// "2026-05-03", "2026/5/3", "3/5/2026", "03.05.26", "05/2026"; "3.5." with a time beside it.
std::optional<Day> DayReader::numeric(const Token& first) const {
  const char mark = source_.byte(first.end());
  if (mark != '-' && mark != '/' && mark != '.') return std::nullopt;
  const int leading = numberOf(first.lower);
  const std::size_t behind = first.end() + 1;
  if (first.range.length == 4) return yearFirst(leading, mark, behind);
  if (first.range.length > 2) return std::nullopt;
  std::size_t end = 0;
  if (const int year = readDigits(source_, behind, 4, 4, end);
      year >= 1900 && isYear(year) && mark == '/' && source_.stopsAt(end)) {
    return valid(year, leading, 1, end);
  }
  const int second = readDigits(source_, behind, 1, 2, end);
  if (second < 0) return std::nullopt;
  const char secondMark = source_.byte(end);
  if (secondMark == mark && isDigit(source_.byte(end + 1))) {
    const bool careful = first.range.length == 2 && end - behind == 2;
    return dayMonthYear(leading, second, mark, end + 1, careful);
  }
  // "3/5 at 5pm", "3.5. um 14 Uhr".
  if (mark == '-' || (mark == '.' && secondMark != '.')) return std::nullopt;
  if (mark == '.') ++end;
  if (!source_.stopsAt(end)) return std::nullopt;
  const bool swap = mark == '/' && leading <= 12 && (month_first_ || second > 12);
  auto found = swap ? withYear(second, leading, end, Year::optional)
                    : withYear(leading, second, end, Year::optional);
  if (found) found->needsTime = true;
  return found;
}

std::optional<Day> DayReader::yearFirst(int year, char mark, std::size_t at) const {
  std::size_t end = 0;
  const int month = readDigits(source_, at, 1, 2, end);
  if (month < 0 || source_.byte(end) != mark || (mark == '.' && !year_first_)) return std::nullopt;
  const int day = readDigits(source_, end + 1, 1, 2, end);
  const char after = source_.byte(end);
  // The time of an ISO 8601 stamp follows behind a "T".
  const bool stamp = (after == 'T' || after == 't') && isDigit(source_.byte(end + 1));
  if (day < 0 || !isYear(year) || !(stamp || source_.stopsAt(end))) return std::nullopt;
  return valid(year, month, day, end);
}

// The rest of "3/5/2026", whose year stands at `at`; `careful` when both numbers have two digits.
std::optional<Day> DayReader::dayMonthYear(int first, int second, char mark, std::size_t at,
                                           bool careful) const {
  std::size_t end = 0;
  const int told = readDigits(source_, at, 2, 4, end);
  const std::size_t digits = told < 0 ? 0 : end - at;
  if (told < 0 || digits == 3 || !source_.stopsAt(end)) return std::nullopt;
  const bool swap = first <= 12 && (month_first_ ? second <= 31 : second > 12);
  const int day = swap ? second : first;
  const int month = swap ? first : second;
  if (digits == 4) return isYear(told) ? valid(told, month, day, end) : std::nullopt;
  // Two digits for the year are a version or a score as well, unless written with care. No version
  // has leading zeros.
  const bool zero = first < 10 || second < 10;
  const bool dated = mark == '/' || (careful && (mark == '-' || dotted_years_ || zero));
  return dated ? valid(fullYear(told), month, day, end) : std::nullopt;
}

// "2026年5月3日".
std::optional<Day> DayReader::ideographic(const Token& first) const {
  const Token year = source_.after(first);
  if (first.range.length != 4 || year.lower != "年") return std::nullopt;
  const Token month = source_.after(year);
  const Token monthMark = source_.after(month);
  const Token day = source_.after(monthMark);
  const Token dayMark = source_.after(day);
  if (!month.isNumber() || !day.isNumber() || monthMark.lower != "月") return std::nullopt;
  // The weekday or more words may follow without a blank.
  if (!source_.text.substr(dayMark.range.start).starts_with("日")) return std::nullopt;
  const std::size_t end = dayMark.range.start + std::string_view("日").size();
  return valid(numberOf(first.lower), numberOf(month.lower), numberOf(day.lower), end);
}

int DayReader::fullYear(int twoDigits) const {
  const int now = static_cast<int>(std::chrono::year_month_day(today_).year());
  const int year = now - now % 100 + twoDigits;
  // Nobody plans further ahead than that.
  constexpr int farthest = 30;
  return year > now + farthest ? year - 100 : year;
}

}  // namespace marbelot::detection
