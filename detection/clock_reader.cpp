#include "detection/clock_reader.h"

#include <cstdio>

#include "detection/scan.h"
#include "detection/tokens.h"

namespace marbelot::detection {
namespace {

char byteAt(std::string_view text, std::size_t at) { return at < text.size() ? text[at] : '\0'; }

// Two digits at `at` up to `most`, not followed by a third; -1 for none.
int twoDigits(std::string_view text, std::size_t at, int most) {
  if (!isDigit(byteAt(text, at)) || !isDigit(byteAt(text, at + 1)) ||
      isDigit(byteAt(text, at + 2))) {
    return -1;
  }
  const int value = numberOf(text.substr(at, 2));
  return value <= most ? value : -1;
}

enum class Half { none, am, pm };

// "pm", "p.m.", "PM" at `at`, behind a blank or not.
Half readHalf(std::string_view text, std::size_t at, std::size_t& end) {
  std::size_t i = at;
  if (byteAt(text, i) == ' ') ++i;
  const char first = lower(byteAt(text, i));
  if (first != 'a' && first != 'p') return Half::none;
  const bool dots = byteAt(text, i + 1) == '.';
  const std::size_t m = i + 1 + dots;
  if (lower(byteAt(text, m)) != 'm') return Half::none;
  std::size_t after = m + 1;
  if (dots && byteAt(text, after) == '.') ++after;
  if (isAlnum(byteAt(text, after)) || byteAt(text, after) == '\'') return Half::none;
  // "7 am Markt": in lower case and apart, it is English only when no noun follows.
  if (first == 'a' && i > at && !dots && byteAt(text, i) == 'a') {
    const Token next = tokenAt(text, after);
    if (next.isWord() && next.capital && dateWord(next.lower).kind == DateWord::Kind::none) {
      return Half::none;
    }
  }
  end = after;
  return first == 'a' ? Half::am : Half::pm;
}

int hourOf(int hour, Half half) {
  if (half == Half::none) return hour;
  return hour % 12 + (half == Half::pm ? 12 : 0);
}

// Past the "–16:00" of a range, which is no time of its own.
std::size_t afterRange(std::string_view text, std::size_t at) {
  Token token = tokenAt(text, at);
  const bool dash = token.is('-') || token.is(U'–') || token.is(U'—');
  if (!dash && token.lower != "to" && token.lower != "until" && token.lower != "till" &&
      token.lower != "bis") {
    return at;
  }
  const std::size_t number = tokenAt(text, token.end()).range.start;
  if (!isDigit(byteAt(text, number)) || byteAt(text, number) == '\n') return at;
  std::size_t end = number;
  while (isDigit(byteAt(text, end)) && end - number < 3) ++end;
  if (end - number > 2) return at;
  const bool colon = byteAt(text, end) == ':' && twoDigits(text, end + 1, 59) >= 0;
  if (colon) end += 3;
  Half half = readHalf(text, end, end);
  const Token next = tokenAt(text, end);
  if (next.lower == "uhr") return next.end();
  return colon || half != Half::none ? end : at;
}

enum class Hours { both, either };  // digits of an offset: "+02:00", "+2" too

// Past an offset at `at`, which goes into `zone`; `at` when there is none.
std::size_t readOffset(std::string_view text, std::size_t at, Hours hours, std::string& zone) {
  constexpr std::string_view kMinus = "\u2212";
  const bool minus = text.substr(at, kMinus.size()) == kMinus;
  const char sign = minus ? '-' : byteAt(text, at);
  if (sign != '+' && sign != '-') return at;
  const std::size_t digits = at + (minus ? kMinus.size() : 1);
  std::size_t end = digits;
  while (isDigit(byteAt(text, end)) && end - digits < 5) ++end;
  const std::size_t count = end - digits;
  if (count != 2 && count != 4 && (count != 1 || hours == Hours::both)) return at;
  const int hour = numberOf(text.substr(digits, count == 1 ? 1 : 2));
  int minute = count == 4 ? numberOf(text.substr(digits + 2, 2)) : 0;
  if (count != 4 && byteAt(text, end) == ':' && twoDigits(text, end + 1, 59) >= 0) {
    minute = numberOf(text.substr(end + 1, 2));
    end += 3;
  } else if (count != 4 && hours == Hours::both) {
    return at;
  }
  // The offsets in use: whole quarters of an hour.
  if (hour > 14 || minute > 59 || minute % 15 != 0 || isAlnum(byteAt(text, end))) return at;
  char written[32];
  std::snprintf(written, sizeof written, "%c%02d:%02d", sign, hour, minute);
  zone = written;
  return end;
}

// The name of the zone behind its offset, as mail programs write it: "+0000 (UTC)".
std::size_t afterZoneName(std::string_view text, std::size_t at) {
  if (text.substr(at, 2) != " (") return at;
  const Token name = tokenAt(text, at + 2);
  const bool known =
      !name.spaced &&
      !zoneOffset(std::string(text.substr(name.range.start, name.range.length))).empty();
  return known && byteAt(text, name.end()) == ')' ? name.end() + 1 : at;
}

}  // namespace

std::size_t readZone(std::string_view text, std::size_t at, std::string& zone, Spaced spaced) {
  if (byteAt(text, at) == 'Z' && !isAlnum(byteAt(text, at + 1))) {
    zone = "Z";
    return at + 1;
  }
  const Token token = tokenAt(text, at);
  if (!token.isWord()) {
    // "10:00 -12:00" is a range unless more speaks for a stamp.
    const std::size_t sign = token.range.start;
    const bool colon = byteAt(text, sign + 3) == ':';
    if (token.spaced && !token.is('+') && colon && spaced == Spaced::mayBeRange) return at;
    const std::size_t end = readOffset(text, sign, Hours::both, zone);
    return end > sign ? afterZoneName(text, end) : at;
  }
  if (!token.capital || token.range.length > 4) return at;
  const std::string offset =
      zoneOffset(std::string(text.substr(token.range.start, token.range.length)));
  if (offset.empty()) return at;
  zone = offset;
  return offset == "Z" ? readOffset(text, token.end(), Hours::either, zone) : token.end();
}

std::optional<Clock> readClock(std::string_view text, std::size_t at, ClockStyle style,
                               PartOfDay part) {
  const Token first = tokenAt(text, at);
  if (const DateWord word = dateWord(first.lower); word.kind == DateWord::Kind::noon) {
    return Clock{first.end(), word.value, 0, -1, {}, false};
  }
  if (!first.isNumber() || first.range.length > 2) return std::nullopt;
  Clock clock;
  clock.hour = numberOf(first.lower);
  clock.end = first.end();
  if (clock.hour > 24) return std::nullopt;
  bool marked = false;
  bool colon = false;
  bool dot = false;
  bool length = false;
  const char mark = byteAt(text, clock.end);
  if (mark == ':' || mark == '.' || mark == 'h') {
    const int minute = twoDigits(text, clock.end + 1, 59);
    if (minute >= 0) {
      clock.minute = minute;
      clock.end += 3;
      colon = mark == ':';
      dot = mark == '.';
      marked = mark == 'h';
    } else if (mark == 'h' && !isAlnum(byteAt(text, clock.end + 1))) {
      marked = length = true;  // "5h" may be a length of time
      ++clock.end;
    } else if (mark == ':' && isDigit(byteAt(text, clock.end + 1))) {
      return std::nullopt;  // 16:9
    }
    if (colon && byteAt(text, clock.end) == ':') {
      clock.second = twoDigits(text, clock.end + 1, 60);
      if (clock.second < 0) return std::nullopt;
      clock.end += 3;
      if (byteAt(text, clock.end) == '.' && isDigit(byteAt(text, clock.end + 1))) {
        ++clock.end;
        while (isDigit(byteAt(text, clock.end))) ++clock.end;
      }
    }
  }
  Half half = readHalf(text, clock.end, clock.end);
  bool oclock = false;
  if (half == Half::none) {
    const Token next = tokenAt(text, clock.end);
    if (next.lower == "uhr") {
      marked = true;
      clock.end = next.end();
      if (const int minute = twoDigits(text, clock.end + 1, 59);
          minute >= 0 && !colon && !dot && byteAt(text, clock.end) == ' ') {
        clock.minute = minute;
        clock.end += 3;
      }
    } else if (next.lower == "o'clock" || next.lower == "o’clock") {
      marked = oclock = true;
      clock.end = next.end();
    } else if (!colon && !dot && !marked) {
      // "2–4 pm": both hours are of the same half, unless that would end before it starts.
      const bool dash = next.is('-') || next.is(U'–') || next.lower == "to" || next.lower == "and";
      const Token last = dash ? tokenAt(text, next.end()) : Token{};
      std::size_t end = 0;
      if (last.isNumber() && last.range.length <= 2) half = readHalf(text, last.end(), end);
      if (half != Half::none) {
        if (clock.hour % 12 > numberOf(last.lower) % 12 && half == Half::pm) half = Half::am;
        clock.hour = hourOf(clock.hour, half);
        clock.end = end;
        clock.marked = true;
        return clock;
      }
    }
  }
  if (half != Half::none && (clock.hour < 1 || clock.hour > 12)) return std::nullopt;
  clock.hour = hourOf(clock.hour, half);
  marked = marked || half != Half::none;
  const Spaced spaced = clock.second >= 0 ? Spaced::stamp : Spaced::mayBeRange;
  const std::size_t zone_end =
      marked || colon ? readZone(text, clock.end, clock.zone, spaced) : clock.end;
  marked = marked || (zone_end > clock.end && colon);
  clock.end = zone_end;
  const bool enough = marked || colon || (style == ClockStyle::hour && !dot);
  if (!enough || clock.hour > 23) return std::nullopt;
  clock.marked = marked && !length;
  const char after = byteAt(text, clock.end);
  if (isAlnum(after) || after == ':' || after == '%' || after == '_') {
    if (!(after == ':' && !isDigit(byteAt(text, clock.end + 1)))) return std::nullopt;
  }
  if ((after == '.' || after == ',' || after == '/') && isDigit(byteAt(text, clock.end + 1))) {
    return std::nullopt;
  }
  if (half == Half::none && clock.hour < 12) {
    // "at 5" is in the afternoon for most people, "tonight at 8" for all.
    const bool bare = oclock || (!marked && !colon);
    if (part == PartOfDay::evening ||
        (bare && part == PartOfDay::unknown && clock.hour >= 1 && clock.hour <= 6)) {
      clock.hour += 12;
    }
  }
  if (!marked && !colon) {
    // "at 5 places": an hour is not followed by what it would count.
    static const WordSet prepositions("in on for with and or to until till but if by sharp so");
    const Token next = tokenAt(text, clock.end);
    if (next.isWord() && !prepositions.has(next.lower)) return std::nullopt;
    if (after == '-' || after == '/') return std::nullopt;
  }
  if (const std::size_t end = afterRange(text, clock.end); end > clock.end) {
    clock.end = clock.zone.empty() ? readZone(text, end, clock.zone, spaced) : end;
  }
  return clock;
}

}  // namespace marbelot::detection
