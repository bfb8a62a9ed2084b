// What is made of screens before they are read.
#include "recognition/prepared_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "recognition/backgrounds.h"
#include "recognition/rules.h"
#include "recognition/table_rows.h"

namespace marbelot {
namespace {

struct Rgba {
  std::uint8_t r, g, b, a = 255;
};
constexpr Rgba white{255, 255, 255}, black{0, 0, 0}, navy{34, 48, 60}, silver{231, 236, 240};

void fill(Bitmap& bitmap, int left, int top, int width, int height, Rgba color) {
  for (int y = top; y < top + height; ++y) {
    for (int x = left; x < left + width; ++x) {
      std::uint8_t* const pixel = bitmap.row(y) + x * Bitmap::pixelBytes;
      pixel[0] = static_cast<std::uint8_t>(color.r * color.a / 255);
      pixel[1] = static_cast<std::uint8_t>(color.g * color.a / 255);
      pixel[2] = static_cast<std::uint8_t>(color.b * color.a / 255);
      pixel[3] = color.a;
    }
  }
}

Bitmap screen(int width, int height, Rgba color) {
  Bitmap bitmap = *Bitmap::make(width, height);
  fill(bitmap, 0, 0, width, height, color);
  return bitmap;
}

// A row of "H", each `size` pixels high.
void letters(Bitmap& bitmap, int left, int top, int count, int size, Rgba color) {
  const int stroke = std::max(size / 7, 1), width = size * 2 / 3;
  for (int i = 0; i < count; ++i, left += width + 3 * stroke) {
    fill(bitmap, left, top, stroke, size, color);
    fill(bitmap, left + width - stroke, top, stroke, size, color);
    fill(bitmap, left, top + size / 2, width, stroke, color);
  }
}

std::uint8_t inkAt(const Plane<std::uint8_t>& ink, int x, int y) {
  return ink.values[ink.at(x, y)];
}

std::uint8_t darkest(const Page& page) {
  return *std::min_element(page.gray.begin(), page.gray.end());
}

TEST(Ink, IsWhatDiffersFromTheBackgroundItStandsOnWhicheverIsBrighter) {
  Bitmap bitmap = screen(300, 120, white);
  letters(bitmap, 120, 20, 8, 14, black);
  fill(bitmap, 0, 0, 100, 120, navy);
  letters(bitmap, 10, 20, 8, 14, silver);
  fill(bitmap, 120, 60, 90, 20, {26, 127, 55});  // a button
  letters(bitmap, 130, 63, 5, 14, white);
  const auto ink = inkOf(bitmap);
  EXPECT_EQ(inkAt(ink, 120, 25), 255);
  EXPECT_EQ(inkAt(ink, 125, 25), 0) << "inside the letter";
  EXPECT_GT(inkAt(ink, 10, 25), 150) << "on the dark panel";
  EXPECT_EQ(inkAt(ink, 50, 100), 0) << "the panel itself";
  EXPECT_GT(inkAt(ink, 130, 70), 100) << "on the button";
  EXPECT_EQ(inkAt(ink, 122, 70), 0) << "the button itself";
}

TEST(Ink, LeavesOutTheSoftEdgesOfPanelsAndKeepsThoseOfLetters) {
  Bitmap bitmap = screen(200, 60, white);
  fill(bitmap, 20, 10, 160, 40, navy);
  fill(bitmap, 20, 9, 160, 1, {144, 151, 157});  // half of each
  letters(bitmap, 40, 20, 8, 14, white);
  fill(bitmap, 41, 34, 1, 1, {144, 151, 157});
  const auto ink = inkOf(bitmap);
  EXPECT_EQ(inkAt(ink, 100, 9), 0);
  EXPECT_GT(inkAt(ink, 41, 34), 80);
}

TEST(Ink, IsNoneWhereColoursShadeIntoEachOther) {
  Bitmap bitmap = screen(600, 60, white);
  for (int x = 20; x < 580; ++x)
    fill(bitmap, x, 5, 1, 50, {30, static_cast<std::uint8_t>(60 + x / 6), 120});
  letters(bitmap, 200, 20, 12, 14, white);
  const auto ink = inkOf(bitmap);
  for (int x = 30; x < 570; x += 10) EXPECT_EQ(inkAt(ink, x, 15), 0) << x;
  EXPECT_GT(inkAt(ink, 200, 25), 80);
}

TEST(Ink, SeesDifferencesOfHueAlone) {
  Bitmap bitmap = screen(200, 40, {0, 140, 90});
  letters(bitmap, 20, 10, 10, 14, {180, 40, 10});
  EXPECT_GT(inkAt(inkOf(bitmap), 20, 12), 60);
}

TEST(Ink, OfTransparentPicturesStandsOutWhateverItsColour) {
  for (const Rgba color : {white, black}) {
    Bitmap bitmap = *Bitmap::makeClear(200, 40);
    letters(bitmap, 20, 10, 10, 14, color);
    const auto ink = inkOf(bitmap);
    EXPECT_EQ(inkAt(ink, 20, 12), 255);
    EXPECT_EQ(inkAt(ink, 5, 5), 0);
  }
}

TEST(Rules, GoAndLettersStay) {
  Plane<std::uint8_t> ink{200, 80, std::vector<std::uint8_t>(200 * 80)};
  const auto draw = [&ink](int left, int top, int width, int height) {
    for (int y = top; y < top + height; ++y)
      for (int x = left; x < left + width; ++x) ink.values[ink.at(x, y)] = 255;
  };
  draw(10, 10, 150, 1);  // a table's line
  draw(10, 10, 1, 60);   // and another across it
  draw(30, 20, 2, 14);   // an "l"
  draw(60, 40, 6, 40);   // a headline's "I"
  draw(100, 6, 3, 8);    // a letter over the line
  draw(170, 30, 13, 1);  // a dash
  eraseRules(ink);
  for (const auto& [x, y] : {std::pair(150, 10), {10, 50}, {10, 10}})
    EXPECT_EQ(inkAt(ink, x, y), 0) << x << ", " << y;
  for (const auto& [x, y] : {std::pair(30, 25), {60, 60}, {100, 10}, {175, 30}})
    EXPECT_EQ(inkAt(ink, x, y), 255) << x << ", " << y;
}

TEST(Page, ShowsFaintTextOfAnySizeDarkAndLargeEnough) {
  for (const int size : {8, 12, 24, 60}) {
    Bitmap bitmap = screen(700, 100, {30, 30, 30});
    letters(bitmap, 20, 20, 12, size, {80, 80, 80});
    const Pages pages(bitmap);
    ASSERT_EQ(pages.count(), 1U);
    const Page page = pages.at(0);
    EXPECT_LT(darkest(page), 10) << size;
    EXPECT_EQ(page.gray.front(), 255);
    EXPECT_GE(size * page.scale, 20) << size;
    EXPECT_LE(size * page.scale, std::max(size, 36)) << size;
  }
}

TEST(Page, IsNoneWhereThereCanBeNoText) {
  EXPECT_EQ(Pages(screen(1, 1, black)).count(), 0U);
  EXPECT_EQ(Pages(screen(Bitmap::maximumSide, 1, black)).count(), 0U);
  EXPECT_EQ(Pages(screen(3, 2000, black)).count(), 0U);
  EXPECT_EQ(Pages(screen(300, 200, navy)).count(), 0U);
  EXPECT_EQ(Pages(*Bitmap::makeClear(300, 200)).count(), 0U);
}

TEST(Page, StaysWithinWhatARecogniserTakes) {
  Bitmap wide = screen(Bitmap::maximumSide, 20, white);
  letters(wide, 100, 4, 20, 9, black);
  Bitmap large = screen(2800, 2800, white);
  letters(large, 100, 4, 200, 5, black);
  for (const Bitmap* bitmap : {&wide, &large}) {
    const Pages pages(*bitmap);
    ASSERT_GE(pages.count(), 1U);
    for (std::size_t i = 0; i < pages.count(); ++i) {
      const Page page = pages.at(i);
      EXPECT_LE(std::max(page.width, page.height), 32000);
      EXPECT_LE(std::int64_t{page.width} * page.height, std::int64_t{110} << 20);
      EXPECT_EQ(page.gray.size(),
                static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height));
    }
  }
}

TEST(Page, IsOneOfSeveralWhereAPictureIsHighAndPartsNoLine) {
  Bitmap high = screen(60, 20000, white);
  for (int top = 8; top < 19990; top += 16) letters(high, 6, top, 5, 9, black);
  const Pages pages(high);
  ASSERT_GT(pages.count(), 2U);
  for (std::size_t i = 0; i < pages.count(); ++i) {
    const Page page = pages.at(i);
    EXPECT_GE(page.scale, 2);
    const auto rowOf = [&](int y) { return page.gray.begin() + std::int64_t{y} * page.width; };
    for (const int y : {21, page.height - 22})
      EXPECT_GT(*std::min_element(rowOf(y), rowOf(y + 1)), 128) << "no stroke at an end";
  }
}

// Lines of 30 pixels, one below the other, of so many words each.
void addColumn(std::vector<FoundLine>& lines, int left, int top, const std::vector<int>& words) {
  for (const int count : words) {
    if (count > 0) lines.push_back({left, top, left + 60 * count, top + 30, count});
    top += 40;
  }
}

TEST(Tables, AreRowsOfShortCellsEvenWhereOneIsMissing) {
  std::vector<FoundLine> lines;
  addColumn(lines, 0, 0, {9, 8, 9});
  addColumn(lines, 0, 200, {1, 2, 2, 2, 1});
  addColumn(lines, 400, 204, {1, 0, 1, 0, 1});
  addColumn(lines, 700, 196, {1, 2, 0, 1, 2});
  addColumn(lines, 0, 480, {9, 9});
  addColumn(lines, 0, 800, {1, 1, 1, 1, 1, 1, 2, 1});  // settings, most of them without a value
  addColumn(lines, 900, 800, {1, 0, 1, 0, 0, 0, 0, 1});
  auto tables = tablesAmong(lines);
  ASSERT_EQ(tables.size(), 2U);
  EXPECT_GE(tables[1].bottom, 1080);
  tables.pop_back();
  ASSERT_EQ(tables.size(), 1u);
  EXPECT_LE(tables[0].top, 200);
  EXPECT_GE(tables[0].bottom, 386);
  EXPECT_FALSE(tables[0].holds(lines[2]));
  EXPECT_FALSE(tables[0].holds(lines.back()));
}

TEST(Tables, AreNotColumnsOfProseNorAPanelBesideIt) {
  std::vector<FoundLine> columns, panel;
  addColumn(columns, 0, 0, {6, 7, 6, 5, 2});
  addColumn(columns, 600, 0, {7, 6, 7, 6, 1});
  EXPECT_TRUE(tablesAmong(columns).empty());
  addColumn(panel, 0, 0, {1, 2, 1, 1, 2});
  addColumn(panel, 300, 0, {8, 9, 8, 9, 8});
  EXPECT_TRUE(tablesAmong(panel).empty());
  EXPECT_TRUE(tablesAmong({}).empty());
}

}  // namespace
}  // namespace marbelot
