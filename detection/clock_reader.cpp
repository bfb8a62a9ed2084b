#include "detection/clock_reader.h"

#include <algorithm>

#include "detection/counts.h"
#include "detection/zones.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;

// The hours and minutes themselves, before anything that stands behind them.
struct Face {
  std::size_t end = 0;
  int hour = 0;
  int minute = 0;
  int second = -1;
  bool colon = false;
  bool dot = false;     // "14.30", which may be a number
  bool marked = false;  // cannot be anything but a time
  bool length = false;  // "5h" may be a length of time
  bool spelled = false;
};

// 1 to 12 as a word or a number; 0 for none.
int readSmallHour(const DateSource& source, const Token& token) {
  const DateWord word = source.meaning(token);
  const int hour = token.isNumber() && token.range.length <= 2 ? numberOf(token.lower)
                   : word.kind == Kind::count && !word.weak    ? word.value
                   : word.kind == Kind::noon                   ? 12
                                                               : 0;
  return hour >= 1 && hour <= 12 ? hour : 0;
}

// "half past six", "a quarter to nine", "ten past five", "20 minutes to 8".
std::optional<Face> readPastOrTo(const DateSource& source, std::size_t at) {
  Token token = source.token(at);
  if (token.lower == "a") token = source.after(token);
  const DateWord word = source.meaning(token);
  const bool fraction = word.kind == Kind::fraction;
  int minutes = word.value;
  std::size_t end = token.end();
  if (!fraction) {
    if (!token.isNumber() && word.kind != Kind::count) return std::nullopt;
    const std::optional<Count> count = readCount(source, token.range.start);
    minutes = count ? static_cast<int>(count->value) : 0;
    if (minutes < 1 || minutes > 29) return std::nullopt;
    end = count->end;
  }
  Token joint = source.token(end);
  const bool named = !fraction && (joint.lower == "minutes" || joint.lower == "minute");
  if (named) joint = source.after(joint);
  static const WordSet toWords("to before of till til");
  const bool past = joint.lower == "past" || joint.lower == "after";
  if (!past && !toWords.has(joint.lower)) return std::nullopt;
  if (fraction && minutes == 30 && joint.lower != "past") return std::nullopt;
  // "5 to 10" is a range, and "two of three" a share.
  if (!fraction && !named && (token.isNumber() || joint.lower == "of") && joint.lower != "past") {
    return std::nullopt;
  }
  const Token last = source.after(joint);
  const int hour = readSmallHour(source, last);
  if (hour == 0 || source.byte(last.end()) == ':') return std::nullopt;
  Face face;
  face.end = last.end();
  face.hour = past ? hour : hour == 1 ? 12 : hour - 1;
  face.minute = past ? minutes : 60 - minutes;
  face.marked = joint.lower == "past" || (fraction && joint.lower == "to") || named;
  face.spelled = true;
  return face;
}

// "seven", "six thirty", "ten forty-five".
std::optional<Face> readSpelledHour(const DateSource& source, const Token& first) {
  const int hour = readSmallHour(source, first);
  if (hour == 0 || first.isNumber()) return std::nullopt;
  Face face;
  face.end = first.end();
  face.hour = hour;
  face.spelled = true;
  Token token = source.after(first);
  if (token.is('-') && !token.spaced) token = source.after(token);
  const DateWord word = source.meaning(token);
  if (word.kind == Kind::count && !word.weak && word.value >= 10) {
    const std::optional<Count> minutes = readCount(source, token.range.start);
    if (minutes && minutes->value < 60 && static_cast<int>(minutes->value) % 5 == 0) {
      face.minute = static_cast<int>(minutes->value);
      face.end = minutes->end;
    }
  }
  return face;
}

