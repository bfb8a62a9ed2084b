#include "hud/text_face.h"

#include <gtest/gtest.h>

#include "hud/edit_bar.h"
#include "image/operations.h"
#include "platform/text.h"

namespace marbelot {
namespace {

using Lines = std::vector<std::string>;

// Every character is as wide as the font is large.
const Measure measure = [](const std::string& text, const Font& font) {
  return static_cast<double>(text::characterCount(text)) * font.size;
};

Lines wrap(std::string_view text, double characters, std::size_t lines) {
  return wrapped(text, {.size = 10}, {characters * 10, lines}, measure);
}

TEST(TextFace, BreaksAtBlanksAndWithinWordsThatAreTooLong) {
  EXPECT_EQ(wrap("one two three", 8, 9), (Lines{"one two", "three"}));
  EXPECT_EQ(wrap("abcdefghij", 4, 9), (Lines{"abcd", "efgh", "ij"}));
  EXPECT_EQ(wrap("a bcdefghijk", 6, 9), (Lines{"a bcde", "fghijk"}));
  EXPECT_EQ(wrap("one\r\n\ntwo", 9, 9), (Lines{"one", "", "two"}));
  EXPECT_EQ(wrap("", 9, 9), (Lines{""}));
  EXPECT_EQ(wrap("👩‍👩‍👧👩‍👩‍👧👩‍👩‍👧", 2, 9),
            (Lines{"👩‍👩‍👧👩‍👩‍👧", "👩‍👩‍👧"}));
}

TEST(TextFace, TellsThatSomethingIsLeftOut) {
  EXPECT_EQ(wrap("one two three four", 8, 2), (Lines{"one two", "three…"}));
  EXPECT_EQ(wrap("abcdefghij", 4, 1), (Lines{"abc…"}));
  EXPECT_EQ(wrap("a\nb\nc", 4, 2), (Lines{"a", "b…"}));
  EXPECT_EQ(wrap("a\nb", 4, 2), (Lines{"a", "b"}));
  for (const std::string& line : wrap(std::string(10000, 'x'), 40, 9))
    EXPECT_LE(text::characterCount(line), 40U);
}

TextFace faceOf(const std::string& text) {
  return textFace(share(text), analyse(text), {400, 9}, measure);
}

TEST(TextFace, ShowsWhatMattersOfAText) {
  const TextFace code = faceOf("\n\n\tdef f(x):\n\t\treturn x + 1\n\n    \n");
  EXPECT_EQ(code.heading, "Python code — 2 lines, 34 characters");
  EXPECT_EQ(code.lines, (Lines{"def f(x):", "    return x + 1"}));
  EXPECT_TRUE(code.font.monospaced);
  EXPECT_EQ(faceOf("x").heading, "Text — 1 character");
  EXPECT_EQ(faceOf("https://example.org").heading, "Link — 19 characters");
  std::string large;
  while (large.size() < 400'000) large += "some ";
  EXPECT_EQ(faceOf(large).heading, "Text — 400.0 kB");
  const std::string secret =
      "hunter2-"
      "Xq9!vLw";
  for (const std::string& line : faceOf(secret).lines)
    EXPECT_EQ(line.find(secret.substr(4)), std::string::npos);
  EXPECT_TRUE(startsRightToLeft("12 שלום hello"));
  EXPECT_FALSE(startsRightToLeft("hello שלום"));
}

TEST(EditBar, NeverCutsATitleOffAndStaysWithinItsWidth) {
  BarAbilities all{true, true, true, true, true, true};
  for (const double width : {leastImageBarWidth, 900.0}) {
    const auto buttons = imageBarButtons(false, all);
    const EditBar bar = layOutBar(buttons, width, true, measure);
    ASSERT_EQ(bar.views.size(), buttons.size());
    for (std::size_t i = 0; i < bar.views.size(); ++i) {
      const View& view = bar.views[i];
      EXPECT_EQ(view.id, buttons[i].spec);
      EXPECT_GE(view.frame.x, 0);
      EXPECT_LE(view.frame.maxX(), width + 0.5);
      EXPECT_EQ(view.frame.height, 24);
      EXPECT_GE(view.frame.width, measure(buttons[i].title, {.size = 11}) + 20) << view.id;
      for (std::size_t j = 0; j < i; ++j)
        EXPECT_TRUE(bar.views[j].frame.intersection(view.frame).isEmpty());
    }
  }
}

TEST(EditBar, EveryChoiceOfEveryGroupIsAnOperation) {
  std::size_t choices = 0;
  for (const EditGroup& group : hudEditGroups) {
    const auto menu = editGroupMenu(group.spec);
    for (const auto& item : menu->items) {
      if (item->separator || !item->choosable()) continue;
      ++choices;
      const auto* op = std::get_if<std::string>(&item->represented);
      EXPECT_TRUE(op && namedEdit(*op)) << item->title;
      EXPECT_EQ(item->action, "hudMenuPicked:");
    }
  }
  EXPECT_EQ(choices, 8U + 6 + 6 + 6 + 3);
  EXPECT_FALSE(editGroupMenu("group:none"));
  EXPECT_FALSE(editGroupMenu("border"));
}

}  // namespace
}  // namespace marbelot
