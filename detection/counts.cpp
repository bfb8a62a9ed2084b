#include "detection/counts.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;

// The second word of "twenty-one" or "thirty first" at `at`, of that kind; its value is 0 when
// there is none.
Ordinal secondWord(const DateSource& source, std::size_t at, Kind kind) {
  Token token = source.token(at);
  if (token.is('-') && !token.spaced) token = source.after(token);
  const DateWord word = source.meaning(token);
  if (word.kind != kind || word.weak || word.value > 9) return {};
  return {token.end(), word.value, true};
}

bool isTens(const DateWord& word) { return word.value >= 20 && word.value % 10 == 0; }

// " and a half" at `at`.
Count withHalf(const DateSource& source, Count count) {
  const Token join = source.token(count.end);
  const Token article = source.after(join);
  const Token half = source.after(article);
  if (join.lower != "and" || article.lower != "a" || half.lower != "half") return count;
  return {half.end(), count.value + 0.5};
}

std::optional<Count> countFromDigits(const DateSource& source, const Token& digits) {
  if (digits.range.length > 4) return std::nullopt;
  Count count{digits.end(), static_cast<double>(numberOf(digits.lower))};
  double place = 0.1;
  if (source.byte(count.end) == '.' && isDigit(source.byte(count.end + 1))) {
    for (++count.end; isDigit(source.byte(count.end)); ++count.end, place /= 10) {
      count.value += place * (source.byte(count.end) - '0');
    }
  }
  return withHalf(source, count);
}

}  // namespace

std::optional<Count> readCount(const DateSource& source, std::size_t at) {
  const Token first = source.token(at);
  if (first.isNumber()) return countFromDigits(source, first);
  const DateWord word = source.meaning(first);
  if (word.kind == Kind::fraction && word.value == 30) {
    // "half an hour", "half a day".
    const Token article = source.after(first);
    if (article.lower != "a" && article.lower != "an") return std::nullopt;
    return Count{article.end(), 0.5};
  }
  // French "sept" is a month in English.
  if (first.lower == "sept") return Count{first.end(), 7};
  if (word.kind != Kind::count) return std::nullopt;
  if (word.weak) {
    const Token next = source.after(first);
    const Token of = source.after(next);
    const std::size_t end = of.lower == "of" ? of.end() : next.end();
    if (next.lower == "couple") return Count{end, 2};
    if (next.lower == "few") return Count{next.end(), 3};
    if (next.lower == "half") return Count{next.end(), 0.5};
    if (next.lower == "quarter") {
      const Token article = source.after(of);
      if (of.lower == "of" && article.lower == "an") return Count{article.end(), 0.25};
      return std::nullopt;
    }
    return Count{first.end(), 1};
  }
  Count count{first.end(), static_cast<double>(word.value)};
  if (isTens(word)) {
    if (const Ordinal ones = secondWord(source, count.end, Kind::count); ones.value > 0) {
      count = {ones.end, count.value + ones.value};
    }
  }
  return withHalf(source, count);
}

std::optional<Ordinal> readOrdinal(const DateSource& source, std::size_t at) {
  const Token first = source.token(at);
  if (first.isNumber()) {
    static const WordSet endings("st nd rd th er e");
    const Token ending = source.after(first);
    if (first.range.length > 2 || ending.spaced || !ending.isWord() || !endings.has(ending.lower)) {
      return std::nullopt;
    }
    return Ordinal{ending.end(), numberOf(first.lower), false};
  }
  const DateWord word = source.meaning(first);
  if (word.kind == Kind::ordinal) return Ordinal{first.end(), word.value, true};
  if (word.kind != Kind::count || word.weak || !isTens(word)) return std::nullopt;
  const Ordinal ones = secondWord(source, first.end(), Kind::ordinal);
  if (ones.value == 0) return std::nullopt;
  return Ordinal{ones.end, word.value + ones.value, true};
}

std::optional<Unit> readUnit(const DateSource& source, std::size_t at) {
  const Token token = source.token(at);
  if (!token.isWord()) return std::nullopt;
  const DateWord word = source.meaning(token);
  if (word.kind == Kind::unit) return Unit{token.end(), static_cast<TimeUnit>(word.value)};
  if (token.lower == "second") return Unit{token.end(), TimeUnit::second};
  if (token.spaced || token.range.length != 1) return std::nullopt;
  switch (token.lower[0]) {
    case 's':
      return Unit{token.end(), TimeUnit::second};
    case 'm':
      return Unit{token.end(), TimeUnit::minute};
    case 'd':
      return Unit{token.end(), TimeUnit::day};
    case 'w':
      return Unit{token.end(), TimeUnit::week};
    case 'y':
      return Unit{token.end(), TimeUnit::year};
    default:
      return std::nullopt;
  }
}

}  // namespace marbelot::detection