// "1800 hours", "0830 hrs".
std::optional<Face> readMilitary(const DateSource& source, const Token& digits) {
  const Token unit = source.after(digits);
  const int hour = numberOf(digits.lower.substr(0, 2));
  const int minute = numberOf(digits.lower.substr(2));
  static const WordSet units("hours hrs hr h");
  if (hour > 23 || minute > 59 || !units.has(unit.lower)) return std::nullopt;
  Face face;
  face.end = unit.end();
  face.hour = hour;
  face.minute = minute;
  face.marked = face.colon = true;
  return face;
}

// "15 h", "15 h 30", "15 heures 30", "15 uur"; but "3 h de route" is a distance.
std::optional<Face> readHourWord(const DateSource& source, const Token& first) {
  static const WordSet units("h heure heures uur hora horas");
  const Token unit = source.after(first);
  if (!first.isNumber() || first.range.length > 2 || !units.has(unit.lower)) return std::nullopt;
  const Token behind = source.after(unit);
  if (behind.lower == "de" || behind.lower.starts_with("d'")) return std::nullopt;
  Face face;
  face.hour = numberOf(first.lower);
  face.end = unit.end();
  face.marked = face.length = true;
  const int minute = twoDigits(source.text, behind.range.start, 59);
  if (behind.isNumber() && minute >= 0) {
    face.minute = minute;
    face.end = behind.end();
    face.length = false;
  }
  return face;
}

std::optional<Face> readDigits(const DateSource& source, const Token& first) {
  if (first.range.length == 4) return readMilitary(source, first);
  if (first.range.length > 2) return std::nullopt;
  Face face;
  face.hour = numberOf(first.lower);
  face.end = first.end();
  if (face.hour > 24) return std::nullopt;
  const char mark = source.byte(face.end);
  if (mark != ':' && mark != '.' && mark != 'h' && mark != 'H') return face;
  if (const int minute = twoDigits(source.text, face.end + 1, 59); minute >= 0) {
    face.minute = minute;
    face.end += 3;
    face.colon = mark == ':';
    face.dot = mark == '.';
    face.marked = lower(mark) == 'h';
  } else if (lower(mark) == 'h' && !isAlnum(source.byte(face.end + 1))) {
    face.marked = face.length = true;
    ++face.end;
  } else if (mark == ':' && isDigit(source.byte(face.end + 1))) {
    return std::nullopt;  // 16:9
  }
  if (!face.colon || source.byte(face.end) != ':') return face;
  face.second = twoDigits(source.text, face.end + 1, 60);
  if (face.second < 0) return std::nullopt;
  face.end += 3;
  const char point = source.byte(face.end);
  if ((point == '.' || point == ',') && isDigit(source.byte(face.end + 1))) {
    ++face.end;
    while (isDigit(source.byte(face.end))) ++face.end;
  }
  return face;
}

enum class Half { none, am, pm };

// "pm", "p.m.", "PM" at `at`, behind a blank or not.
Half readHalf(const DateSource& source, std::size_t at, std::size_t& end) {
  const std::size_t i = source.pastBlank(at);
  const char first = lower(source.byte(i));
  if (first != 'a' && first != 'p') return Half::none;
  const bool dots = source.byte(i + 1) == '.';
  const std::size_t m = dots ? source.pastBlank(i + 2) : i + 1;
  if (lower(source.byte(m)) != 'm') return Half::none;
  std::size_t after = m + 1;
  if (dots && source.byte(after) == '.') ++after;
  if (isAlnum(source.byte(after)) || source.byte(after) == '\'') return Half::none;
  // "7 am Markt": in lower case and apart, it is English only when no noun follows.
  if (first == 'a' && i > at && !dots && source.byte(i) == 'a') {
    const Token next = source.token(after);
    if (next.isWord() && next.capital && source.isA(next, Kind::none)) {
      std::string zone;
      const std::size_t zoneEnd = readZone(source.text, after, zone, Offset::mayBeRange);
      if (zoneEnd == after) return Half::none;
    }
  }
  end = after;
  return first == 'a' ? Half::am : Half::pm;
}

