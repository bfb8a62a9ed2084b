// Dates and times, reckoned from a given moment, in ISO 8601.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "detection/clock_reader.h"
#include "detection/date_filter.h"
#include "detection/day_reader.h"
#include "detection/distances.h"
#include "detection/finder.h"
#include "detection/hosts.h"
#include "detection/zones.h"
#include "platform/ascii.h"
#include "platform/locale.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using std::chrono::days;
using std::chrono::local_days;
using std::chrono::year_month_day;

local_days dayOf(const locale::LocalTime& time) {
  return local_days(year_month_day(std::chrono::year(time.year),
                                   std::chrono::month(static_cast<unsigned>(time.month)),
                                   std::chrono::day(static_cast<unsigned>(time.day))));
}

void appendDigits(std::string& text, unsigned value, std::size_t digits) {
  text.append(digits, '0');
  for (std::size_t at = text.size(); value > 0 && digits > 0; --digits, value /= 10) {
    text[--at] = static_cast<char>('0' + value % 10);
  }
}

std::string isoDate(const year_month_day& date) {
  std::string text;
  appendDigits(text, static_cast<unsigned>(static_cast<int>(date.year())), 4);
  text += '-';
  appendDigits(text, static_cast<unsigned>(date.month()), 2);
  text += '-';
  appendDigits(text, static_cast<unsigned>(date.day()), 2);
  return text;
}

std::string isoTime(const year_month_day& date, const Clock& clock) {
  std::string text = "T";
  appendDigits(text, static_cast<unsigned>(clock.hour), 2);
  text += ':';
  appendDigits(text, static_cast<unsigned>(clock.minute), 2);
  if (clock.second >= 0) {
    text += ':';
    appendDigits(text, static_cast<unsigned>(clock.second), 2);
  }
  return text + zoneOffset(clock.zone, local_days(date) + std::chrono::hours(clock.hour) +
                                           std::chrono::minutes(clock.minute));
}

// What a character is to the words around it. Where a script without spaces meets another one, a
// word ends and the next begins.
enum class Script : std::uint8_t { none, spaced, wide, unknown, more };

Script scriptOf(char32_t c) {
  // What was lost in a conversion is likely to have been a letter. Some marks belong to symbols.
  constexpr char32_t lost = 0xFFFD;
  const bool ofSymbol = (c >= 0xFE00 && c < 0xFE10) || (c >= 0x20D0 && c < 0x2100);
  if (ofSymbol || (c != lost && !text::isWordCharacter(c))) return Script::none;
  return isWide(c) ? Script::wide : Script::spaced;
}

// By the first byte, where that is enough: decoding every letter would take most of the time.
constexpr std::array<Script, 256> scripts = [] {
  std::array<Script, 256> table{};
  const auto fill = [&](unsigned first, unsigned last, Script script) {
    for (unsigned byte = first; byte <= last; ++byte) table[byte] = script;
  };
  fill('a', 'z', Script::spaced);
  fill('A', 'Z', Script::spaced);
  fill(0x80, 0xBF, Script::more);  // goes on with a character
  fill(0xC0, 0xFF, Script::unknown);
  fill(0xC3, 0xD4, Script::spaced);  // Latin to Cyrillic
  fill(0xE4, 0xE9, Script::wide);    // ideographs
  return table;
}();

Script byFirstByte(char c) { return scripts[static_cast<unsigned char>(c)]; }

struct Piece {
  Script script;
  std::size_t bytes;
};

Piece pieceAt(std::string_view text, std::size_t at) {
  const Script script = byFirstByte(text[at]);
  if (script < Script::unknown) return {script, 1};
  // Typographic and ideographic punctuation, and kana.
  const std::string_view two = text.substr(at, 2);
  if (two == "\xE2\x80" || two == "\xE3\x80") return {Script::none, 3};
  if (two == "\xE3\x81" || two == "\xE3\x82" || two == "\xE3\x83") return {Script::wide, 3};
  const text::Scalar scalar = text::scalarAt(text, at);
  return {scriptOf(scalar.value), scalar.bytes};
}

