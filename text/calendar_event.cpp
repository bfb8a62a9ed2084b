#include "text/calendar_event.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>

#include "platform/ascii.h"
#include "platform/detection.h"
#include "platform/locale.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr double minute = 60, hour = 3600, day = 86400;
constexpr std::size_t summaryCharacters = 120;
constexpr int noonHour = 12;

// Seconds since 1970 of what stands on a clock in UTC.
double onUtcClock(const locale::LocalTime& time) {
  const std::chrono::sys_days date = std::chrono::year(time.year) / time.month / time.day;
  return static_cast<double>(date.time_since_epoch().count()) * day + time.hour * hour +
         time.minute * minute + time.second;
}

double onUserClock(const locale::LocalTime& time) {
  const double asUtc = onUtcClock(time);
  const auto offsetAt = [](double moment) {
    return onUtcClock(locale::localTime(moment)) - std::floor(moment);
  };
  // No zone changes its clock twice in two days. In between the offset before the change comes
  // first, and is the one for a time that is left out.
  const double before = asUtc - offsetAt(asUtc - day);
  if (before + offsetAt(before) == asUtc) return before;
  const double after = asUtc - offsetAt(asUtc + day);
  return after + offsetAt(after) == asUtc ? after : before;
}

// Takes a number of so many digits, and what stands before it.
std::optional<int> takeNumber(std::string_view& from, std::string_view prefix, std::size_t digits) {
  if (!from.starts_with(prefix) || from.size() < prefix.size() + digits) return std::nullopt;
  const char* first = from.data() + prefix.size();
  int number = 0;
  const auto [stop, error] = std::from_chars(first, first + digits, number);
  if (error != std::errc() || stop != first + digits || number < 0) return std::nullopt;
  from.remove_prefix(prefix.size() + digits);
  return number;
}

// "Z", "+02:00" or "-0330" in seconds; none when it is anything else.
std::optional<double> offsetOf(std::string_view zone) {
  if (zone == "Z") return 0;
  if (zone.empty() || (zone[0] != '+' && zone[0] != '-')) return std::nullopt;
  const double sign = zone[0] == '-' ? -1 : 1;
  zone.remove_prefix(1);
  const auto hours = takeNumber(zone, "", 2);
  const auto minutes = takeNumber(zone, zone.starts_with(':') ? ":" : "", 2);
  if (!hours || !minutes || !zone.empty()) return std::nullopt;
  return sign * (*hours * hour + *minutes * minute);
}

std::string escaped(std::string_view value) {
  std::string result;
  result.reserve(value.size());
  for (std::size_t at = 0; at < value.size(); ++at) {
    const char c = value[at];
    if (c == '\r' || c == '\n') {
      result += "\\n";
      if (c == '\r' && at + 1 < value.size() && value[at + 1] == '\n') ++at;
    } else {
      if (c == '\\' || c == ';' || c == ',') result += '\\';
      result += c;
    }
  }
  return result;
}

std::string summaryOf(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
    const std::string_view line = text::trimmedBlanks(text.substr(at, end - at));
    if (!line.empty()) {
      const std::size_t bytes = text::prefixBytes(line, summaryCharacters);
      return std::string(line.substr(0, bytes)) + (bytes < line.size() ? "…" : "");
    }
    at = end + 1;
  }
  return {};
}

// "20260503T123000Z"
std::string stamp(double moment) {
  const std::chrono::sys_seconds seconds{
      std::chrono::seconds(static_cast<std::int64_t>(std::floor(moment)))};
  const auto date = std::chrono::floor<std::chrono::days>(seconds);
  const std::chrono::year_month_day ymd(date);
  const std::chrono::hh_mm_ss time(seconds - date);
  std::array<char, 32> buffer{};
  const int length = std::snprintf(
      buffer.data(), buffer.size(), "%04d%02u%02uT%02d%02d%02dZ", static_cast<int>(ymd.year()),
      static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
      static_cast<int>(time.seconds().count()));
  return {buffer.data(), static_cast<std::size_t>(length)};
}

}  // namespace

std::optional<double> momentOf(std::string_view value) {
  locale::LocalTime time{.hour = noonHour};
  const auto year = takeNumber(value, "", 4);
  const auto month = takeNumber(value, "-", 2);
  const auto dayOfMonth = takeNumber(value, "-", 2);
  if (!year || !month || !dayOfMonth) return std::nullopt;
  time.year = *year;
  time.month = *month;
  time.day = *dayOfMonth;
  if (value.empty()) return onUserClock(time);
  const auto hours = takeNumber(value, "T", 2);
  const auto minutes = takeNumber(value, ":", 2);
  if (!hours || !minutes) return std::nullopt;
  time.hour = *hours;
  time.minute = *minutes;
  time.second = value.starts_with(':') ? takeNumber(value, ":", 2).value_or(0) : 0;
  if (value.empty()) return onUserClock(time);
  const auto offset = offsetOf(value);
  if (!offset) return std::nullopt;
  return onUtcClock(time) - *offset;
}

std::string calendarEvent(std::string_view text, double now, std::string_view uid) {
  double start = now + hour;
  if (const auto date =
          firstDetection(text, static_cast<unsigned>(DetectionKind::date), {.now = now}))
    start = momentOf(date->value).value_or(start);
  std::string event =
      "BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Marbelot//EN\nCALSCALE:GREGORIAN\n"
      "METHOD:PUBLISH\nBEGIN:VEVENT\nUID:";
  event += uid;
  event += "@marbelot\nDTSTAMP:" + stamp(now);
  event += "\nDTSTART:" + stamp(start);
  event += "\nDTEND:" + stamp(start + hour);
  event += "\nSUMMARY:" + escaped(summaryOf(text));
  event += "\nDESCRIPTION:" + escaped(text);
  event += "\nEND:VEVENT\nEND:VCALENDAR";
  return event;
}

std::string newUuid() {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::random_device random;
  std::string uuid = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  for (char& c : uuid) {
    if (c == 'x') {
      c = digits[random() & 15U];
    } else if (c == 'y') {
      c = digits[8U + (random() & 3U)];
    }
  }
  return uuid;
}

}  // namespace marbelot
