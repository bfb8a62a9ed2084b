// The detector and the classifier against snippets with labels: tests/data/snippets/<label>/*.txt.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>

#include "classification/classifier.h"

namespace marbelot {
namespace {

namespace fs = std::filesystem;

const std::map<std::string, std::string> kNames = {{"php", "PHP"},
                                                   {"cpp", "C++"},
                                                   {"c", "C"},
                                                   {"swift", "Swift"},
                                                   {"python", "Python"},
                                                   {"typescript", "TypeScript"},
                                                   {"javascript", "JavaScript"},
                                                   {"csharp", "C#"},
                                                   {"java", "Java"},
                                                   {"go", "Go"},
                                                   {"rust", "Rust"},
                                                   {"ruby", "Ruby"},
                                                   {"json", "JSON"},
                                                   {"shell", "Shell"},
                                                   {"html", "HTML"},
                                                   {"css", "CSS"},
                                                   {"sql", "SQL"}};

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

bool isSource(const Snippet& snippet) { return kNames.contains(snippet.label); }

TEST(LanguageDetector, NamesTheLanguageOfSnippets) {
  expectShare(0.97, isSource, [](const Snippet& s) {
    return detectLanguage(s.text) == std::string_view(kNames.at(s.label));
  });
}

TEST(LanguageDetector, NamesNoneForOtherTexts) {
  expectShare(1, std::not_fn(isSource), [](const Snippet& s) { return !detectLanguage(s.text); });
}

TEST(Classify, KeepsSourceSessionsAndProseApart) {
  const auto labelled = [](const char* label) {
    return [label](const Snippet& s) { return s.label == label; };
  };
  const auto is = [](ClipCategory category) {
    return [category](const Snippet& s) { return classify(s.text) == category; };
  };
  // Some snippets hold a word like "key" and a token like "f2(x)": passwords come first.
  expectShare(0.95, isSource, [](const Snippet& s) {
    const ClipCategory category = classify(s.text);
    return category == ClipCategory::code || category == ClipCategory::password;
  });
  expectShare(0.95, labelled("terminal"), is(ClipCategory::terminal));
  expectShare(0.95, labelled("prose"), is(ClipCategory::text));
  expectShare(1, labelled("prose"),
              [](const Snippet& s) { return classify(s.text) != ClipCategory::code; });
}

TEST(LanguageDetector, TakesPiecesOfCommentsAndStrings) {
  const struct {
    const char* text;
    const char* language;
  } kCases[] = {
      {"   of the words.\n    \"\"\"\n    for word in words:\n        print(word)", "Python"},
      {"/* unfinished\nfunction f() {", ""},
      {"q = \"SELECT * FROM t WHERE a = 1\"\nself.cursor.execute(q)\nprint(self.cursor)", "Python"},
      {"# # // doubled\n#   def total\n#     @lines.sum\n#   end\n#   puts total", "Ruby"},
      {"const s = '<div class=\"a\"></div>';\nconst t = s.replace('a', 'b');", "JavaScript"},
      {"{\"a\": function() { return 1; }}", "JavaScript"},
      {"   end of a note.\n */\n#define A 1\n#define B 2\n#endif /* A */", "C"},
      {"#! /usr/bin/env bash\nls", "Shell"},
      {"{\"a\": 1,\n \"b\": [true, null, -1.5e3]}", "JSON"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(detectLanguage(test.text).value_or(""), test.language) << test.text;
  }
}

// A few lines out of the middle, which the count of code lines would not know for code.
TEST(LanguageDetector, KnowsTheMiddlesOfSources) {
  const struct {
    const char* text;
    const char* language;
  } kCases[] = {
      {"at = parent\ncontinue\nbreak\nheap[at] = item", "Python"},
      {"x = 5\ny = 6\nz = x + y", "Python"},
      {"'red', 'green', 'blue', 'cyan',\n'teal', 'plum', 'mauve',\n'rose', 'sand']", "Python"},
      {"const words = [\n  'one',\n  'two',\n  'three',\n  'four',", "JavaScript"},
      {"  \"one\": 1,\n  \"two\": [2, 2],\n  \"three\": \"3\",\n  \"four\": null,", "JSON"},
      {"{\"open\", shop_open},\n{\"close\", shop_close},\n{\"rent\", shop_rent},", "C"},
      {"#define SHOP_OPEN 0x01\n#define SHOP_SHUT 0x02\n#define SHOP_SOLD 0x04\n\n"
       "/* Kinds of shops */\n#define SHOP_BOOKS 1\n#define SHOP_BREAD 2\n#define SHOP_CHEESE 3",
       "C"},
      {"int width;   /* of the door */\nint height;  /* the same */\nint open;    /* or not */\n"
       "int shut;    /* or so */",
       "C"},
      {"-q|--quiet)\n  quiet=t\n  ;;\n--loud)\n  quiet=\n  ;;\n*)\n  usage", "Shell"},
      {"quiet=\nname=\nforce=\nexport name\n\n. lib-setup\nforce=t", "Shell"},
      {"<p>\nWe keep the doors open until the last of our guests has gone home.\n</p>\n<p>\n"
       "Nobody has ever been asked to leave before <em>midnight</em>, not even\nthe poets.\n</p>",
       "HTML"},
      // What only looks so.
      {"name = Corner shop\nopen = 9-17\ncolour = dark green\nphone = none", ""},
      {"NAME=shop\nOPEN=9\nCOLOUR=green", ""},
      {"\"name\",\"open\",\"phone\"\n\"Ann\",\"9\",\"\"\n\"Bob\",\"10\",\"\"\n\"Cy\",\"8\",\"\"",
       ""},
      {"bread, cheese,\nwine, plums,\nsalt, flour,\neggs", ""},
      {"She said \"no\",\nthen \"perhaps\",\nthen \"why not\",\nand so we went.", ""},
      {"Put a <br> where the line\nends, and a <p> where the\nparagraph begins.", ""},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(detectLanguage(test.text).value_or(""), test.language) << test.text;
  }
}

}  // namespace
}  // namespace marbelot
