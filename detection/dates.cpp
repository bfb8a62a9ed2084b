// Dates and times, reckoned from a given moment, in ISO 8601.
#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <string>

#include "detection/clock_reader.h"
#include "detection/day_reader.h"
#include "detection/finder.h"
#include "detection/scan.h"
#include "detection/tokens.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using std::chrono::days;
using std::chrono::local_days;
using std::chrono::year_month_day;

std::tm localTime(double seconds) {
  const auto when = static_cast<std::time_t>(std::floor(seconds));
  std::tm local{};
  localtime_r(&when, &local);
  return local;
}

local_days dayOf(const std::tm& local) {
  return local_days(year_month_day(std::chrono::year(local.tm_year + 1900),
                                   std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)),
                                   std::chrono::day(static_cast<unsigned>(local.tm_mday))));
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

std::string isoTime(const Clock& clock) {
  std::string text = "T";
  appendDigits(text, static_cast<unsigned>(clock.hour), 2);
  text += ':';
  appendDigits(text, static_cast<unsigned>(clock.minute), 2);
  if (clock.second >= 0) {
    text += ':';
    appendDigits(text, static_cast<unsigned>(clock.second), 2);
  }
  return text + clock.zone;
}

constexpr std::array<bool, 256> kWordBytes = [] {
  std::array<bool, 256> table{};
  for (unsigned c = 'a'; c <= 'z'; ++c) table[c] = table[c - 32] = true;
  for (unsigned c = 0x80; c < 0x100; ++c) table[c] = true;
  return table;
}();

class DateFinder final : public TriggerFinder {
 public:
  DateFinder(std::string_view text, const std::string& region, double now)
      : TriggerFinder(text),
        now_(now),
        local_(localTime(now)),
        days_(text, region, dayOf(local_)) {}

 private:
  std::size_t nextTrigger(std::size_t from, std::size_t end) const override;
  std::optional<Detection> examine(std::size_t trigger) override;

  bool startsFreely(std::size_t at) const;
  bool followsTimeWord(std::size_t at) const;
  // A day and the time behind it, the time and the day behind it, the time alone.
  std::optional<Detection> dayAndTime(std::size_t at) const;
  std::optional<Detection> timeAndDay(std::size_t at) const;
  // "in two weeks", "3 days ago".
  std::optional<Detection> distance(const Token& first) const;
  std::optional<Clock> clockAfter(const Day& day) const;

  Detection date(std::size_t start, std::size_t end, std::string value) const {
    return {DetectionKind::date, {start, end - start}, std::move(value)};
  }

  double now_;
  std::tm local_;
  DayReader days_;
};

// A digit that starts a number, or a word of the vocabulary.
std::size_t DateFinder::nextTrigger(std::size_t from, std::size_t end) const {
  const auto isWordByte = [](char c) { return kWordBytes[static_cast<unsigned char>(c)]; };
  std::size_t at = from;
  // In the middle of a word or a number nothing starts.
  if (at > 0 && isWordByte(text()[at - 1])) {
    while (at < end && isWordByte(text()[at])) ++at;
  } else if (at > 0 && isDigit(text()[at - 1])) {
    while (at < end && isDigit(text()[at])) ++at;
  }
  while (at < end) {
    if (isDigit(text()[at])) return at;
    if (!isWordByte(text()[at])) {
      ++at;
      continue;
    }
    std::size_t stop = at + 1;
    while (stop < text().size() && (isWordByte(text()[stop]) || text()[stop] == '\'')) ++stop;
    if (mayStartDate(text().substr(at, stop - at))) return at;
    at = stop;
  }
  return end;
}

bool DateFinder::startsFreely(std::size_t at) const {
  if (at == 0) return true;
  const char before = text()[at - 1];
  constexpr std::string_view kGlue = "_@/\\-$#%&+*=.:,";
  if (isAlnum(before)) return false;
  if (kGlue.find(before) == std::string_view::npos) {
    return isAscii(before) || !text::isLetter(text::scalarBefore(text(), at).value);
  }
  // "Date:tomorrow", but not "10:30" or "a.today".
  return (before == ':' || before == ',') && at > 1 && !isDigit(text()[at - 2]) &&
         text()[at - 2] != ':' && isAlpha(text()[at]);
}

