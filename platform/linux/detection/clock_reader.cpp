#include "platform/linux/detection/clock_reader.h"

#include "platform/linux/detection/scan.h"
#include "platform/linux/detection/tokens.h"

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

}  // namespace

std::size_t readZone(std::string_view text, std::size_t at, std::string& zone) {
  const char c = byteAt(text, at);
  if (c == 'Z' && !isAlnum(byteAt(text, at + 1))) {
    zone = "Z";
    return at + 1;
  }
  if (c == '+' || c == '-') {
    const std::size_t minutes = byteAt(text, at + 3) == ':' ? at + 4 : at + 3;
    if (isDigit(byteAt(text, at + 1)) && isDigit(byteAt(text, at + 2)) &&
        twoDigits(text, minutes, 59) >= 0 && numberOf(text.substr(at + 1, 2)) <= 14) {
      zone = std::string(text.substr(at, 3)) + ':' + std::string(text.substr(minutes, 2));
      return minutes + 2;
    }
    return at;
  }
  const Token token = tokenAt(text, at);
  if (!token.isWord() || !token.capital || token.range.length > 4) return at;
  const std::string offset =
      zoneOffset(std::string(text.substr(token.range.start, token.range.length)));
  if (offset.empty()) return at;
  zone = offset;
  return token.end();
}

std::optional<Clock> readClock(std::string_view text, std::size_t at, ClockStyle style,
                               PartOfDay part) {
  const Token first = tokenAt(text, at);
  if (const DateWord word = dateWord(first.lower); word.kind == DateWord::Kind::noon) {
    if (style == ClockStyle::marked) return std::nullopt;
    return Clock{first.end(), word.value, 0, -1, {}};
  }
  if (!first.isNumber() || first.range.length > 2) return std::nullopt;
  Clock clock;
  clock.hour = numberOf(first.lower);
  clock.end = first.end();
  if (clock.hour > 24) return std::nullopt;
  bool marked = false;
  bool colon = false;
  bool dot = false;
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
      if (style == ClockStyle::marked) return std::nullopt;  // may be a length of time
      marked = true;
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
        return clock;
      }
    }
  }
  if (half != Half::none && (clock.hour < 1 || clock.hour > 12)) return std::nullopt;
  clock.hour = hourOf(clock.hour, half);
  marked = marked || half != Half::none;
  const std::size_t zone_end = marked || colon ? readZone(text, clock.end, clock.zone) : clock.end;
  marked = marked || (zone_end > clock.end && colon);
  clock.end = zone_end;
  const bool enough =
      marked || (colon && style != ClockStyle::marked) || (style == ClockStyle::hour && !dot);
  if (!enough || clock.hour > 23) return std::nullopt;
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
    clock.end = clock.zone.empty() ? readZone(text, end, clock.zone) : end;
  }
  return clock;
}

}  // namespace marbelot::detection
