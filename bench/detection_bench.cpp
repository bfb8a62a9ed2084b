// How fast text is searched in which there is nothing to find, which is what the classifier does
// with every copied text, and how slow hostile text can make it. In the same run: memcpy over the
// same bytes, and libphonenumber's own matcher over (much less of) the same prose.
#include <benchmark/benchmark.h>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include <phonenumbers/phonenumbermatch.h>
#include <phonenumbers/phonenumbermatcher.h>
#include <phonenumbers/phonenumberutil.h>
#pragma GCC diagnostic pop

#include <cstring>
#include <string>

#include "platform/detection.h"

namespace {

using marbelot::DetectionKind;
using marbelot::operator|;

constexpr std::size_t textSize = 50'000'000;
constexpr double now = 1795255200;

// Sentences of words in a fixed pseudo-random order, with the numbers and capitals of plain prose.
std::string prose(std::size_t size) {
  constexpr const char* plainWords[] = {
      "the",     "morning", "and",      "of",      "water",  "she",    "had",     "never", "London",
      "seen",    "before",  "a",        "house",   "with",   "twelve", "windows", "which", "in",
      "may",     "have",    "belonged", "to",      "Mrs",    "Gray",   "whose",   "son",   "went",
      "away",    "years",   "ago",      "without", "saying", "where",  "it",      "was",   "that",
      "evening", "quietly", "1842",     "people",  "told",   "street", "day",     "so",    "do"};
  std::string text;
  unsigned state = 1;
  int words = 0;
  while (text.size() < size) {
    state = state * 1664525u + 1013904223u;
    text += plainWords[(state >> 16) % std::size(plainWords)];
    ++words;
    text += words % 90 == 0 ? ".\n\n" : words % 14 == 0 ? ". " : words % 9 == 0 ? ", " : " ";
  }
  text.resize(size);
  return text;
}

// C++ over and over, with the dots, colons and digits that programs have.
std::string code(std::size_t size) {
  constexpr const char* codeText =
      "#include <vector>\n"
      "// Sums the values from 1 to 10; see the notes in table 3.\n"
      "static int total(const std::vector<int>& values, int limit = 255) {\n"
      "  int sum = 0;\n"
      "  for (std::size_t i = 0; i < values.size(); ++i) {\n"
      "    if (values[i] > limit * 2 + 16) continue;  // 0x1F is too much\n"
      "    sum += values.at(i) - this->offset.value;\n"
      "    logger.info(\"value: %d of %d\", values[i], 1024);\n"
      "  }\n"
      "  return options.scale == 1.5 ? sum : node.next->total(3, 4);\n"
      "}\n\n";
  std::string text;
  while (text.size() < size) text += codeText;
  text.resize(size);
  return text;
}

std::string repeated(const std::string& piece) {
  std::string text;
  text.reserve(textSize + piece.size());
  while (text.size() < textSize) text += piece;
  return text;
}

void search(benchmark::State& state, const std::string& text, unsigned kinds, const char* region) {
  std::size_t found = 0;
  for (auto _ : state) {
    found += marbelot::firstDetection(text, kinds, {now, region}).has_value();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
  state.counters["found"] = found > 0;
}

void searchAll(benchmark::State& state, const std::string& text, unsigned kinds) {
  std::size_t found = 0;
  for (auto _ : state) found = marbelot::detect(text, kinds, {now, "DE"}).size();
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
  state.counters["found"] = static_cast<double>(found);
}

void copy(benchmark::State& state, const std::string& text) {
  std::string to(text.size(), '\0');
  for (auto _ : state) {
    std::memcpy(to.data(), text.data(), text.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void libphonenumber(benchmark::State& state, const std::string& text) {
  using i18n::phonenumbers::PhoneNumberMatch;
  using i18n::phonenumbers::PhoneNumberMatcher;
  const std::string piece = text.substr(0, 1 << 16);
  for (auto _ : state) {
    PhoneNumberMatcher matcher(piece, "US");
    PhoneNumberMatch match;
    while (matcher.HasNext()) matcher.Next(&match);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * piece.size()));
}

}  // namespace

int main(int argc, char** argv) {
  const unsigned link_phone = DetectionKind::link | DetectionKind::phone;
  const auto address = static_cast<unsigned>(DetectionKind::address);
  const auto date = static_cast<unsigned>(DetectionKind::date);
  const unsigned all = link_phone | address | date;
  const std::string texts[] = {prose(textSize), code(textSize)};
  const char* names[] = {"prose", "code"};

  for (std::size_t i = 0; i < 2; ++i) {
    const auto add = [&](const std::string& name, auto function) {
      benchmark::RegisterBenchmark((name + "/" + names[i]).c_str(), function)
          ->Unit(benchmark::kMillisecond);
    };
    const std::string& text = texts[i];
    add("memcpy", [&text](auto& state) { copy(state, text); });
    add("link|phone", [&text, link_phone](auto& state) { search(state, text, link_phone, "US"); });
    add("address", [&text, address](auto& state) { search(state, text, address, "US"); });
    add("date", [&text, date](auto& state) { searchAll(state, text, date); });
    add("libphonenumber", [&text](auto& state) { libphonenumber(state, text); });
  }
  for (const char* piece : {"1",
                            "1 ",
                            "a.",
                            "@",
                            "(((",
                            "555-0100 ",
                            "12 Main ",
                            "12345678 ",
                            "030 1234 ",
                            "a:",
                            "://",
                            "\u00e9.",
                            "a@a",
                            "1.1.1.1 ",
                            "1st A ",
                            "Apt 1 ",
                            "rue 1 ",
                            "12 rue ",
                            "Weg 1 ",
                            "a.rs ",
                            "12 Aa Bb Cc Dd Ee Ff ",
                            "(030) 12 ",
                            "+1 234 56 78 ",
                            "x/12, Ab Cd\n"}) {
    std::string name = piece;
    if (name.back() == '\n') name.pop_back();
    benchmark::RegisterBenchmark(("hostile, first/" + name).c_str(), [piece, link_phone,
                                                                      address](auto& state) {
      search(state, repeated(piece), link_phone | address, "DE");
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("hostile, all/" + name).c_str(), [piece, all](auto& state) {
      searchAll(state, repeated(piece), all);
    })->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
