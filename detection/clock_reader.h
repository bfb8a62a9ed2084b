// Reads times of day: "5pm", "5:30 p.m.", "14:30:15", "14.30 Uhr", "14h30", "5 o'clock", "2–4 pm".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "detection/date_words.h"

namespace marbelot::detection {

struct Clock {
  std::size_t end = 0;  // bytes from the start of the text
  int hour = 0;
  int minute = 0;
  int second = -1;      // -1: not given
  std::string zone;     // "Z", "+02:00", or empty
  bool marked = false;  // enough for a time wherever it stands
};

// What stands around decides how little is enough for a time. "pm", "Uhr", a zone and the like
// mark one.
enum class ClockStyle {
  colon,  // "14:30", "5 pm"
  hour,   // "5" too
};

std::optional<Clock> readClock(std::string_view text, std::size_t at, ClockStyle style,
                               PartOfDay part = PartOfDay::unknown);

// What a "-02:00" behind a blank is: the end of a range, or after seconds the zone of a stamp.
enum class Spaced { mayBeRange, stamp };

// Past a zone at `at` ("Z", "UTC", "+02:00", " +0200", " CET", "GMT+1"), which goes into `zone`.
std::size_t readZone(std::string_view text, std::size_t at, std::string& zone, Spaced spaced);

}  // namespace marbelot::detection
