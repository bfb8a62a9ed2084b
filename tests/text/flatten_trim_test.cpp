#include "text/flatten_trim.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/text.h"
#include "tests/support/partly_readable_text.h"
#include "tests/support/rows.h"

namespace marbelot {
namespace {

std::string repeated(std::string_view piece, std::size_t times) {
  std::string result;
  for (; times > 0; --times) result += piece;
  return result;
}

constexpr const char* table = "text/texts.tsv";

TEST(Flatten, LineBreaksAreCharacters) {
  for (const Row& row : rowsOf(table, "line breaks"))
    EXPECT_EQ(hasLineBreak(row[1]), row[0] == "yes") << row;
  // Beyond the search's first windows, and across their edges.
  for (std::size_t before = 250; before < 1100; ++before) {
    const std::string text(before, 'x');
    EXPECT_TRUE(hasLineBreak(text + "\ry"));
    EXPECT_TRUE(hasLineBreak(text + "\r\n\r\n\ny"));
    EXPECT_FALSE(hasLineBreak(text + "\r\ny"));
  }
}

TEST(Flatten, JoinsTrimmedLines) {
  for (const Row& row : rowsOf(table, "flatten")) EXPECT_EQ(flatten(row[0], row[1]), row[2]) << row;
}

TEST(Trim, StripsWholeCharactersAndKeepsEveryLine) {
  for (const Row& row : rowsOf(table, "trim")) {
    EXPECT_EQ(trim(row[0], "left"), row[1]) << row;
    EXPECT_EQ(trim(row[0], "right"), row[2]) << row;
    EXPECT_EQ(trim(row[0], "both"), row[3]) << row;
    EXPECT_EQ(trim(row[0], "anything"), row[3]) << row;
  }
}

TEST(Previews, ShowBothSidesOfTheFirstBreakOrTheBeginning) {
  for (const Row& row : rowsOf(table, "flatten previews"))
    EXPECT_EQ(flattenPreview(row[0], row[1]), row[2]) << row;
  for (const Row& row : rowsOf(table, "quoted previews"))
    EXPECT_EQ(quotedPreview(row[0], std::stoull(row[1])), row[2]) << row;
  const std::string family = "\U0001F469\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466";
  EXPECT_EQ(quotedPreview(repeated(family, 36), 36), "“" + repeated(family, 36) + "”");
  EXPECT_EQ(quotedPreview(repeated(family, 37), 36), "“" + repeated(family, 36) + "…”");
  const std::string accents = "a" + repeated("\u0301", 500), line(207, 'x');
  EXPECT_EQ(quotedPreview(accents, 1), "“" + accents + "”");
  EXPECT_EQ(quotedPreview(line + "\r\n", 208), "“" + line + "⏎”");
}

// The shortcut must never show: on any text it gives what trimming all of it would.
TEST(Previews, TrimAgreesWithTrimmingEverything) {
  // clang-format off
  const std::string pieces[] = {
      "a", " ", "   ", "\t", "\n", "\r\n", "\r", "é", "\u3000", "\u0301", "\u0600", "👩", "\u200D", "🇩",
      std::string(90, ' '), repeated("\u3000", 70), std::string(40, 'x')};
  // clang-format on
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
  for (const Row& row : rowsOf(table, "viewer titles"))
    EXPECT_EQ(viewerTitle(text::characterCount(row[0]), lineCount(row[0])), row[1]) << row;
}

}  // namespace
}  // namespace marbelot
