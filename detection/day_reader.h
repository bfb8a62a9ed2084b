// Reads calendar days: "2026-05-03", "3/5/2026", "May 3rd", "3. Mai 2026", "next Monday".
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "detection/date_words.h"
#include "detection/tokens.h"

namespace marbelot::detection {

struct Day {
  std::size_t end = 0;  // bytes from the start of the text
  std::chrono::year_month_day date;
  PartOfDay part = PartOfDay::unknown;
  bool needs_time = false;    // too little for a date unless a time of day stands beside it
  bool guessed_year = false;  // the text gives none
};

class DayReader {
 public:
  // `today` is what relative days are reckoned from; `region` decides the order in 3/5/2026.
  DayReader(std::string_view text, const std::string& region, std::chrono::local_days today);

  std::optional<Day> read(std::size_t at) const;
  // The same day in the year at `at`, as some stamps have it behind the time.
  std::optional<Day> inYearAt(std::size_t at, const Day& day) const;
  std::chrono::local_days today() const { return today_; }

 private:
  std::optional<Day> numeric(const Token& first) const;
  std::optional<Day> dayFirst(const Token& first) const;
  std::optional<Day> monthFirst(const Token& first, const DateWord& month) const;
  std::optional<Day> weekday(const Token& first, const DateWord& word) const;
  std::optional<Day> qualified(const Token& first, int direction) const;
  std::optional<Day> relative(const Token& first, const DateWord& word) const;

  // A day with an optional year at `at`; without one it is the next such day.
  std::optional<Day> withYear(int day, int month, std::size_t at, bool needs_year) const;
  // The day of an unnamed year that falls on `weekday`, nearest to today; as it is when none is
  // near.
  Day onWeekday(const Day& day, int weekday) const;
  Day next(int weekday, bool after_today, std::size_t end) const;
  Day withPart(Day day) const;
  std::optional<Day> valid(int year, int month, int day, std::size_t end) const;

  std::string_view text_;
  bool month_first_;
  bool dotted_years_;  // "3.5.26" is a date there
  bool year_first_;    // "2026.5.3" is a date there, elsewhere a version
  std::chrono::local_days today_;
};

}  // namespace marbelot::detection
