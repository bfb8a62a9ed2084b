#include "text/flatten_trim.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/text.h"
#include "tests/support/partly_readable_text.h"

namespace marbelot {
namespace {

std::string repeated(std::string_view piece, std::size_t times) {
  std::string result;
  for (; times > 0; --times) result += piece;
  return result;
}

TEST(Flatten, LineBreaksAreCharacters) {
  for (const char* text :
       {"a\nb", "a\rb", "\n", "\r", "a\r\r\nb", "a\r\n\nb", "a\n\r\nb", "\n\u0301", "\r\u0301"}) {
    EXPECT_TRUE(hasLineBreak(text)) << text;
  }
  for (const char* text : {"", "a", "a\r\nb", "\r\n\r\n", "a\u2028b\u0085\v\f"}) {
    EXPECT_FALSE(hasLineBreak(text)) << text;
  }
  // Beyond the search's first windows, and across their edges.
  for (std::size_t before = 250; before < 1100; ++before) {
    const std::string text(before, 'x');
    EXPECT_TRUE(hasLineBreak(text + "\ry"));
    EXPECT_TRUE(hasLineBreak(text + "\r\n\r\n\ny"));
    EXPECT_FALSE(hasLineBreak(text + "\r\ny"));
  }
}

TEST(Flatten, JoinsTrimmedLines) {
  const struct {
    const char *text, *separator, *expected;
  } cases[] = {
      {"  a  \n\n b\t\n", ", ", "a, b"},
      {"a\rb", "", "ab"},
      {" \n\t\n\r\u3000\n", " | ", ""},
      {"", ", ", ""},
      {"one", ", ", "one"},
      {"\u00A0a\u3000\n\u2003b", " ", "a b"},
      {"a\r\nb\nc", ",", "a\r\nb,c"},     // CR LF stays within its line
      {"a\r\r\nb", ",", "a,\r\nb"},       // CR, then CR LF
      {" \u0301a\nb", ",", "\u0301a,b"},  // lines are trimmed scalar by scalar
      {"a\vb\n\v", ",", "a\vb,\v"},       // other breaks are neither cuts nor blanks
      {"\n\u0301\n", ",", "\u0301"},
  };
  for (const auto& [text, separator, expected] : cases) {
    EXPECT_EQ(flatten(text, separator), expected) << text;
  }
}

TEST(Trim, StripsWholeCharactersAndKeepsEveryLine) {
  const struct {
    const char *text, *left, *right, *both;
  } cases[] = {
      {"  x  \n\t y", "x  \ny", "  x\n\t y", "x\ny"},
      {"", "", "", ""},
      {" \t ", "", "", ""},
      {"\n \n\n", "\n\n\n", "\n\n\n", "\n\n\n"},
      {" a \r\n b ", "a \r\nb ", " a \r\n b", "a \r\nb"},  // the CR shields the blanks before it
      {" a \r b ", "a \r b ", " a \r b", "a \r b"},
      {"\u3000 é\u00A0", "é\u00A0", "\u3000 é", "é"},
      {" \u0301x", " \u0301x", " \u0301x", " \u0301x"},  // a blank that carries an accent
      {"x \u0301", "x \u0301", "x \u0301", "x \u0301"},
      {"\t\u0301x\t", "\u0301x\t", "\t\u0301x", "\u0301x"},  // nothing joins a tab
      {"x\u0600 ", "x\u0600 ", "x\u0600 ", "x\u0600 "},      // a prepended sign owns the blank
      {"x\u0600\t", "x\u0600\t", "x\u0600", "x\u0600"},
      {"\u200Bx", "\u200Bx", "\u200Bx", "\u200Bx"},
      {"é \u3000 ", "é \u3000 ", "é", "é"},
  };
  for (const auto& [text, left, right, both] : cases) {
    EXPECT_EQ(trim(text, "left"), left) << text;
    EXPECT_EQ(trim(text, "right"), right) << text;
    EXPECT_EQ(trim(text, "both"), both) << text;
    EXPECT_EQ(trim(text, "anything"), both) << text;
  }
}

TEST(Previews, Flatten) {
  const struct {
    const char *text, *separator, *expected;
  } cases[] = {
      {"first line is long enough\nsecond line is long too\nthird", ", ",
       "“…is long enough, second line is… …”"},
      {"a\nb", " | ", "“a | b”"},
      {"\n a \n\n b \n \n", " ", "“a b”"},
      {"12345678901234\n12345678901234\nx", "", "“1234567890123412345678901234 …”"},
      {"123456789012345\n123456789012345", "-", "“…23456789012345-12345678901234…”"},
      {"only\n", ", ", "“only”"},
      {"\n \n", ", ", "(empty)"},
      {"123456789012345678901234567890123456\n", ",", "“123456789012345678901234567890123456”"},
      {"1234567890123456789012345678901234567\n", ",", "“123456789012345678901234567890123456…”"},
      {"e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301"
       "e\u0301e\u0301\nb",
       "",
       "“e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301"
       "e\u0301e\u0301e\u0301e\u0301e\u0301"
       "b”"},
  };
  for (const auto& [text, separator, expected] : cases) {
    EXPECT_EQ(flattenPreview(text, separator), expected) << text;
  }
}

TEST(Previews, Quoted) {
  const struct {
    std::string text;
    std::size_t limit;
    std::string expected;
  } cases[] = {
      {"", 36, "(empty)"},
      {"\r\n\n\r", 36, "“⏎⏎⏎”"},
      {"\n\r", 1, "“⏎…”"},
      {std::string(44, 'x'), 44, "“" + std::string(44, 'x') + "”"},
      {std::string(45, 'x'), 44, "“" + std::string(44, 'x') + "…”"},
      {repeated("👩‍👩‍👧‍👦", 36), 36,
       "“" + repeated("👩‍👩‍👧‍👦", 36) + "”"},
      {repeated("👩‍👩‍👧‍👦", 37), 36,
       "“" + repeated("👩‍👩‍👧‍👦", 36) + "…”"},
      {"\n\u0301x", 1, "“⏎\u0301…”"},  // the sign takes the accent, as a line break never does
      {"a" + repeated("\u0301", 500), 1, "“a" + repeated("\u0301", 500) + "”"},
      {std::string(207, 'x') + "\r\n", 208, "“" + std::string(207, 'x') + "⏎”"},
      {"abc", 0, "“…”"},
      {"", SIZE_MAX, "(empty)"},
      {"a\r\nb", SIZE_MAX / 2 + 1, "“a⏎b”"},
      {"a\nb", SIZE_MAX / 4 + 1, "“a⏎b”"},  // four bytes for each would be none
      {"a\nb", SIZE_MAX - 14, "“a⏎b”"},
  };
  for (const auto& [text, limit, expected] : cases) {
    EXPECT_EQ(quotedPreview(text, limit), expected) << text;
  }
}

// The shortcut must never show: on any text it gives what trimming all of it would.
TEST(Previews, TrimAgreesWithTrimmingEverything) {
  const std::string pieces[] = {"a",
                                " ",
                                "   ",
                                "\t",
                                "\n",
                                "\r\n",
                                "\r",
                                "é",
                                "\u3000",
                                "\u0301",
                                "\u0600",
                                "👩",
                                "\u200D",
                                "🇩",
                                std::string(90, ' '),
                                repeated("\u3000", 70),
                                std::string(40, 'x')};
  std::mt19937 random(11);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (auto n = random() % 24; n > 0; --n) text += pieces[random() % std::size(pieces)];
    for (const TrimDef& def : trimDefs) {
      const std::size_t limit = random() % 2 ? 36 : 3;
      ASSERT_EQ(trimPreview(text, def.mode, limit), quotedPreview(trim(text, def.mode), limit));
    }
  }
}

// A menu opens on whatever the clipboard holds.
TEST(Previews, HugeTextsAreNotReadThrough) {
  for (const std::string_view piece :
       {"some words in a line\n", "some words in a line\r", "x", "e\u0301"}) {
    const PartlyReadableText huge(piece);
    const std::string_view text = huge.text();
    EXPECT_EQ(quotedPreview(text, 36), quotedPreview(repeated(piece, 40), 36));
    for (const TrimDef& def : trimDefs)
      EXPECT_EQ(trimPreview(text, def.mode, 36), trimPreview(repeated(piece, 40), def.mode, 36));
    EXPECT_EQ(text::suffixBytes(text, 14), text::suffixBytes(repeated(piece, 40), 14));
    if (piece.back() != '\n' && piece.back() != '\r') continue;
    EXPECT_TRUE(hasLineBreak(text));
    EXPECT_EQ(flattenPreview(text, ", "), flattenPreview(repeated(piece, 40), ", "));
  }
}

TEST(Viewer, TitleCountsCharactersAndLines) {
  const struct {
    std::string text;
    const char* title;
  } cases[] = {
      {"abc\n", "Clipboard — 4 chars, 2 lines"},
      {"x", "Clipboard — 1 chars, 1 line"},
      {"", "Clipboard — 0 chars, 1 line"},
      {"a\r\nb\rc", "Clipboard — 5 chars, 2 lines"},
      {repeated("0123456789\n", 100), "Clipboard — 1100 chars, 101 lines"},
  };
  for (const auto& [text, title] : cases) {
    EXPECT_EQ(viewerTitle(text::characterCount(text), lineCount(text)), title);
  }
}

}  // namespace
}  // namespace marbelot
