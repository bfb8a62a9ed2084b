// Reads calendar days: "2026-05-03", "3/5/2026", "May 3rd", "3. Mai 2026", "next Monday", "the
// first Friday of June". Of a range it is the first day.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "detection/date_source.h"

namespace marbelot::detection {

struct Day {
  std::size_t end = 0;  // bytes from the start of the text
  std::chrono::year_month_day date;
  PartOfDay part = PartOfDay::unknown;
  bool needsTime = false;    // too little for a date unless a time of day stands beside it
  bool guessedYear = false;  // the text gives none
  bool weekday = false;      // nothing but the name of a weekday
  bool weekdayTold = false;  // that name and a date
  bool period = false;       // a week or a month, which a day of it may follow
};

class DayReader {
 public:
  // `today` is what relative days are reckoned from; `region` decides the order in 3/5/2026.
  DayReader(DateSource source, const std::string& region, std::chrono::local_days today);

  std::optional<Day> read(std::size_t at) const;
  // The same day in the year at `at`, as some stamps have it behind the time.
  std::optional<Day> inYearAt(std::size_t at, const Day& day) const;
  // "on the 15th": the next day of that number, if only that can be meant.
  std::optional<Day> ofAnyMonth(std::size_t at) const;

  const DateSource& source() const { return source_; }
  std::chrono::local_days today() const { return today_; }

 private:
  using Date = std::optional<Day>;

  Date single(std::size_t at) const;
  Date startingWithNumber(const Token& first) const;
  Date startingWithWord(const Token& first) const;

  // Dates of digits, in numeric_days.cpp.
  Date numeric(const Token& first) const;
  Date ideographic(const Token& first) const;
  Date yearFirst(int year, char mark, std::size_t at) const;
  Date dayMonthYear(int first, int second, char mark, std::size_t at, bool careful) const;

  // Dates with the name of a month, in named_days.cpp.
  Date dayFirst(std::size_t at) const;
  Date monthFirst(const Token& first, const DateWord& month) const;
  Date monthAndYear(int month, const Token& behind, bool of) const;
  Date yearThenMonth(const Token& year) const;
  // A day with an optional year at `at`; without one it is the next such day.
  enum class Year { optional, shortToo, required };
  Date withYear(int day, int month, std::size_t at, Year wanted) const;
  Date upcoming(int day, int month, std::size_t end) const;
  std::size_t pastMoreDays(std::size_t at) const;
  int fullYear(int twoDigits) const;

  // Days told by others, in relative_days.cpp.
  Date weekday(const Token& first, const DateWord& word) const;
  Date qualified(const Token& first, int direction) const;
  Date relative(const Token& first, const DateWord& word) const;
  Date besideTomorrow(const Token& first) const;
  Date nth(int which, std::size_t at) const;
  Date feast(const Token& first, int which) const;
  Date edge(const Token& first, bool last) const;
  Date weekdayIn(Day period, std::size_t at) const;
  Date someMonth(std::size_t at) const;

  // The day of an unnamed year that falls on `weekday`, nearest to today; as it is when none is
  // near.
  Day onWeekday(const Day& day, int weekday) const;
  Day next(int weekday, std::size_t end) const;
  Day withPart(Day day) const;
  Day withWeekdayBehind(Day day) const;
  Day pastRange(Day day) const;
  Date valid(int year, int month, int day, std::size_t end) const;

  DateSource source_;
  bool month_first_;
  bool dotted_years_;  // "3.5.26" is a date there
  bool year_first_;    // "2026.5.3" is a date there, elsewhere a version
  std::chrono::local_days today_;
};

}  // namespace marbelot::detection
