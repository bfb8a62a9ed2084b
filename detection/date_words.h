// The vocabulary of dates in English, German and French, and the names of months and weekdays in
// the user's language. All words are looked up in lower case.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace marbelot::detection {

struct DateWord {
  enum class Kind {
    none,
    month,      // value 1 to 12
    weekday,    // value 0 (Sunday) to 6
    day,        // value: days from today
    qualifier,  // "next", "this", "last": value 1, 0, -1
    count,      // "two": value 2
    ordinal,    // "second": value 2; tens ("thirtieth") too
    within,     // "in" of "in two weeks", value 1, and German "vor", value -1
    unit,       // value: a TimeUnit
    noon,       // "noon", "midnight": value is the hour
    fraction,   // "half", "quarter": value in minutes, of an hour
    edge,       // "end" of the month: value 1, "start": value 0
    feast,      // "christmas", which a day or an eve follows: value is an index of its own
  };
  Kind kind = Kind::none;
  int value = 0;
  // An abbreviation or an everyday word too ("sat", "may"): needs more beside it to count.
  bool weak = false;
};

// Their numbers are what the table of words holds.
struct TimeUnits {
  enum Unit : int { second, minute, hour, day, week, fortnight, month, year };
};
using TimeUnit = TimeUnits::Unit;
struct Feasts {
  enum Feast : int { newYear, christmas, valentine, boxing };
};
using Feast = Feasts::Feast;

// The part of the day that a word names, with which "at 5" is read.
enum class PartOfDay { unknown, morning, afternoon, evening, night };

PartOfDay partOfDay(const std::string& word);  // "morning"; "tonight" is both a part and a day
// The middle of the part, which stands for it where no hour is told.
int hourOf(PartOfDay part);
// An hour of the twelve-hour clock in that part of the day: 8 in the evening is 20.
int hourIn(PartOfDay part, int hour);

class DateWords {
 public:
  explicit DateWords(const std::string& language);

  DateWord find(const std::string& word) const;

  // Whether a word with these first and last bytes and this length may start a date: a first look
  // that spares most words the look-up.
  bool mayStart(std::string_view word) const;

 private:
  void addNames(const std::string& language);

  std::unordered_map<std::string, DateWord> table_;
  std::array<std::uint32_t, 4096> lengths_{};
};

// The words for users of a language (ISO 639), made when first asked for and kept.
const DateWords& dateWords(const std::string& language);

}  // namespace marbelot::detection
