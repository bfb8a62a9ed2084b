// Local time by the C library, which knows the zone and its rules on every system.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "platform/locale.h"
#include "platform/text.h"

namespace marbelot {

locale::LocalTime locale::localTime(double seconds) {
  // Year 1 to 9999, whatever the zone.
  constexpr double first = -62135596800.0 + 86400, last = 253402300799.0 - 86400;
  if (std::isnan(seconds)) seconds = 0;
  const auto time = static_cast<std::time_t>(std::floor(std::clamp(seconds, first, last)));
  tzset();  // localtime_r alone does not notice that the user has moved to another zone
  std::tm local{};
  localtime_r(&time, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
          local.tm_hour,        local.tm_min,     local.tm_sec};
}

std::string text::fileTimestamp(double seconds) {
  const locale::LocalTime time = locale::localTime(seconds);
  char stamp[128];
  std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d at %02d.%02d.%02d", time.year, time.month,
                time.day, time.hour, time.minute, time.second);
  return stamp;
}

double text::now() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace marbelot
