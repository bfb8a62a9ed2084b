// Counting characters, flattening and trimming, beside a memcpy of the same bytes and beside what
// one would write with ICU alone. Compare the bytes per second within one run.
#include <benchmark/benchmark.h>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <memory>
#include <string>

#include "platform/text.h"
#include "text/collection.h"
#include "text/flatten_trim.h"

namespace marbelot {
namespace {

// 16 MB each.
const std::string& corpus(std::int64_t kind) {
  static const std::string corpora[] = {
      [](const auto& paragraph) {
        std::string text;
        while (text.size() < 16u << 20) text += paragraph;
        return text;
      }("  The quick brown fox jumps over the lazy dog, and then it has a rest.  \n"
        "\tAnother line, indented by a tab and ended by nothing\n\n"),
      [] {
        std::string text;
        while (text.size() < 16u << 20)
          text += "A line as some systems end it, fifty bytes or so.\r\n";
        return text;
      }(),
      [] {
        std::string text;
        while (text.size() < 16u << 20) {
          text +=
              "  Grüße aus Köln, à bientôt. Съешь же ещё этих мягких булок.\u00A0\n"
              "\u3000天地玄黃，宇宙洪荒。いろはにほへと 다람쥐 헌 쳇바퀴 "
              "👍🏽 "
              "🇩🇪\n";
        }
        return text;
      }(),
      [] {
        std::string text;
        while (text.size() < 16u << 20)
          text += " सभी मनुष्यों को गौरव और अधिकारों के विषय में जन्मजात स्वतन्त्रता\n";
        return text;
      }()};
  return corpora[kind];
}

enum { prose, crLf, mixed, devanagari };

void setBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(corpus(state.range(0)).size()));
}

template <typename Work>
void run(benchmark::State& state, Work work) {
  const std::string& text = corpus(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(work(text));
  setBytes(state);
}

void Copy(benchmark::State& state) {
  run(state, [](const std::string& text) { return std::string(text); });
}

void CharacterCount(benchmark::State& state) { run(state, text::characterCount); }

void CharacterCountByIcu(benchmark::State& state) {
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> iterator(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
  run(state, [&](const std::string& text) {
    UText bytes = UTEXT_INITIALIZER;
    utext_openUTF8(&bytes, text.data(), static_cast<std::int64_t>(text.size()), &error);
    iterator->setText(&bytes, error);
    std::size_t count = 0;
    while (iterator->next() != icu::BreakIterator::DONE) ++count;
    utext_close(&bytes);
    return count;
  });
}

void Sanitized(benchmark::State& state) {
  std::string text = corpus(state.range(0));
  for (auto _ : state) text = text::sanitized(std::move(text));
  setBytes(state);
}

void HasLineBreak(benchmark::State& state) { run(state, hasLineBreak); }

void LineCount(benchmark::State& state) { run(state, lineCount); }

void Flatten(benchmark::State& state) {
  run(state, [](const std::string& text) { return flatten(text, ", "); });
}

void Trim(benchmark::State& state) {
  run(state, [](const std::string& text) { return trim(text, "both"); });
}

// Scalar by scalar, asking ICU for each.
void TrimByIcu(benchmark::State& state) {
  run(state, [](const std::string& text) {
    std::string result, blanks;
    bool atStart = true;
    for (std::int32_t at = 0, size = static_cast<std::int32_t>(text.size()); at < size;) {
      const std::int32_t start = at;
      const auto c = static_cast<UChar32>(text::scalarAt(text, static_cast<std::size_t>(at)).value);
      U8_FWD_1(text.data(), at, size);
      const auto bytes = static_cast<std::size_t>(at - start);
      if (c == '\n') {
        blanks.clear();
        atStart = true;
        result += '\n';
      } else if (u_isblank(c)) {
        if (!atStart) blanks.append(text, static_cast<std::size_t>(start), bytes);
      } else {
        result += blanks;
        blanks.clear();
        result.append(text, static_cast<std::size_t>(start), bytes);
        atStart = false;
      }
    }
    return result;
  });
}

// What opening the menu costs with this text on the clipboard: seven variant titles.
void MenuTitles(benchmark::State& state) {
  run(state, [](const std::string& text) {
    std::size_t bytes = 0;
    if (hasLineBreak(text)) {
      const FlattenHead head = flattenHead(text);
      for (const FlattenDef& def : flattenDefs) bytes += flattenPreview(head, def.separator).size();
    }
    for (const TrimDef& def : trimDefs) bytes += trimPreview(text, def.mode, 36).size();
    return bytes;
  });
}

void CollectionSummary(benchmark::State& state) {
  Collection collection;
  for (int i = 0; i < 100; ++i)
    collection.append(share(corpus(state.range(0)).substr(0, 100000 + i)));
  // Another separator each time, or nothing would be left to count.
  bool comma = false;
  for (auto _ : state) {
    comma = !comma;
    benchmark::DoNotOptimize(collection.characterCount(comma ? "comma" : "space"));
  }
}

#define EVERY_CORPUS ->Arg(prose)->Arg(crLf)->Arg(mixed)->Arg(devanagari)
BENCHMARK(Copy) EVERY_CORPUS;
BENCHMARK(CharacterCount) EVERY_CORPUS;
BENCHMARK(CharacterCountByIcu) EVERY_CORPUS;
BENCHMARK(Sanitized) EVERY_CORPUS;
BENCHMARK(HasLineBreak)->Arg(crLf);
BENCHMARK(LineCount)->Arg(prose);
BENCHMARK(Flatten) EVERY_CORPUS;
BENCHMARK(Trim) EVERY_CORPUS;
BENCHMARK(TrimByIcu) EVERY_CORPUS;
BENCHMARK(MenuTitles) EVERY_CORPUS;
BENCHMARK(CollectionSummary)->Arg(prose);

}  // namespace
}  // namespace marbelot
