// The detector and the classifier against snippets with labels: tests/data/snippets/<label>/*.txt.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "classification/classifier.h"
#include "classification/language_clues.h"
#include "classification/language_signals.h"
#include "platform/text.h"
#include "tests/support/rows.h"

namespace marbelot {
namespace {

namespace fs = std::filesystem;

struct Named {
  Language language;
  std::string name;
};

const std::map<std::string, Named> languages = {
    {"php", {Language::php, "PHP"}},
    {"cpp", {Language::cpp, "C++"}},
    {"c", {Language::c, "C"}},
    {"swift", {Language::swift, "Swift"}},
    {"python", {Language::python, "Python"}},
    {"typescript", {Language::typeScript, "TypeScript"}},
    {"javascript", {Language::javaScript, "JavaScript"}},
    {"csharp", {Language::cSharp, "C#"}},
    {"java", {Language::java, "Java"}},
    {"go", {Language::go, "Go"}},
    {"rust", {Language::rust, "Rust"}},
    {"ruby", {Language::ruby, "Ruby"}},
    {"json", {Language::json, "JSON"}},
    {"shell", {Language::shell, "Shell"}},
    {"html", {Language::html, "HTML"}},
    {"css", {Language::css, "CSS"}},
    {"sql", {Language::sql, "SQL"}}};

struct Snippet {
  std::string label, file, text;
};

std::vector<Snippet> snippets() {
  std::vector<Snippet> all;
  for (const auto& entry : fs::recursive_directory_iterator(MARBELOT_TEST_DATA "/snippets")) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path());
    all.push_back({entry.path().parent_path().filename(),
                   entry.path().parent_path().filename() / entry.path().filename(),
                   {std::istreambuf_iterator<char>(file), {}}});
  }
  return all;
}

// The share of the snippets that `wanted` picks for which `isRight` holds; names the others.
void expectShare(double share, const std::function<bool(const Snippet&)>& wanted,
                 const std::function<bool(const Snippet&)>& isRight) {
  double right = 0, count = 0;
  std::string misses;
  for (const Snippet& snippet : snippets()) {
    if (!wanted(snippet)) continue;
    ++count;
    if (isRight(snippet)) {
      ++right;
    } else {
      misses += "\n  " + snippet.file + ": " +
                std::string(detectLanguage(snippet.text).value_or("none")) + ", " +
                std::string(rawValue(classify(snippet.text)));
    }
  }
  ASSERT_GT(count, 0);
  EXPECT_GE(right / count, share) << "missed:" << misses;
}

bool isSource(const Snippet& snippet) { return languages.contains(snippet.label); }

bool hasSignal(const Snippet& snippet) {
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(snippet.text);
  return isSource(snippet) && carriesSignal(languages.at(snippet.label).language, trimmed);
}

TEST(LanguageDetector, NamesTheLanguageOfSnippets) {
  expectShare(0.97, hasSignal, [](const Snippet& s) {
    return detectLanguage(s.text) == std::string_view(languages.at(s.label).name);
  });
}

// Neither a language whose signals are all missing, whatever else speaks for it.
TEST(LanguageDetector, NamesNoneForOtherTexts) {
  expectShare(1, std::not_fn(hasSignal), [](const Snippet& s) { return !detectLanguage(s.text); });
}

TEST(Classify, KeepsSourceSessionsAndProseApart) {
  const auto labelled = [](const char* label) {
    return [label](const Snippet& s) { return s.label == label; };
  };
  const auto is = [](ClipCategory category) {
    return [category](const Snippet& s) { return classify(s.text) == category; };
  };
  // Some snippets hold a word like "key" and a token like "f2(x)": passwords come first.
  expectShare(0.95, hasSignal, [](const Snippet& s) {
    const ClipCategory category = classify(s.text);
    return category == ClipCategory::code || category == ClipCategory::password;
  });
  expectShare(0.95, labelled("terminal"), is(ClipCategory::terminal));
  expectShare(0.95, labelled("prose"), is(ClipCategory::text));
  expectShare(1, labelled("prose"),
              [](const Snippet& s) { return classify(s.text) != ClipCategory::code; });
}

TEST(LanguageDetector, TakesPiecesOfCommentsAndStringsAndNamesNoneWithoutItsSignal) {
  for (const Row& row : rowsOf("classification/texts.tsv", "languages"))
    EXPECT_EQ(detectLanguage(row[1]).value_or("none"), row[0]) << row;
}

TEST(LanguageSignals, MatchWhatTheirExpressionsMatch) {
  for (const Row& row : rowsOf("classification/texts.tsv", "signals")) {
    EXPECT_TRUE(carriesSignal(languages.at(row[0]).language, row[1])) << row;
    EXPECT_FALSE(carriesSignal(languages.at(row[0]).language, row[2])) << row;
  }
}

TEST(ClueTable, HoldsEachPatternOnce) {
  std::set<std::string_view> patterns;
  for (const Clue& clue : languageClues()) {
    EXPECT_TRUE(patterns.insert(clue.pattern).second) << clue.pattern;
  }
}

}  // namespace
}  // namespace marbelot
