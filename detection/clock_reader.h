// Reads times of day: "5pm", "5:30 p.m.", "14:30:15", "14.30 Uhr", "14h30", "5 o'clock", "2–4 pm",
// "half past six", "seven in the evening", "1800 hours", "noon".
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "detection/date_source.h"

namespace marbelot::detection {

struct Clock {
  std::size_t end = 0;  // bytes from the start of the text
  int hour = 0;
  int minute = 0;
  int second = -1;        // -1: not given
  std::string zone;       // as readZone has it, or empty
  bool colon = false;     // "14:30"
  bool marked = false;    // enough for a time wherever it stands
  bool settled = false;   // whether morning or afternoon is told
  bool midnight = false;  // the word, which is the end of a night rather than the start of a day
};

// What stands around decides how little is enough for a time. "pm", "Uhr", a zone and the like
// mark one.
enum class ClockStyle {
  colon,     // "14:30", "5 pm"
  hourWord,  // "15 h 30", "15 heures" too, which may be lengths of time
  hour,      // "5", "seven" too
};

std::optional<Clock> readClock(const DateSource& source, std::size_t at, ClockStyle style,
                               PartOfDay part = PartOfDay::unknown);

// "in the morning", "at night" at `at`: the part, whose end goes to `end`.
PartOfDay readPartOfDay(const DateSource& source, std::size_t at, std::size_t& end);

}  // namespace marbelot::detection
