// How fast texts are sorted: short and long ones, and ones made to be slow.
//
// References in the same run: a copy of the same bytes, ICU's word boundaries over them, and ICU's
// regular expressions for one step of the classifier, the call pattern of the code-line test.
#include <benchmark/benchmark.h>
#include <unicode/brkiter.h>
#include <unicode/regex.h>
#include <unicode/utext.h>

#include <cstring>
#include <memory>
#include <string>

#include "classification/classifier.h"
#include "classification/code_lines.h"
#include "classification/line_counts.h"

namespace {

constexpr std::size_t large = std::size_t{50} << 20;
constexpr std::size_t adversarial = std::size_t{8} << 20;

constexpr std::string_view proseText =
    "The harbour lay quiet under a sky the colour of slate. A few boats had come in before the "
    "wind rose,\nand their crews stood about on the quay, smoking and talking of the week's catch "
    "as if nothing were amiss.\nNobody noticed the stranger until he asked, in a voice that "
    "carried further than he meant it to, for the ferry.\n";

constexpr std::string_view source =
    "  for (std::size_t row = 0; row < rows.size(); ++row) {\n"
    "    const auto& cells = rows[row].cells();\n"
    "    if (cells.empty()) continue;  // a gap in the sheet\n"
    "    widths[row] = std::max(widths[row], measure(cells.front(), font));\n"
    "  }\n\n";

// Source that no language claims, so that its lines are looked at, too.
constexpr std::string_view plainSource =
    "  while (row < rows) {\n    widths[row] = measure(cells[row], font);\n    row = row + 1;\n  "
    "}\n";

std::string repeated(std::string_view piece, std::size_t bytes) {
  std::string text;
  text.reserve(bytes + piece.size());
  while (text.size() < bytes) text += piece;
  return text;
}

void setBytes(benchmark::State& state, const std::string& text) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void classifyText(benchmark::State& state, const std::string& text) {
  for (auto _ : state) benchmark::DoNotOptimize(marbelot::classify(text));
  setBytes(state, text);
}

void copyText(benchmark::State& state, const std::string& text) {
  std::string copy(text.size(), ' ');
  for (auto _ : state) {
    std::memcpy(copy.data(), text.data(), text.size());
    benchmark::ClobberMemory();
  }
  setBytes(state, text);
}

void countWordsWithIcu(benchmark::State& state, const std::string& text) {
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> words(
      icu::BreakIterator::createWordInstance(icu::Locale::getRoot(), error));
  for (auto _ : state) {
    UText* bytes =
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &error);
    words->setText(bytes, error);
    int count = 0;
    while (words->next() != icu::BreakIterator::DONE) ++count;
    benchmark::DoNotOptimize(count);
    utext_close(bytes);
  }
  setBytes(state, text);
}

void findCallsWithIcu(benchmark::State& state, const std::string& text) {
  UErrorCode error = U_ZERO_ERROR;
  icu::RegexMatcher matcher(icu::UnicodeString(R"(\w+\s*\([^)\n]*\))"), 0, error);
  const icu::UnicodeString wide = icu::UnicodeString::fromUTF8(text);
  for (auto _ : state) {
    matcher.reset(wide);
    int count = 0;
    while (matcher.find(error)) ++count;
    benchmark::DoNotOptimize(count);
  }
  setBytes(state, text);
}

void countTheLines(benchmark::State& state, const std::string& text) {
  for (auto _ : state) benchmark::DoNotOptimize(marbelot::countLines(text));
  setBytes(state, text);
}

void add(const std::string& name, void (*run)(benchmark::State&, const std::string&),
         const std::string& text) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    run(state, text);
  })->Unit(text.size() < 10'000 ? benchmark::microsecond : benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  add("classify/60 characters", classifyText, std::string(proseText.substr(0, 60)));
  add("classify/1 kB prose", classifyText, repeated(proseText, 1000));
  add("classify/1 kB source", classifyText, repeated(source, 1000));

  const std::string prose = repeated(proseText, large);
  add("classify/50 MB prose", classifyText, prose);
  add("classify/50 MB source", classifyText, repeated(source, large));
  add("classify/50 MB source of no language", classifyText, repeated(plainSource, large));
  add("lines/50 MB prose", countTheLines, prose);
  add("memcpy/50 MB", copyText, prose);
  add("ICU word boundaries/1 MB prose", countWordsWithIcu, repeated(proseText, 1 << 20));
  add("ICU regex calls/1 MB source", findCallsWithIcu, repeated(plainSource, 1 << 20));

  for (const std::string_view piece :
       {"a",     "A",    " ",         "\n",      "0",      "f",        "(",        ")",
        "func(", "{",    "{:",        "\"",      "'",      "\\",       "eyJ",      "$",
        "# ",    "a@b:", "/",         "pas",     "\r",     "\xC3\xA9", "\xCC\x81", "\xE4\xB8\xAD",
        "\xFF",  "aB3 ", "aB3$x_kk ", "passwor", "def f(", "import ",  "<",        "a (",
        "a:",    ".A"}) {
    std::string name = "adversarial/";
    for (const char c : piece) {
      constexpr char hex[] = "0123456789abcdef";
      const auto byte = static_cast<unsigned char>(c);
      if (byte > 0x20 && byte < 0x7F) {
        name += c;
      } else {
        name += {'<', hex[byte >> 4], hex[byte & 15], '>'};
      }
    }
    add(name, classifyText, repeated(piece, adversarial));
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