int hourWith(int hour, Half half) {
  return half == Half::none ? hour : hour % 12 + (half == Half::pm ? 12 : 0);
}

bool joinsRange(const Token& token) {
  static const WordSet words("to until till bis through thru");
  return isDash(token) || words.has(token.lower);
}

// The time that ends a range, with whatever half it gives to both.
struct RangeEnd {
  std::size_t end = 0;  // 0: no range
  int hour = 0;
  Half half = Half::none;
  bool enough = false;  // a time even without what stands before
};

RangeEnd readRangeEnd(const DateSource& source, std::size_t at, bool between) {
  const Token joint = source.token(at);
  if (!joinsRange(joint) && !(between && joint.lower == "and")) return {};
  const Token last = source.after(joint);
  if (source.isA(last, Kind::noon)) return {last.end(), 12, Half::none, true};
  if (!last.isNumber() || last.range.length > 2) return {};
  RangeEnd range{last.end(), numberOf(last.lower), Half::none, false};
  if (source.byte(range.end) == ':' && twoDigits(source.text, range.end + 1, 59) >= 0) {
    range.end += 3;
    range.enough = true;
  }
  if (range.hour <= 12) range.half = readHalf(source, range.end, range.end);
  range.enough = range.enough || range.half != Half::none;
  if (const Token next = source.token(range.end); next.lower == "uhr") {
    range.end = next.end();
    range.enough = true;
  }
  return range;
}

// "Uhr", with minutes behind it perhaps, or "o'clock".
bool readClockWord(const DateSource& source, Face& face) {
  const Token next = source.token(face.end);
  if (next.lower == "o'clock" || next.lower == "o’clock" || next.lower == "oclock") {
    face.end = next.end();
    return true;
  }
  if (next.lower != "uhr") return false;
  face.end = next.end();
  const std::size_t digits = source.pastBlank(face.end);
  const int minute = twoDigits(source.text, digits, 59);
  if (minute >= 0 && !face.colon && !face.dot && digits > face.end) {
    face.minute = minute;
    face.end = digits + 2;
  }
  return true;
}

// Whether what stands behind a bare hour lets it be one: "at 5 places" counts places.
bool endsBareHour(const DateSource& source, std::size_t end) {
  const Token next = source.token(end);
  if (isDash(next) || next.is('/')) return false;
  if (next.is('%') || next.is(U'°') || next.is('$') || next.is(U'€') || next.is(U'£')) return false;
  if (!next.isWord()) return true;
  static const WordSet small(
      "in on for with and or to until till but if by sharp so at this then please is we i you of "
      "or from about he she they it when because since instead");
  if (small.has(next.lower)) return true;
  const DateWord word = source.meaning(next);
  return word.kind == Kind::day || word.kind == Kind::weekday || word.kind == Kind::month ||
         word.kind == Kind::qualifier || partOfDay(next.lower) != PartOfDay::unknown;
}

// Whether the bytes behind the time show that it is none: "14:30.5", "10:30%", "3:16:9".
bool isCutShort(const DateSource& source, std::size_t end) {
  const char after = source.byte(end);
  if (after == ':') return isDigit(source.byte(end + 1));
  if (isAlnum(after) || after == '%' || after == '_') return true;
  return (after == '.' || after == ',' || after == '/') && isDigit(source.byte(end + 1));
}

std::optional<Clock> atNoon(const DateSource& source, const Token& word, int hour) {
  Clock clock;
  clock.end = word.end();
  clock.hour = hour;
  clock.marked = clock.settled = true;
  clock.midnight = hour == 0;
  clock.end = readZone(source.text, clock.end, clock.zone, Offset::mayBeRange);
  const RangeEnd range = readRangeEnd(source, clock.end, false);
  if (range.enough) clock.end = range.end;
  return clock;
}

}  // namespace