// The end of the letters of one script at `at`, not beyond `end`.
std::size_t lettersEnd(std::string_view text, std::size_t at, Script script, std::size_t end) {
  while (at < end) {
    const Script known = byFirstByte(text[at]);
    const bool goesOn = known == script || known == Script::more;
    const Piece piece = goesOn ? Piece{script, 1} : pieceAt(text, at);
    if (piece.script != script) break;
    at += piece.bytes;
  }
  return at;
}

// The end of the word that begins at `at`, apostrophes included: 'today' in straight quotes is a
// word that is spoken of rather than a day.
std::size_t wordEnd(std::string_view text, std::size_t at, Script script) {
  // No longer word matters.
  const std::size_t bound = std::min(text.size(), at + 64);
  std::size_t end = at + 1;
  while (end < bound && byFirstByte(text[end]) == script) ++end;
  if (end < bound && isAscii(text[end]) && text[end] != '\'') return end;
  end = lettersEnd(text, end, script, bound);
  while (end < bound) {
    const bool curly = text[end] == '\xE2' && text.substr(end, 3) == "\u2019";
    if (!curly && text[end] != '\'') break;
    const std::size_t from = end + (curly ? 3 : 1);
    const std::size_t more = lettersEnd(text, from, script, bound);
    if (curly && more == from) break;
    end = more;
  }
  return end;
}

// "a" or "an" before something that is counted in time: "a week ago", "an hour from now", "a
// quarter past ten".
bool mayBeArticle(std::string_view text, std::string_view word, std::size_t end) {
  constexpr std::string_view initials = "mhdwfycqsn";
  return (word == "a" || word == "an" || word == "A" || word == "An") &&
         initials.find(byteAt(text, end + blankAt(text, end))) != std::string_view::npos;
}

class DateFinder final : public TriggerFinder {
 public:
  DateFinder(std::string_view text, const DetectionContext& context)
      : TriggerFinder(text),
        now_(context.now),
        local_(locale::localTime(now_)),
        source_{text, dateWords(context.language)},
        days_(source_, context.region, dayOf(local_)) {}

 private:
  std::size_t nextTrigger(std::size_t from, std::size_t end) const override;
  std::optional<Detection> examine(std::size_t trigger) override;

  bool startsFreely(std::size_t at) const;
  // The word right before `at`, in lower case, if a blank is between; its start goes to `start`.
  std::string wordBefore(std::size_t at, std::size_t& start) const;
  bool followsNumber(std::size_t at) const {
    const std::size_t blank = blankBefore(text(), at);
    return blank > 0 && at > floor() + blank && isDigit(text()[at - blank - 1]);
  }
  bool followsTimeWord(std::size_t at) const;
  bool followsHourWord(std::size_t at) const;
  bool followsAt(std::size_t at) const;

  std::optional<Detection> startingWithNumber(const Token& first) const;
  // A day and the time behind it, the time and the day behind it, the time alone.
  std::optional<Detection> dayAndTime(std::size_t at) const;
  std::optional<Detection> timeAndDay(std::size_t at) const;
  std::optional<Detection> timeAlone(std::size_t at, const Clock& clock) const;
  std::optional<Detection> dayAlone(std::size_t at, const Day& day) const;
  // "in two weeks", "3 days ago at noon".
  std::optional<Detection> distance(std::size_t at) const;
  // "on the 15th", "the 15th at 3".
  std::optional<Detection> numberedDay(std::size_t at) const;
  std::optional<Clock> clockAfter(const Day& day) const;
  std::size_t pastLaterDay(std::size_t at) const;
  std::size_t pastBetween(std::size_t at, const Clock& clock) const;

  Detection date(std::size_t start, std::size_t end, const year_month_day& day) const {
    return {DetectionKind::date, {start, end - start}, isoDate(day)};
  }
  Detection date(std::size_t start, std::size_t end, const Day& day, const Clock& clock) const;

  double now_;
  locale::LocalTime local_;
  DateSource source_;
  DayReader days_;
};