// Whether a date or a time may go on with this word right behind its first number: most numbers in
// running text count something, and that is seen before anything is read twice.
bool mayFollowNumber(std::string_view text, const Token& word) {
  // "5 p.m."
  if (word.range.length == 1 && (word.lower == "a" || word.lower == "p")) {
    return text.substr(word.end(), 1) == ".";
  }
  static const WordSet spaced("am pm uhr o'clock o’clock to and bis of");
  static const WordSet joined("am pm uhr h t st nd rd th er e");
  if ((word.spaced ? spaced : joined).has(word.lower)) return true;
  const DateWord meaning = dateWord(word.lower);
  return meaning.kind == Kind::month || meaning.kind == Kind::unit || word.lower == "day";
}

std::optional<Detection> DateFinder::examine(std::size_t trigger) {
  if (!startsFreely(trigger)) return std::nullopt;
  const Token first = tokenAt(text(), trigger);
  if (first.isNumber()) {
    // Only a few characters stand behind the number that starts a date or a time.
    constexpr std::string_view kBehind = " -/.:haAP\t'psnrte\xC2\xE2";
    if (first.range.length > 4 || first.end() >= text().size() ||
        kBehind.find(text()[first.end()]) == std::string_view::npos) {
      return std::nullopt;
    }
    if (const Token second = tokenAt(text(), first.end());
        second.isNumber() || second.kind == Token::Kind::newline ||
        (second.isWord() && !mayFollowNumber(text(), second))) {
      return std::nullopt;
    }
    if (auto found = dayAndTime(trigger)) return found;
    if (auto found = distance(first)) return found;
    return timeAndDay(trigger);
  }
  if (!first.isWord()) return std::nullopt;
  switch (dateWord(first.lower).kind) {
    case Kind::none:
      return std::nullopt;
    case Kind::within:
    case Kind::count:
      return distance(first);
    case Kind::noon:
      return timeAndDay(trigger);
    default:
      if (auto found = dayAndTime(trigger)) return found;
      return first.lower == "sept" ? distance(first) : std::nullopt;
  }
}

std::optional<Clock> DateFinder::clockAfter(const Day& day) const {
  const char mark = day.end < text().size() ? text()[day.end] : '\0';
  if (mark == 'T' || mark == 't') return readClock(text(), day.end + 1, ClockStyle::colon);
  Token token = tokenAt(text(), day.end);
  std::size_t at = day.end;
  if (token.is(',') || token.is('-') || token.is(U'–') || token.is('|')) {
    at = token.end();
    token = tokenAt(text(), at);
  }
  static const WordSet exact("at um à");
  static const WordSet loose("from von ab gegen by until de");
  const bool names_hour = exact.has(token.lower) || token.is('@');
  if (names_hour || loose.has(token.lower)) at = token.end();
  PartOfDay part = day.part;
  // "Monday 8 in the evening" is left to the part that is given with the day.
  return readClock(text(), at, names_hour ? ClockStyle::hour : ClockStyle::colon, part);
}

std::optional<Detection> DateFinder::dayAndTime(std::size_t at) const {
  const std::optional<Day> day = days_.read(at);
  if (!day) return std::nullopt;
  if (std::optional<Clock> clock = clockAfter(*day)) {
    // "Sat Nov 21 08:00:00 2026 +0200"
    if (day->guessed_year && clock->second >= 0) {
      if (const std::optional<Day> dated = days_.inYearAt(clock->end, *day)) {
        clock->end = clock->zone.empty() ? readZone(text(), dated->end, clock->zone, Spaced::stamp)
                                         : dated->end;
        return date(at, clock->end, isoDate(dated->date) + isoTime(*clock));
      }
    }
    return date(at, clock->end, isoDate(day->date) + isoTime(*clock));
  }
  if (day->needs_time) return std::nullopt;
  return date(at, day->end, isoDate(day->date));
}

