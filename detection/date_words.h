// The vocabulary of dates in English, German and French. All words are looked up in lower case.
#pragma once

#include <string>
#include <string_view>

namespace marbelot::detection {

struct DateWord {
  enum class Kind {
    none,
    month,      // value 1 to 12
    weekday,    // value 0 (Sunday) to 6
    day,        // value: days from today
    qualifier,  // "next", "this", "last": value 1, 0, -1
    count,      // "two": value 2
    within,     // "in" of "in two weeks"
    unit,       // value: a TimeUnit
    noon,       // "noon", "midnight": value is the hour
    after,      // "day" of "day after tomorrow"
  };
  Kind kind = Kind::none;
  int value = 0;
  // An abbreviation or an everyday word too ("sat", "may"): needs more beside it to count.
  bool weak = false;
};

enum TimeUnit : int { kMinute, kHour, kDay, kWeek, kMonth, kYear };

// The part of the day that a word names, with which "at 5" is read.
enum class PartOfDay { unknown, morning, evening };

DateWord dateWord(const std::string& word);
PartOfDay partOfDay(const std::string& word);  // "morning", "evening"; "tonight" is both a day

// Whether a word with these first two bytes (in lower case) and this length may start a date: a
// first look that spares most words the look-up.
bool mayStartDate(std::string_view word);

// The offset of a time zone from UTC as ISO 8601 writes it, "Z" or "+02:00"; empty when unknown.
std::string zoneOffset(const std::string& abbreviation);

}  // namespace marbelot::detection
