#include "detection/date_words.h"

#include <array>
#include <cstdint>
#include <unordered_map>

#include "detection/scan.h"

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
      "jan janv|feb févr|mar mär march|apr avr|may|jun|jul juil|aug|sep sept|oct okt|nov|dec dez "
      "déc",
      true);
  add(table, Kind::weekday, 0,
      "sunday sonntag dimanche|monday montag lundi|tuesday dienstag mardi|wednesday mittwoch "
      "mercredi|thursday donnerstag jeudi|friday freitag vendredi|saturday samstag sonnabend "
      "samedi");
  add(table, Kind::weekday, 0, "sun so|mon mo|tue tues di|wed mi|thu thur thurs do|fri fr|sat sa",
      true);
  add(table, Kind::day, -1,
      "yesterday gestern|today tonight heute aujourd'hui aujourd’hui|"
      "tomorrow demain|übermorgen");
  add(table, Kind::day, 1, "morgen", true);
  add(table, Kind::qualifier, -1, "last letzten|this diesen|next nächsten kommenden");
  add(table, Kind::count, 1,
      "one einem einer|two zwei deux|three drei trois|four vier quatre|five fünf cinq|six sechs|"
      "seven sieben sept|eight acht huit|nine neun neuf|ten zehn dix|eleven elf|twelve zwölf");
  add(table, Kind::count, 1, "a an", true);
  add(table, Kind::within, 0, "in dans");
  add(table, Kind::unit, kMinute,
      "minute minutes minuten|hour hours stunde stunden heure heures|day days tag tagen jour "
      "jours|week weeks woche wochen semaine semaines|month months monat monaten mois|year years "
      "jahr jahren an ans");
  add(table, Kind::noon, 0, "midnight");
  add(table, Kind::noon, 12, "noon");
  table["day"] = {Kind::after, kDay, true};
  return table;
}

const Table& table() {
  static const Table words = makeTable();
  return words;
}

std::size_t prefixHash(std::string_view word) {
  return (static_cast<unsigned char>(lower(word[0])) * 31u +
          static_cast<unsigned char>(lower(word[1]))) &
         1023u;
}

}  // namespace

DateWord dateWord(const std::string& word) {
  if (word.empty() || isDigit(word[0])) return {};
  const auto found = table().find(word);
  return found == table().end() ? DateWord{} : found->second;
}

PartOfDay partOfDay(const std::string& word) {
  if (word == "morning" || word == "früh" || word == "matin") return PartOfDay::morning;
  const bool evening = word == "evening" || word == "afternoon" || word == "night" ||
                       word == "tonight" || word == "abend" || word == "nachmittag" ||
                       word == "soir";
  return evening ? PartOfDay::evening : PartOfDay::unknown;
}

bool mayStartDate(std::string_view word) {
  static const std::array<std::uint32_t, 1024> lengths = [] {
    std::array<std::uint32_t, 1024> result{};
    for (const auto& [known, meaning] : table()) {
      const bool starts =
          meaning.kind != Kind::unit && !(meaning.kind == Kind::count && meaning.weak);
      if (starts && known.size() >= 2) result[prefixHash(known)] |= 1u << known.size();
    }
    return result;
  }();
  return word.size() >= 2 && word.size() < 32 && (lengths[prefixHash(word)] >> word.size() & 1u);
}

std::string zoneOffset(const std::string& abbreviation) {
  static const std::unordered_map<std::string, std::string> zones = {
      {"UTC", "Z"},      {"GMT", "Z"},       {"EST", "-05:00"}, {"EDT", "-04:00"},
      {"CST", "-06:00"}, {"CDT", "-05:00"},  {"MST", "-07:00"}, {"MDT", "-06:00"},
      {"PST", "-08:00"}, {"PDT", "-07:00"},  {"CET", "+01:00"}, {"CEST", "+02:00"},
      {"MEZ", "+01:00"}, {"MESZ", "+02:00"}, {"BST", "+01:00"}, {"AEST", "+10:00"},
      {"AEDT", "+11:00"}};
  const auto found = zones.find(abbreviation);
  return found == zones.end() ? std::string() : found->second;
}

}  // namespace marbelot::detection