// Whether "at", "from" or the like stands before, which makes "14:30" a time and no ratio.
bool DateFinder::followsTimeWord(std::size_t at) const {
  static const WordSet words("at by from until till um à ab bis gegen before after since around");
  if (at == 0 || text()[at - 1] != ' ') return at > 0 && text()[at - 1] == '@';
  const std::size_t start = wordStart(text(), at - 1, floor());
  return start < at - 1 && words.has(tokenAt(text(), start).lower);
}

std::optional<Detection> DateFinder::timeAndDay(std::size_t at) const {
  const std::optional<Clock> clock = readClock(text(), at, ClockStyle::colon);
  if (!clock) return std::nullopt;
  static const WordSet joins("on am le");
  Token token = tokenAt(text(), clock->end);
  if (token.is(',')) token = tokenAt(text(), token.end());
  if (joins.has(token.lower)) token = tokenAt(text(), token.end());
  if (token.isWord() || token.isNumber()) {
    // Not the day of the next time: "5pm, tomorrow 6pm".
    const std::optional<Day> day = days_.read(token.range.start);
    if (day && !clockAfter(*day)) {
      Clock shifted = *clock;
      if (day->part == PartOfDay::evening && shifted.hour < 12) {
        if (auto again = readClock(text(), at, ClockStyle::colon, day->part)) shifted = *again;
      }
      return date(at, day->end, isoDate(day->date) + isoTime(shifted));
    }
  }
  if (!clock->marked && !followsTimeWord(at)) return std::nullopt;
  local_days day = days_.today();
  if (clock->hour * 60 + clock->minute <= local_.tm_hour * 60 + local_.tm_min) day += days(1);
  return date(at, clock->end, isoDate(year_month_day(day)) + isoTime(*clock));
}

std::optional<Detection> DateFinder::distance(const Token& first) const {
  const bool within = dateWord(first.lower).kind == Kind::within;
  const Token count = within ? tokenAt(text(), first.end()) : first;
  const DateWord number = dateWord(count.lower);
  int value = 0;
  if (count.isNumber() && count.range.length <= 3) {
    value = numberOf(count.lower);
  } else if (number.kind == Kind::count || count.lower == "sept") {
    value = number.value;
  } else {
    return std::nullopt;
  }
  const Token unit = tokenAt(text(), count.end());
  const DateWord unit_word =
      unit.lower == "day" ? DateWord{Kind::unit, kDay} : dateWord(unit.lower);
  if (!unit.isWord() || !unit.spaced || unit_word.kind != Kind::unit) return std::nullopt;
  std::size_t end = unit.end();
  if (!within) {
    // "3 days" alone is no date; "3 days ago" and "from now" are.
    const Token ago = tokenAt(text(), end);
    const Token now = tokenAt(text(), ago.end());
    if (ago.lower == "ago") {
      value = -value;
      end = ago.end();
    } else if (ago.lower == "from" && (now.lower == "now" || now.lower == "today")) {
      end = now.end();
    } else {
      return std::nullopt;
    }
  }
  if (unit_word.value == kMinute || unit_word.value == kHour) {
    const std::tm then = localTime(now_ + value * (unit_word.value == kHour ? 3600.0 : 60.0));
    const Clock clock{end, then.tm_hour, then.tm_min, -1, {}, true};
    return date(first.range.start, end, isoDate(year_month_day(dayOf(then))) + isoTime(clock));
  }
  year_month_day then(days_.today());
  if (unit_word.value == kDay || unit_word.value == kWeek) {
    then = year_month_day(days_.today() + days(value * (unit_word.value == kWeek ? 7 : 1)));
  } else {
    then += std::chrono::months(unit_word.value == kYear ? 12 * value : value);
    if (!then.ok()) then = then.year() / then.month() / std::chrono::last;
  }
  const Day day{end, then};
  if (const std::optional<Clock> clock = clockAfter(day)) {
    return date(first.range.start, clock->end, isoDate(then) + isoTime(*clock));
  }
  return date(first.range.start, end, isoDate(then));
}

}  // namespace

std::unique_ptr<Finder> makeDateFinder(std::string_view text, const std::string& region,
                                       double now) {
  return std::make_unique<DateFinder>(text, region, now);
}

}  // namespace marbelot::detection