Detection DateFinder::date(std::size_t start, std::size_t end, const Day& day,
                           const Clock& clock) const {
  // The midnight of a night is the end of its day.
  local_days when(day.date);
  if (clock.midnight && day.part >= PartOfDay::evening) when += days(1);
  const year_month_day moved(when);
  return {DetectionKind::date, {start, end - start}, isoDate(moved) + isoTime(moved, clock)};
}

// A digit that starts a number, or a word of the vocabulary.
std::size_t DateFinder::nextTrigger(std::size_t from, std::size_t end) const {
  std::size_t at = from;
  while (at < end && text::isContinuation(text()[at])) ++at;
  // In the middle of a word or a number nothing starts.
  if (at > 0 && isDigit(text()[at - 1])) {
    while (at < end && isDigit(text()[at])) ++at;
  } else if (at > 0) {
    const Script before = scriptOf(text::scalarBefore(text(), at).value);
    if (before != Script::none) at = lettersEnd(text(), at, before, end);
  }
  while (at < end) {
    if (isDigit(text()[at])) return at;
    if (byFirstByte(text()[at]) == Script::none) {
      ++at;
      continue;
    }
    const Piece piece = pieceAt(text(), at);
    if (piece.script == Script::none) {
      at += piece.bytes;
      continue;
    }
    const std::size_t stop = wordEnd(text(), at, piece.script);
    const std::string_view word = text().substr(at, stop - at);
    if (source_.words.mayStart(word) || mayBeArticle(text(), word, stop)) return at;
    at = stop;
  }
  return end;
}

bool DateFinder::startsFreely(std::size_t at) const {
  if (at == 0) return true;
  const char before = text()[at - 1];
  constexpr std::string_view glue = "_@/\\-$#%&+*=.:,";
  if (isAlnum(before)) return false;
  if (glue.find(before) == std::string_view::npos) {
    return isAscii(before) || scriptOf(text::scalarBefore(text(), at).value) != Script::spaced;
  }
  // "Date:tomorrow", but not "10:30" or "a.today".
  return (before == ':' || before == ',') && at > 1 && !isDigit(text()[at - 2]) &&
         text()[at - 2] != ':' && isAlpha(text()[at]);
}

std::optional<Detection> DateFinder::startingWithNumber(const Token& first) const {
  const std::size_t at = first.range.start;
  if (first.range.length > 4) return std::nullopt;
  const bool hour = first.range.length <= 2 && followsAt(at);
  if (!hour && !mayStartDate(source_, first)) return std::nullopt;
  if (auto found = dayAndTime(at)) return found;
  if (auto found = distance(at)) return found;
  if (auto found = timeAndDay(at)) return found;
  return numberedDay(at);
}

std::optional<Detection> DateFinder::examine(std::size_t trigger) {
  if (!startsFreely(trigger)) return std::nullopt;
  const Token first = source_.token(trigger);
  if (first.isNumber()) return startingWithNumber(first);
  if (!first.isWord()) return std::nullopt;
  const DateWord word = source_.meaning(first);
  const bool hour = word.kind == Kind::count && !word.weak && followsAt(trigger);
  if (!hour && !mayStartDate(source_, first, word)) return std::nullopt;
  switch (word.kind) {
    case Kind::within:
      return distance(trigger);
    case Kind::noon:
      return timeAndDay(trigger);
    case Kind::count:
    case Kind::fraction:
      if (!word.weak && word.kind == Kind::count) {
        if (auto found = dayAndTime(trigger)) return found;
      }
      if (auto found = distance(trigger)) return found;
      return timeAndDay(trigger);
    case Kind::month:
      // In "32 August 2027" the month alone is not what is meant.
      if (followsNumber(trigger)) return std::nullopt;
      [[fallthrough]];
    default:
      if (auto found = dayAndTime(trigger)) return found;
      return first.lower == "sept" ? distance(trigger) : std::nullopt;
  }
}

