#include "detection/distances.h"

#include <cmath>

#include "detection/counts.h"
#include "platform/locale.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using std::chrono::local_days;
using std::chrono::year_month_day;

struct Span {
  std::size_t end = 0;
  double seconds = 0;
  int days = 0;
  int months = 0;
  bool fine = false;  // hours or less are told
  bool secondsOnly = true;
  bool letter = false;  // "30m", which is a length too
};

bool addTo(Span& span, double value, TimeUnit unit) {
  const auto whole = static_cast<int>(std::lround(value));
  const bool isWhole = value == whole;
  span.secondsOnly = span.secondsOnly && unit == TimeUnit::second;
  switch (unit) {
    case TimeUnit::second:
    case TimeUnit::minute:
    case TimeUnit::hour:
      span.seconds += value * (unit == TimeUnit::second ? 1 : unit == TimeUnit::minute ? 60 : 3600);
      span.fine = true;
      return true;
    case TimeUnit::day:
      if (isWhole) {
        span.days += whole;
      } else {
        span.seconds += value * 86400;
        span.fine = true;
      }
      return true;
    case TimeUnit::week:
    case TimeUnit::fortnight:
      span.days += static_cast<int>(std::lround(value * (unit == TimeUnit::week ? 7 : 14)));
      return true;
    case TimeUnit::month:
      span.months += whole;
      return isWhole;
    case TimeUnit::year:
      span.months += static_cast<int>(std::lround(value * 12));
      return true;
  }
  return false;
}

// " and a half" behind a unit.
std::size_t halfEnd(const DateSource& source, std::size_t at) {
  const Token join = source.token(at);
  const Token article = source.after(join);
  const Token half = source.after(article);
  const bool found = join.lower == "and" && article.lower == "a" && half.lower == "half";
  return found ? half.end() : at;
}

// "2 days", "an hour and a half", "1h 30m", "2 hours and 20 minutes".
std::optional<Span> readSpan(const DateSource& source, std::size_t at) {
  Span span;
  TimeUnit last = TimeUnit::year;
  for (int parts = 0; parts < 3; ++parts) {
    std::size_t start = at;
    if (parts > 0) {
      const Token join = source.token(at);
      if (join.lower == "and" || join.is(',')) start = join.end();
    }
    const std::optional<Count> count = readCount(source, start);
    if (!count) break;
    const std::optional<Unit> unit = readUnit(source, count->end);
    if (!unit || (parts > 0 && unit->unit >= last)) break;
    last = unit->unit;
    double value = count->value;
    at = unit->end;
    // "sec.", "min."
    if (source.byte(at) == '.' && source.byte(at + 1) == ' ' && at - count->end <= 5) ++at;
    if (const std::size_t half = halfEnd(source, at); half > at) {
      value += 0.5;
      at = half;
    }
    span.letter = span.letter || (unit->end - count->end == 1 && unit->unit != TimeUnit::hour);
    if (!addTo(span, value, unit->unit)) return std::nullopt;
    span.end = at;
  }
  return span.end > 0 ? std::optional(span) : std::nullopt;
}

Moment moved(year_month_day from, const Span& span, int direction, std::size_t end) {
  year_month_day date = from + std::chrono::months(direction * span.months);
  if (!date.ok()) date = date.year() / date.month() / std::chrono::last;
  Moment moment;
  moment.end = end;
  moment.date = year_month_day(local_days(date) + std::chrono::days(direction * span.days));
  return moment;
}

Moment fromNow(const DayReader& days, double now, const Span& span, int direction,
               std::size_t end) {
  if (!span.fine) return moved(year_month_day(days.today()), span, direction, end);
  // Hours are those of the clock on the wall only where it is not changed in between.
  const locale::LocalTime then = locale::localTime(now + direction * span.seconds);
  const year_month_day date{std::chrono::year(then.year),
                            std::chrono::month(static_cast<unsigned>(then.month)),
                            std::chrono::day(static_cast<unsigned>(then.day))};
  Moment moment = moved(date, span, direction, end);
  moment.toTheMinute = true;
  moment.hour = then.hour;
  moment.minute = then.minute;
  return moment;
}

// From the day that is named behind "from", "after" or "before".
std::optional<Moment> fromDay(const DayReader& days, const Span& span, const Token& joint) {
  const DateSource& source = days.source();
  const bool before = joint.lower == "before";
  const bool on = joint.lower == "on";
  if (span.fine || (!before && !on && joint.lower != "from" && joint.lower != "after")) {
    return std::nullopt;
  }
  Token token = source.after(joint);
  if (token.lower == "the") token = source.after(token);
  if (on && !source.isA(token, Kind::weekday)) return std::nullopt;
  const std::optional<Day> day = days.read(token.range.start);
  if (!day || day->needsTime || day->period || !token.isWord()) return std::nullopt;
  return moved(day->date, span, before ? -1 : 1, day->end);
}

}  // namespace

std::optional<Moment> readDistance(const DayReader& days, double now, std::size_t at) {
  const DateSource& source = days.source();
  const Token first = source.token(at);
  const DateWord word = source.meaning(first);
  if (word.kind != Kind::within) {
    const std::optional<Span> span = readSpan(source, at);
    if (!span) return std::nullopt;
    // "3 days" alone is no date; "3 days ago" and "from now" are.
    const Token joint = source.token(span->end);
    const Token last = source.after(joint);
    if (joint.lower == "ago") return fromNow(days, now, *span, -1, joint.end());
    if (joint.lower == "hence") return fromNow(days, now, *span, 1, joint.end());
    if (joint.lower == "from" && (last.lower == "now" || last.lower == "today")) {
      return fromNow(days, now, *span, 1, last.end());
    }
    return fromDay(days, *span, joint);
  }
  Token token = source.after(first);
  static const WordSet about("about around approximately roughly exactly under circa");
  if (about.has(token.lower)) token = source.after(token);
  const Token next = source.after(token);
  const bool coming = next.lower == "next" || next.lower == "coming";
  if (token.lower == "the" && (first.lower == "within" || coming)) {
    const Token name = coming ? source.after(next) : next;
    const std::optional<Unit> unit = readUnit(source, name.range.start);
    if (unit && unit->unit >= TimeUnit::hour && unit->unit <= TimeUnit::year) {
      Span span;
      addTo(span, 1, unit->unit);
      return fromNow(days, now, span, 1, unit->end);
    }
  }
  if (token.lower == "the" && coming) {
    token = source.after(next);
  }
  const std::optional<Span> span = readSpan(source, token.range.start);
  if (!span || span->secondsOnly || span->letter) return std::nullopt;
  // "in 2 hours' time".
  Token behind = source.token(span->end);
  std::size_t end = span->end;
  if (behind.is('\'') || behind.is(U'’')) behind = source.after(behind);
  if (behind.lower == "time") end = behind.end();
  return fromNow(days, now, *span, word.value, end);
}

}  // namespace marbelot::detection