PartOfDay readPartOfDay(const DateSource& source, std::size_t at, std::size_t& end) {
  const Token first = source.token(at);
  Token word = source.after(first);
  if (first.lower == "in" && word.lower == "the") {
    word = source.after(word);
  } else if (!(first.lower == "at" && word.lower == "night") && first.lower != "am") {
    return PartOfDay::unknown;
  }
  const PartOfDay part = partOfDay(word.lower);
  if (part != PartOfDay::unknown) end = word.end();
  return part;
}

std::optional<Clock> readClock(const DateSource& source, std::size_t at, ClockStyle style,
                               PartOfDay part) {
  const Token first = source.token(at);
  const DateWord word = source.meaning(first);
  if (word.kind == Kind::noon) return atNoon(source, first, word.value);
  std::optional<Face> face = readPastOrTo(source, at);
  if (!face && style != ClockStyle::colon) face = readHourWord(source, first);
  if (!face) face = first.isNumber() ? readDigits(source, first) : readSpelledHour(source, first);
  if (!face) return std::nullopt;

  Clock clock;
  Half half = readHalf(source, face->end, face->end);
  const bool clockWord = half == Half::none && readClockWord(source, *face);
  if (half != Half::none && (face->hour < 1 || face->hour > 12)) return std::nullopt;
  std::size_t rangeEnd = 0;
  if (half == Half::none && !clockWord && face->hour <= 12) {
    // "2–4 pm": both hours are of the same half, unless that would end before it starts.
    const RangeEnd range = readRangeEnd(source, face->end, true);
    if (range.half != Half::none) {
      half = range.half;
      if (face->hour % 12 > range.hour % 12 && half == Half::pm) half = Half::am;
      rangeEnd = range.end;
    }
  }
  clock.hour = hourWith(face->hour, half);
  clock.minute = face->minute;
  clock.second = face->second;
  clock.colon = face->colon;
  clock.end = face->end;
  clock.settled = half != Half::none || face->hour > 12 || face->hour == 0;
  bool marked = face->marked || clockWord || half != Half::none;
  if (!clock.settled && rangeEnd == 0) {
    const PartOfDay told = readPartOfDay(source, clock.end, clock.end);
    if (told != PartOfDay::unknown) {
      clock.hour = hourIn(told, clock.hour);
      clock.settled = marked = true;
    }
  }
  const bool isStamp = clock.second >= 0 || (at > 0 && lower(source.byte(at - 1)) == 't');
  const Offset offset = isStamp ? Offset::stamp : Offset::mayBeRange;
  if (marked || face->colon) {
    const std::size_t end =
        readZone(source.text, std::max(clock.end, rangeEnd), clock.zone, offset);
    marked = marked || !clock.zone.empty();
    if (!clock.zone.empty()) (rangeEnd > 0 ? rangeEnd : clock.end) = end;
  }
  const bool enough = marked || face->colon || (style == ClockStyle::hour && !face->dot);
  if (!enough || clock.hour > 23 || isCutShort(source, clock.end)) return std::nullopt;
  clock.marked = marked && !face->length;
  const bool bare = !face->colon && (clockWord || face->spelled || !marked);
  if (!clock.settled && clock.hour <= 12) {
    // "at 5" is in the afternoon for most people, "tonight at 8" for all.
    if (part != PartOfDay::unknown) {
      clock.hour = hourIn(part, clock.hour);
    } else if (bare && clock.hour >= 1 && clock.hour <= 6) {
      clock.hour += 12;
    }
  }
  if (!marked && !face->colon && !endsBareHour(source, clock.end)) return std::nullopt;
  if (rangeEnd == 0) {
    const RangeEnd range = readRangeEnd(source, clock.end, false);
    if (range.enough) rangeEnd = range.end;
    if (rangeEnd > 0 && clock.zone.empty()) {
      rangeEnd = readZone(source.text, rangeEnd, clock.zone, offset);
    }
  }
  clock.end = std::max(clock.end, rangeEnd);
  return clock;
}

}  // namespace marbelot::detection