std::optional<Clock> DateFinder::clockAfter(const Day& day) const {
  const char mark = byteAt(text(), day.end);
  if (mark == 'T' || mark == 't' || mark == ':')
    return readClock(source_, day.end + 1, ClockStyle::colon);
  Token token = source_.token(day.end);
  std::size_t at = day.end;
  if (token.is(',') || token.is('-') || token.is(U'–') || token.is('|') || token.is(U'·') ||
      token.is(U'⋅')) {
    at = token.end();
    token = source_.token(at);
  }
  static const WordSet exact("at um à om alle ore ora às las les kl klo klockan godz saat");
  static const WordSet loose(
      "from von ab gegen by until de between around about after before dalle desde vanaf van a as "
      "la o v ve в во о об");
  bool namesHour = day.part != PartOfDay::unknown;
  // "at about 3", "a las 15:00", "kl. 9", "la ora 15:00".
  for (int words = 0; words < 3; ++words) {
    const bool hour = exact.has(token.lower) || token.is('@');
    if (!hour && !loose.has(token.lower)) break;
    namesHour = namesHour || hour;
    at = token.end();
    if (token.lower == "kl" || token.lower == "godz") at += source_.byte(at) == '.';
    token = source_.token(at);
  }
  return readClock(source_, at, namesHour ? ClockStyle::hour : ClockStyle::hourWord, day.part);
}

// Past "- Dec 9, 4pm", the end of a range from one time to another.
std::size_t DateFinder::pastLaterDay(std::size_t at) const {
  static const WordSet joints("to until till through bis");
  const Token joint = source_.token(at);
  if (!isDash(joint) && !joints.has(joint.lower)) return at;
  const Token last = source_.after(joint);
  if (!last.isNumber() && !last.isWord()) return at;
  const std::optional<Day> day = days_.read(last.range.start);
  if (!day || day->needsTime) return at;
  const std::optional<Clock> clock = clockAfter(*day);
  return clock ? clock->end : day->end;
}

std::optional<Detection> DateFinder::dayAlone(std::size_t at, const Day& day) const {
  if (day.needsTime) return std::nullopt;
  if (day.part == PartOfDay::unknown) return date(at, day.end, day.date);
  Clock clock;
  clock.hour = hourOf(day.part);
  return date(at, day.end, day, clock);
}

std::optional<Detection> DateFinder::dayAndTime(std::size_t at) const {
  const std::optional<Day> day = days_.read(at);
  if (!day) return std::nullopt;
  std::optional<Clock> clock = clockAfter(*day);
  if (!clock) return dayAlone(at, *day);
  // "Sat Nov 21 08:00:00 2026 +0200"
  if (day->guessedYear && clock->second >= 0) {
    if (const std::optional<Day> dated = days_.inYearAt(clock->end, *day)) {
      clock->end = clock->zone.empty() ? readZone(text(), dated->end, clock->zone, Offset::stamp)
                                       : dated->end;
      return date(at, clock->end, *dated, *clock);
    }
  }
  return date(at, pastLaterDay(clock->end), *day, *clock);
}

std::string DateFinder::wordBefore(std::size_t at, std::size_t& start) const {
  start = at;
  const std::size_t end = at - blankBefore(text(), at);
  if (end == at || end <= floor()) return {};
  start = wordStart(text(), end, floor());
  return start < end ? source_.token(start).lower : std::string();
}

// Whether "at", "from" or the like stands before, which makes "14:30" a time and no ratio.
bool DateFinder::followsTimeWord(std::size_t at) const {
  static const WordSet words(
      "at by from until till um ab bis gegen before after since around about");
  if (at > 0 && text()[at - 1] == '@') return true;
  std::size_t start = 0;
  return words.has(wordBefore(at, start)) || followsHourWord(at);
}

// Whether nothing but an hour or a distance may follow the word before.
bool DateFinder::followsHourWord(std::size_t at) const {
  static const WordSet words("à om alle ore às las les kl klo");
  std::size_t start = 0;
  return words.has(wordBefore(at, start));
}

bool DateFinder::followsAt(std::size_t at) const {
  if (at < 1) return false;
  const std::size_t end = at - blankBefore(text(), at);
  const char before = byteAt(text(), end - 1);
  std::size_t start = 0;
  return before == '@' || (lower(before) == 't' && end < at && wordBefore(at, start) == "at");
}

