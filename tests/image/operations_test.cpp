#include "image/operations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "image/decimal.h"
#include "image/pixel_operations.h"
#include "tests/support/rows.h"

namespace marbelot {
namespace {

constexpr const char* table = "image/operations.tsv";

// The size of what an op string makes of a picture, "" for none.
std::string sizeAfter(const char* op, int width, int height) {
  const auto result = apply(op, *Bitmap::makeClear(width, height));
  if (!result) return "";
  return std::to_string(result->width()) + "x" + std::to_string(result->height());
}

TEST(Operations, SizesOfResults) {
  for (const Row& row : rowsOf(table, "sizes"))
    EXPECT_EQ(sizeAfter(row[0].c_str(), std::stoi(row[1]), std::stoi(row[2])), row[3]) << row;
}

// The operation whose items have this action, or null.
const Operation* operationForSelector(std::string_view selector) {
  for (const Operation& operation : operations())
    if (operation.selector == selector) return &operation;
  return nullptr;
}

// As the table writes it: its kind, a blank, and the value.
EditParameter parameterFrom(const std::string& written) {
  const std::string kind = written.substr(0, written.find(' '));
  std::string value = written.substr(std::min(kind.size() + 1, written.size()));
  if (kind == "text") return value;
  if (kind == "whole") return std::int64_t{std::stoll(value)};
  if (kind == "number") return std::stod(value);
  int red = 0, green = 0, blue = 0;
  if (std::istringstream(value) >> red >> green >> blue) {
    return PixelColor{static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                      static_cast<std::uint8_t>(blue)};
  }
  return {};
}

// What is said of an action on a picture: its message, or why there is none.
std::string said(const std::string& selector, const EditParameter& parameter, int width,
                 int height) {
  const Operation* operation = operationForSelector(selector);
  if (!operation) return "no such action";
  const auto edit = operation->edit(parameter);
  if (!edit) return "wrong parameter";
  const Result result = edit->apply(*Bitmap::makeClear(width, height));
  return result ? edit->message : std::string(failureMessage(*operation, result, "unreadable"));
}

TEST(Operations, Messages) {
  for (const Row& row : rowsOf(table, "messages")) {
    const std::string message =
        said(row[0], parameterFrom(row[1]), std::stoi(row[2]), std::stoi(row[3]));
    EXPECT_EQ(message, row[4]) << row;
  }
  // The operations' own failures; nothing is said of a border.
  EXPECT_EQ(failureMessage(*operationForSelector("addBorderClip:"), Result::none(), "unreadable"),
            "");
  EXPECT_EQ(failureMessage(*operationForSelector("makeEmblemClip:"), Result::none(), "unreadable"),
            "Couldn't make an emblem from that image");
  EXPECT_EQ(failureMessage(*operationForSelector("flipClip:"), Result::none(), "unreadable"),
            "unreadable");
}

// A parameter as text, for comparing.
std::string textOf(const EditParameter& parameter) {
  if (const auto* text = std::get_if<std::string>(&parameter)) return *text;
  if (const auto* number = std::get_if<std::int64_t>(&parameter)) return std::to_string(*number);
  if (const auto* number = std::get_if<double>(&parameter)) return std::to_string(*number);
  const PixelColor color = std::get<PixelColor>(parameter);
  return std::to_string(color.red) + "," + std::to_string(color.green) + "," +
         std::to_string(color.blue);
}

TEST(Operations, MenuAsData) {
  std::vector<std::string> menu, expected;
  for (const Operation& operation : operations()) {
    if (operation.startsSection) menu.emplace_back("-");
    menu.push_back(std::string(operation.menuTitle) + " (" + std::string(operation.selector) + ")");
    for (const EditChoice& choice : operation.choices) {
      const bool item = !choice.arguments.empty();
      menu.push_back("> " + std::string(choice.title.empty() ? "-" : choice.title) +
                     (item ? " = " + textOf(operation.parameterOf(choice)) : ""));
    }
  }
  for (const Row& row : rowsOf(table, "menu")) expected.push_back(row[0]);
  EXPECT_EQ(menu, expected);
}

// A picture of which no two sides, turns or colours look the same: white, black and noise.
Bitmap unevenPicture() {
  Bitmap picture = *Bitmap::make(300, 260);
  for (int y = 0; y < 260; ++y) {
    for (int x = 0; x < 300; ++x) {
      std::uint8_t* pixel = picture.row(y) + 4 * x;
      const bool isWhite = x > 30 && y<9, isBlack = x> 20 && y > 21;
      for (int c = 0; c < 3; ++c)
        pixel[c] = static_cast<std::uint8_t>(isWhite ? 255 : isBlack ? 0 : 90 + x * 3 + y * c);
      pixel[3] = 255;
    }
  }
  return picture;
}

std::vector<std::uint8_t> bytesOf(const Result& result) {
  std::vector<std::uint8_t> bytes;
  for (int y = 0; result && y < result->height(); ++y)
    bytes.insert(bytes.end(), result->row(y), result->row(y) + 4 * result->width());
  return bytes;
}

// The pixels of a call as the table writes it.
Result called(const std::string& call, const Bitmap& picture) {
  std::istringstream words(call);
  std::string name, first, second;
  words >> name >> first >> second;
  if (name == "border")
    return addBorder(picture, std::get<PixelColor>(parameterFrom("color " + call.substr(7))));
  if (name == "shadow") {
    const bool grown = first == "grown";
    return addRoundedShadow(picture, grown ? ShadowCanvas::grown : ShadowCanvas::sameSize,
                            std::stod(second));
  }
  if (name == "transparent") {
    return makeTransparent(picture, first == "white"   ? Background::white
                                    : first == "black" ? Background::black
                                                       : Background::corner);
  }
  if (name == "emblem") {
    return makeEmblem(picture, first == "circle" ? EmblemShape::circle : EmblemShape::squircle,
                      second == "clear"   ? EmblemStyle::clear
                      : second == "white" ? EmblemStyle::white
                                          : EmblemStyle::dark);
  }
  if (name == "rotate") return rotate(picture, std::stoi(first));
  if (name == "flip")
    return flip(picture, first == "leftRight" ? FlipAxis::leftRight : FlipAxis::topBottom);
  return resize(picture, std::stod(first));
}

// What op strings and menus' parameters do, and what is said of it. The same words mean the same in
// both, but for what is missing.
TEST(Operations, DoWhatTheySay) {
  const Bitmap picture = unevenPicture();
  for (const Row& row : rowsOf(table, "results")) {
    const auto expected = bytesOf(called(row[3], picture));
    ASSERT_FALSE(expected.empty()) << row;
    const auto named = namedEdit(row[0]);
    ASSERT_TRUE(named) << row;
    EXPECT_EQ(named->operation->selector, row[1]) << row;
    EXPECT_EQ(named->edit.message, row[4]) << row;
    EXPECT_TRUE(bytesOf(named->edit.apply(picture)) == expected) << row;
    const auto chosen = operationForSelector(row[1])->edit(parameterFrom(row[2]));
    ASSERT_TRUE(chosen) << row;
    EXPECT_EQ(chosen->message, row[4]) << row;
    EXPECT_TRUE(bytesOf(chosen->apply(picture)) == expected) << row;
  }
  EXPECT_FALSE(operationForSelector("cropClipImage:"));
}

TEST(Decimal, NumbersBeyondAllDoubles) {
  EXPECT_EQ(decimalNumber("1e999"), HUGE_VAL);
  EXPECT_EQ(decimalNumber("-1e999"), -HUGE_VAL);
  EXPECT_EQ(decimalNumber("-Infinity"), -HUGE_VAL);
  EXPECT_EQ(decimalNumber("1.7976931348623157e308"), 1.7976931348623157e308);
  EXPECT_EQ(decimalNumber("1e-999"), 0);
  EXPECT_FALSE(decimalNumber("infinite"));
}

}  // namespace
}  // namespace marbelot
