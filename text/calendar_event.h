// A text as an event for the calendar, in the iCalendar format (RFC 5545) but for its line ends.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace marbelot {

// The moment that a date's value stands for (platform/detection.h), in seconds since 1970: on the
// user's clock where the value has no offset. A day without a time is its noon. A time that a clock
// change leaves out is as much later, of one that comes twice the first counts. None when it is no
// such value.
std::optional<double> momentOf(std::string_view dateValue);

// The event file's text. It starts at the first date in the text, else an hour from `now` (seconds
// since 1970), and lasts an hour. `uid`: a UUID in upper case. Takes time for a large text.
std::string calendarEvent(std::string_view text, double now, std::string_view uid);

// A new random UUID (RFC 4122, version 4) in upper case.
std::string newUuid();

}  // namespace marbelot