std::optional<Detection> DateFinder::timeAlone(std::size_t at, const Clock& clock) const {
  local_days day = days_.today();
  if (clock.hour * 60 + clock.minute <= local_.hour * 60 + local_.minute) day += days(1);
  Day when;
  when.date = year_month_day(day);
  return date(at, clock.end, when, clock);
}

// Past the "and 4pm" of "between 2pm and 4pm".
std::size_t DateFinder::pastBetween(std::size_t at, const Clock& clock) const {
  std::size_t start = 0;
  const Token joint = source_.token(clock.end);
  if (joint.lower != "and" || wordBefore(at, start) != "between") return clock.end;
  const std::optional<Clock> last = readClock(source_, joint.end(), ClockStyle::colon);
  return last ? last->end : clock.end;
}

std::optional<Detection> DateFinder::timeAndDay(std::size_t at) const {
  const bool afterAt = followsAt(at);
  ClockStyle style = afterAt               ? ClockStyle::hour
                     : followsHourWord(at) ? ClockStyle::hourWord
                                           : ClockStyle::colon;
  std::optional<Clock> clock = readClock(source_, at, style);
  if (!clock && !afterAt) {
    // "8 tonight", "8 tomorrow morning".
    clock = readClock(source_, at, style = ClockStyle::hour);
    if (!clock) return std::nullopt;
    const std::optional<Day> day = days_.read(source_.token(clock->end).range.start);
    if (!day || day->part == PartOfDay::unknown) return std::nullopt;
  }
  if (!clock) return std::nullopt;
  clock->end = pastBetween(at, *clock);
  static const WordSet joins("on am le the");
  Token token = source_.pastComma(source_.token(clock->end));
  if (token.lower == "sharp") token = source_.after(token);
  while (joins.has(token.lower)) token = source_.after(token);
  if (token.isWord() || token.isNumber()) {
    // Not the day of the next time: "5pm, tomorrow 6pm".
    std::optional<Day> day = days_.read(token.range.start);
    if (!day) day = days_.ofAnyMonth(token.range.start);
    if (day && !clockAfter(*day)) {
      if (day->part != PartOfDay::unknown && !clock->settled) {
        if (auto again = readClock(source_, at, style, day->part)) clock = again;
      }
      return date(at, day->end, *day, *clock);
    }
  }
  // "at 5 fires" is no time, "at 17:30 in the lobby" is one.
  const bool mayEnd = clock->colon || !token.isWord();
  if (!clock->marked && !(mayEnd && (afterAt || followsTimeWord(at)))) return std::nullopt;
  return timeAlone(at, *clock);
}

std::optional<Detection> DateFinder::distance(std::size_t at) const {
  const std::optional<Moment> moment = readDistance(days_, now_, at);
  if (!moment) return std::nullopt;
  Day day;
  day.end = moment->end;
  day.date = moment->date;
  Clock clock;
  clock.hour = moment->hour;
  clock.minute = moment->minute;
  if (moment->toTheMinute) return date(at, day.end, day, clock);
  const std::optional<Clock> told = clockAfter(day);
  return told ? date(at, told->end, day, *told) : date(at, day.end, day.date);
}

std::optional<Detection> DateFinder::numberedDay(std::size_t at) const {
  static const WordSet prepositions("on by until till before after from since for to");
  std::size_t article = 0;
  std::size_t word = 0;
  if (wordBefore(at, article) != "the") return std::nullopt;
  const std::optional<Day> day = days_.ofAnyMonth(at);
  if (!day) return std::nullopt;
  if (const std::optional<Clock> clock = clockAfter(*day))
    return date(at, clock->end, *day, *clock);
  return prepositions.has(wordBefore(article, word)) ? dayAlone(at, *day) : std::nullopt;
}

}  // namespace

std::unique_ptr<Finder> makeDateFinder(std::string_view text, const DetectionContext& context) {
  return std::make_unique<DateFinder>(text, context);
}

}  // namespace marbelot::detection
