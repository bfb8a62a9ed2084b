// Reads how many ("3", "a couple of", "two and a half") and which one ("3rd", "twenty-fourth").
#pragma once

#include <cstddef>
#include <optional>

#include "detection/date_source.h"

namespace marbelot::detection {

struct Count {
  std::size_t end = 0;  // bytes from the start of the text
  double value = 0;
};

// A number of up to four digits or of one or two words, an article, a half.
std::optional<Count> readCount(const DateSource& source, std::size_t at);

struct Ordinal {
  std::size_t end = 0;
  int value = 0;
  bool spelled = false;
};

std::optional<Ordinal> readOrdinal(const DateSource& source, std::size_t at);

struct Unit {
  std::size_t end = 0;
  TimeUnit unit = TimeUnit::day;
};

// "weeks", "hrs", and right behind a number "h", "m", "d", "w" and "s".
std::optional<Unit> readUnit(const DateSource& source, std::size_t at);

}  // namespace marbelot::detection
