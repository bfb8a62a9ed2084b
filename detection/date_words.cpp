#include "detection/date_words.h"

#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>

#include <memory>
#include <mutex>
#include <span>

#include "detection/tokens.h"
#include "platform/ascii.h"

namespace marbelot::detection {
namespace {

using Kind = DateWord::Kind;
using Table = std::unordered_map<std::string, DateWord>;

// "a b|c" gives a and b the first value, c the next one; "-" leaves a value out.
void add(Table& table, Kind kind, int first, std::string_view groups, bool weak = false) {
  int value = first;
  std::string word;
  for (std::size_t i = 0; i <= groups.size(); ++i) {
    const char c = i < groups.size() ? groups[i] : '|';
    if (c != ' ' && c != '|') {
      word += c;
      continue;
    }
    if (!word.empty() && word != "-") table.emplace(word, DateWord{kind, value, weak});
    word.clear();
    value += c == '|';
  }
}

Table makeTable() {
  Table table;
  add(table, Kind::month, 1,
      "january januar jänner janvier|february februar février|märz mars|april avril|mai|june juni "
      "juin|july juli juillet|august août|september septembre|october oktober octobre|november "
      "novembre|december dezember décembre");
  add(table, Kind::month, 1,
      "jan janv|feb febr févr|mar mär march|apr avr|may|jun|jul juil|aug|sep sept|oct okt|nov|dec "
      "dez déc",
      true);
  add(table, Kind::weekday, 0,
      "sunday sonntag dimanche|monday montag lundi|tuesday dienstag mardi|wednesday mittwoch "
      "mercredi|thursday donnerstag jeudi|friday freitag vendredi|saturday samstag sonnabend "
      "samedi");
  add(table, Kind::weekday, 0,
      "sun so|mon mo|tue tues di|wed weds mi|thu thur thurs do|fri fr|sat sa", true);
  add(table, Kind::day, -1,
      "yesterday gestern|today tonight heute aujourd'hui aujourd’hui|tomorrow tmrw demain|"
      "übermorgen");
  add(table, Kind::day, 1, "morgen", true);
  add(table, Kind::qualifier, -1,
      "last past letzten|this diesen|next coming upcoming nächsten kommenden");
  add(table, Kind::count, 1,
      "one einem einer|two zwei deux|three drei trois|four vier quatre|five fünf cinq|six sechs|"
      "seven sieben|eight acht huit|nine neun neuf|ten zehn dix|eleven elf|twelve zwölf|thirteen|"
      "fourteen|fifteen|sixteen|seventeen|eighteen|nineteen|twenty");
  add(table, Kind::count, 30, "thirty");
  add(table, Kind::count, 40, "forty");
  add(table, Kind::count, 45, "forty-five");
  add(table, Kind::count, 50, "fifty");
  add(table, Kind::count, 60, "sixty");
  add(table, Kind::count, 90, "ninety");
  add(table, Kind::count, 1, "a an", true);
  add(table, Kind::ordinal, 1,
      "first|second|third|fourth|fifth|sixth|seventh|eighth|ninth|tenth|eleventh|twelfth|"
      "thirteenth|fourteenth|fifteenth|sixteenth|seventeenth|eighteenth|nineteenth|twentieth");
  add(table, Kind::ordinal, 30, "thirtieth");
  add(table, Kind::within, 1, "in within dans");
  add(table, Kind::within, -1, "vor");
  add(table, Kind::unit, TimeUnit::second,
      "seconds sec secs sekunden secondes|minute minutes min mins minuten|hour hours hr hrs h "
      "stunde stunden heure heures|day days tag tagen jour jours|week weeks wk wks woche wochen "
      "semaine semaines|fortnight fortnights|month months monat monaten mois|year years yr yrs "
      "jahr jahren an ans");
  add(table, Kind::noon, 0, "midnight mitternacht minuit");
  add(table, Kind::noon, 12, "noon midday mittag");
  add(table, Kind::fraction, 15, "quarter");
  add(table, Kind::fraction, 30, "half");
  add(table, Kind::edge, 0, "start beginning|end");
  add(table, Kind::feast, Feast::newYear,
      "new|christmas|valentine's valentine’s valentines|boxing");
  return table;
}

std::size_t edgesHash(std::string_view word) {
  const auto code = [](char c) { return static_cast<unsigned char>(lower(c)); };
  return (code(word[0]) * 31u + code(word[1]) * 7u + code(word.back())) & 4095u;
}

// Whether a date may begin with the word: what is counted and its number's article stand behind.
bool starts(const std::string& word, const DateWord& meaning) {
  if (meaning.kind == Kind::unit) return word == "day";
  return !(meaning.kind == Kind::count && meaning.weak);
}

}  // namespace

DateWords::DateWords(const std::string& language) : table_(makeTable()) {
  if (language != "en" && language != "de" && language != "fr") addNames(language);
  for (const auto& [word, meaning] : table_) {
    if (word.size() >= 2 && starts(word, meaning)) {
      lengths_[edgesHash(word)] |= 1u << (word.size() & 31u);
    }
  }
}

void DateWords::addNames(const std::string& language) {
  UErrorCode error = U_ZERO_ERROR;
  const icu::DateFormatSymbols symbols(icu::Locale(language.c_str()), error);
  if (U_FAILURE(error)) return;
  const auto addAll = [&](std::span<const icu::UnicodeString> names, Kind kind, bool weak) {
    int i = -1;
    for (const icu::UnicodeString& symbol : names) {
      ++i;
      std::string name;
      symbol.toUTF8String(name);
      while (name.ends_with('.')) name.pop_back();
      // Names of several words, and single letters, are no words of their own.
      const Token token = tokenAt(name, 0);
      if (!token.isWord() || token.range.length != name.size() || name.size() < 3) continue;
      // ICU's weekdays count from 1, with nothing at 0.
      table_.emplace(token.lower, DateWord{kind, kind == Kind::month ? i + 1 : i - 1, weak});
    }
  };
  using Symbols = icu::DateFormatSymbols;
  for (const auto context : {Symbols::FORMAT, Symbols::STANDALONE}) {
    for (const auto width : {Symbols::WIDE, Symbols::ABBREVIATED}) {
      std::int32_t count = 0;
      const bool weak = width == Symbols::ABBREVIATED;
      const icu::UnicodeString* months = symbols.getMonths(count, context, width);
      addAll({months, static_cast<std::size_t>(count)}, Kind::month, weak);
      const icu::UnicodeString* weekdays = symbols.getWeekdays(count, context, width);
      addAll({weekdays, static_cast<std::size_t>(count)}, Kind::weekday, weak);
    }
  }
}

DateWord DateWords::find(const std::string& word) const {
  if (word.empty() || isDigit(word[0])) return {};
  const auto found = table_.find(word);
  return found == table_.end() ? DateWord{} : found->second;
}

bool DateWords::mayStart(std::string_view word) const {
  return word.size() >= 2 && word.size() < 32 &&
         (lengths_[edgesHash(word)] >> word.size() & 1u) != 0;
}

const DateWords& dateWords(const std::string& language) {
  static std::mutex mutex;
  static std::unordered_map<std::string, std::unique_ptr<const DateWords>> made;
  const std::lock_guard lock(mutex);
  auto& words = made[language];
  if (!words) words = std::make_unique<const DateWords>(language);
  return *words;
}

PartOfDay partOfDay(const std::string& word) {
  static const std::unordered_map<std::string, PartOfDay> parts = {
      {"morning", PartOfDay::morning},      {"früh", PartOfDay::morning},
      {"vormittag", PartOfDay::morning},    {"matin", PartOfDay::morning},
      {"afternoon", PartOfDay::afternoon},  {"nachmittag", PartOfDay::afternoon},
      {"après-midi", PartOfDay::afternoon}, {"evening", PartOfDay::evening},
      {"abend", PartOfDay::evening},        {"soir", PartOfDay::evening},
      {"night", PartOfDay::night},          {"tonight", PartOfDay::night},
      {"nacht", PartOfDay::night}};
  const auto found = parts.find(word);
  return found == parts.end() ? PartOfDay::unknown : found->second;
}

int hourOf(PartOfDay part) {
  switch (part) {
    case PartOfDay::morning:
      return 9;
    case PartOfDay::afternoon:
      return 15;
    case PartOfDay::evening:
      return 20;
    case PartOfDay::night:
      return 22;
    case PartOfDay::unknown:
      break;
  }
  return 12;
}

int hourIn(PartOfDay part, int hour) {
  switch (part) {
    case PartOfDay::morning:
      return hour % 12;
    case PartOfDay::afternoon:
    case PartOfDay::evening:
      return hour % 12 + 12;
    case PartOfDay::night:  // "3 at night" is before the dawn
      return hour >= 5 && hour < 12 ? hour + 12 : hour % 12;
    case PartOfDay::unknown:
      break;
  }
  return hour;
}

}  // namespace marbelot::detection
