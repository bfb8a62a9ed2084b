// What the system knows of its user: where, in which language and in which time zone. Stateless and
// safe to call from any thread.
#pragma once

#include <string>

namespace marbelot::locale {

// ISO 3166 code of the country the user lives in, "US" when nothing tells.
const std::string& region();

// ISO 639 code of the user's language, "en" when nothing tells.
const std::string& language();

// A moment on the user's clock and calendar, the Gregorian one.
struct LocalTime {
  int year = 1970;
  int month = 1;  // 1 to 12
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

// `seconds` since 1970-01-01 00:00 UTC. What has no four-digit year goes to the nearest that has,
// and what is no number to 1970. Follows when the user moves to another zone.
LocalTime localTime(double seconds);

}  // namespace marbelot::locale
