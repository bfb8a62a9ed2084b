// Reads moments told by how far they are away: "in two weeks", "half an hour ago", "3 days after
// tomorrow".
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

#include "detection/day_reader.h"

namespace marbelot::detection {

struct Moment {
  std::size_t end = 0;  // bytes from the start of the text
  std::chrono::year_month_day date;
  bool toTheMinute = false;  // else a day
  int hour = 0;
  int minute = 0;
};

// `now` in seconds since 1970.
std::optional<Moment> readDistance(const DayReader& days, double now, std::size_t at);

}  // namespace marbelot::detection
