#include "detection/zones.h"

#include <unicode/timezone.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unordered_map>

#include "detection/tokens.h"
#include "platform/ascii.h"

namespace marbelot::detection {
namespace {

using Names = std::unordered_map<std::string, std::string>;

std::string lookUp(const Names& names, const std::string& name) {
  const auto found = names.find(name);
  return found == names.end() ? std::string() : found->second;
}

// Abbreviations that mean one zone to most who write them; in capitals.
std::string abbreviatedZone(const std::string& name) {
  static const Names zones = {{"UTC", "Z"},
                              {"GMT", "Z"},
                              {"EST", "-05:00"},
                              {"EDT", "-04:00"},
                              {"CST", "-06:00"},
                              {"CDT", "-05:00"},
                              {"MST", "-07:00"},
                              {"MDT", "-06:00"},
                              {"PST", "-08:00"},
                              {"PDT", "-07:00"},
                              {"AKST", "-09:00"},
                              {"AKDT", "-08:00"},
                              {"HST", "-10:00"},
                              {"AST", "-04:00"},
                              {"ADT", "-03:00"},
                              {"NST", "-03:30"},
                              {"NDT", "-02:30"},
                              {"BRT", "-03:00"},
                              {"ART", "-03:00"},
                              {"WET", "+00:00"},
                              {"WEST", "+01:00"},
                              {"BST", "+01:00"},
                              {"CET", "+01:00"},
                              {"CEST", "+02:00"},
                              {"MEZ", "+01:00"},
                              {"MESZ", "+02:00"},
                              {"EET", "+02:00"},
                              {"EEST", "+03:00"},
                              {"SAST", "+02:00"},
                              {"MSK", "+03:00"},
                              {"IST", "+05:30"},
                              {"PKT", "+05:00"},
                              {"SGT", "+08:00"},
                              {"HKT", "+08:00"},
                              {"AWST", "+08:00"},
                              {"JST", "+09:00"},
                              {"KST", "+09:00"},
                              {"ACST", "+09:30"},
                              {"ACDT", "+10:30"},
                              {"AEST", "+10:00"},
                              {"AEDT", "+11:00"},
                              {"NZST", "+12:00"},
                              {"NZDT", "+13:00"},
                              {"ET", "America/New_York"},
                              {"CT", "America/Chicago"},
                              {"MT", "America/Denver"},
                              {"PT", "America/Los_Angeles"}};
  return lookUp(zones, name);
}

// "Eastern", with or without "Time" behind it.
std::string namedZone(const std::string& name) {
  static const Names zones = {{"eastern", "America/New_York"},
                              {"central", "America/Chicago"},
                              {"mountain", "America/Denver"},
                              {"pacific", "America/Los_Angeles"}};
  return lookUp(zones, name);
}

std::string isoOffset(char sign, int hours, int minutes) {
  char written[40];
  std::snprintf(written, sizeof written, "%c%02d:%02d", sign, hours, minutes);
  return written;
}

enum class Hours { both, either };  // digits of an offset: "+02:00", "+2" too

// Past an offset at `at`, which goes into `zone`; `at` when there is none.
std::size_t readOffset(std::string_view text, std::size_t at, Hours hours, std::string& zone) {
  constexpr std::string_view minusSign = "\u2212";
  const bool minus = text.substr(at, minusSign.size()) == minusSign;
  const char sign = minus ? '-' : byteAt(text, at);
  if (sign != '+' && sign != '-') return at;
  const std::size_t digits = at + (minus ? minusSign.size() : 1);
  std::size_t end = digits;
  while (isDigit(byteAt(text, end)) && end - digits < 5) ++end;
  const std::size_t count = end - digits;
  if (count != 2 && count != 4 && (count != 1 || hours == Hours::both)) return at;
  const int hour = numberOf(text.substr(digits, count == 1 ? 1 : 2));
  int minute = count == 4 ? numberOf(text.substr(digits + 2, 2)) : 0;
  if (const int told = twoDigits(text, end + 1, 59);
      count != 4 && byteAt(text, end) == ':' && told >= 0) {
    minute = told;
    end += 3;
  } else if (count != 4 && hours == Hours::both) {
    return at;
  }
  // The offsets in use: whole quarters of an hour.
  if (hour > 14 || minute > 59 || minute % 15 != 0 || isAlnum(byteAt(text, end))) return at;
  zone = isoOffset(sign, hour, minute);
  return end;
}

std::string written(std::string_view text, const Token& token) {
  return std::string(text.substr(token.range.start, token.range.length));
}

// The name of the zone behind its offset, as mail programs write it: "+0000 (UTC)".
std::size_t afterZoneName(std::string_view text, std::size_t at) {
  if (text.substr(at, 2) != " (") return at;
  const Token name = tokenAt(text, at + 2);
  const bool known = !name.spaced && !abbreviatedZone(written(text, name)).empty();
  return known && byteAt(text, name.end()) == ')' ? name.end() + 1 : at;
}

// "Eastern", "Eastern Time", "Eastern Standard Time" at the token.
std::size_t readName(std::string_view text, const Token& token, std::string& zone) {
  const std::string place = namedZone(token.lower);
  if (place.empty()) return token.range.start;
  zone = place;
  Token next = tokenAt(text, token.end());
  if (next.lower == "standard" || next.lower == "daylight") next = tokenAt(text, next.end());
  return next.lower == "time" ? next.end() : token.end();
}

// As readZone, without brackets.
std::size_t readBareZone(std::string_view text, std::size_t at, std::string& zone, Offset offset) {
  if (byteAt(text, at) == 'Z' && !isAlnum(byteAt(text, at + 1))) {
    zone = 'Z';
    return at + 1;
  }
  const Token token = tokenAt(text, at);
  if (!token.isWord()) {
    // "10:00-12:00" is a range unless more speaks for a stamp.
    const std::size_t sign = token.range.start;
    const bool colon = byteAt(text, sign + 3) == ':';
    if (!token.is('+') && colon && offset == Offset::mayBeRange) return at;
    const std::size_t end = readOffset(text, sign, Hours::both, zone);
    return end > sign ? afterZoneName(text, end) : at;
  }
  if (!token.capital) return at;
  if (token.range.length > 4) {
    const std::size_t end = readName(text, token, zone);
    return end > token.range.start ? end : at;
  }
  const std::string known = abbreviatedZone(written(text, token));
  if (known.empty()) return at;
  zone = known;
  return known == "Z" ? readOffset(text, token.end(), Hours::either, zone) : token.end();
}

}  // namespace

std::size_t readZone(std::string_view text, std::size_t at, std::string& zone, Offset offset) {
  const Token token = tokenAt(text, at);
  if (!token.is('(')) return readBareZone(text, at, zone, offset);
  std::string inside;
  const std::size_t end = readBareZone(text, token.end(), inside, Offset::stamp);
  if (inside.empty() || byteAt(text, end) != ')') return at;
  zone = inside;
  return end + 1;
}

std::string zoneOffset(const std::string& zone, std::chrono::local_seconds when) {
  if (zone.find('/') == std::string::npos) return zone;
  const std::unique_ptr<icu::TimeZone> place(
      icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)));
  std::int32_t raw = 0;
  std::int32_t summer = 0;
  UErrorCode error = U_ZERO_ERROR;
  const auto milliseconds = static_cast<UDate>(when.time_since_epoch().count()) * 1000;
  place->getOffset(milliseconds, true, raw, summer, error);
  if (U_FAILURE(error)) return {};
  const int minutes = (raw + summer) / 60000;
  return isoOffset(minutes < 0 ? '-' : '+', std::abs(minutes) / 60, std::abs(minutes) % 60);
}

}  // namespace marbelot::detection
