#include "image/operations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "image/decimal.h"
#include "image/pixel_operations.h"

namespace marbelot {
namespace {

// The size of what an op string makes of a picture, "" for none.
std::string sizeAfter(const char* op, int width, int height) {
  const auto result = apply(op, *Bitmap::makeClear(width, height));
  if (!result) return "";
  return std::to_string(result->width()) + "x" + std::to_string(result->height());
}

TEST(Operations, SizesOfResults) {
  const struct {
    const char* op;
    int width, height;
    const char* size;
  } cases[] = {{"border:white", 200, 100, "212x112"},
               {"border", 4000, 3000, "4150x3150"},
               {"border", 239, 400, "251x412"},
               {"border", 240, 400, "252x412"},
               {"border", 319, 400, "333x414"},
               {"border", 1, 1, "13x13"},
               {"shadow:grow:small", 100, 100, "124x124"},
               {"shadow", 1000, 2000, "1180x2180"},
               {"shadow:anything:large", 1000, 2000, "1300x2300"},
               {"shadow:same:large", 20, 20, ""},
               {"shadow:same:large", 24, 100, ""},
               {"shadow:same:large", 25, 25, "25x25"},
               {"shadow:same", 300, 200, "300x200"},
               {"emblem:circle:clear", 300, 200, "200x200"},
               {"emblem:squircle:white", 40, 40, "48x48"},
               {"emblem", 47, 60, "55x55"},
               {"emblem::dark", 48, 60, "56x56"},
               {"emblem:circle:dark", 1, 1, "9x9"},
               {"rotate:90", 300, 200, "200x300"},
               {"rotate:-90", 300, 200, "200x300"},
               {"rotate", 300, 200, "200x300"},
               {"rotate:+90", 300, 200, "200x300"},
               {"rotate:180", 300, 200, "300x200"},
               {"rotate:270", 300, 200, "300x200"},
               {"rotate:450", 300, 200, "300x200"},
               {"rotate:45", 300, 200, "300x200"},
               {"rotate:9223372036854775807", 3, 2, "3x2"},
               {"rotate:-9223372036854775808", 3, 2, "3x2"},
               {"rotate:9223372036854775808", 3, 2, "2x3"},  // no such integer: 90
               {"rotate:90 ", 3, 2, "2x3"},
               {"rotate:1.5", 3, 2, "2x3"},
               {"flip:h", 3, 2, "3x2"},
               {"flip", 3, 2, "3x2"},
               {"transparent", 3, 2, "3x2"},
               {"resize:0.25", 3, 3, "1x1"},
               {"resize:0.75", 100, 50, "75x37"},
               {"resize", 5, 3, "2x1"},
               {"resize:1/2", 5, 3, "2x1"},
               {"resize:0,9", 5, 3, "2x1"},
               {"resize:0x1", 5, 3, "2x1"},
               {"resize:+1.5e0", 4, 2, "6x3"},
               {"resize:.5", 4, 2, "2x1"},
               {"resize:-7", 4, 2, "1x1"},
               {"resize:1e-999", 4, 2, "1x1"},
               {"resize:1e999", 4, 2, ""},
               {"resize:-1e999", 4, 2, ""},
               {"resize:1e30", 4, 2, ""},
               {"resize:nan", 4, 2, ""},
               {"resize:inf", 4, 2, ""},
               {"resize:32768", 1, 1, ""},
               {"resize:32769", 1, 1, ""},
               {"::rotate:::-90:", 3, 2, "2x3"},
               {"", 3, 2, ""},
               {":::", 3, 2, ""},
               {"Rotate:90", 3, 2, ""},
               {"crop", 3, 2, ""}};
  for (const auto& [op, width, height, size] : cases) {
    EXPECT_EQ(sizeAfter(op, width, height), size) << op << " of " << width << "x" << height;
  }
}

// What is said of an action on a picture: its message, or why there is none.
std::string said(const char* selector, const EditParameter& parameter, int width, int height) {
  const Operation* operation = operationForSelector(selector);
  if (!operation) return "no such action";
  const auto edit = operation->edit(parameter);
  if (!edit) return "wrong parameter";
  const Result result = edit->apply(*Bitmap::makeClear(width, height));
  return result ? edit->message : std::string(failureMessage(*operation, result, "unreadable"));
}

TEST(Operations, Messages) {
  const std::int64_t farthest = std::numeric_limits<std::int64_t>::min();
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* selector;
    EditParameter parameter;
    int width, height;
    const char* message;
  } cases[] = {
      {"addBorderClip:", colors::red, 4, 4, "Added border"},
      {"addBorderClip:", std::string("red"), 4, 4, "wrong parameter"},
      {"addBorderClip:", colors::red, 1, 32768, "unreadable"},  // too long with a border
      {"addShadowClip:", std::string("grow:small"), 4, 4, "Added rounded shadow"},
      {"addShadowClip:", std::string("same:small"), 25, 25, "Added rounded shadow"},
      {"addShadowClip:", std::string("same:large"), 20, 20, "Image too small for that shadow"},
      {"addShadowClip:", std::string(":same:"), 24, 99, "Image too small for that shadow"},
      {"addShadowClip:", std::string("grow:small"), 32760, 1, "unreadable"},
      {"addShadowClip:", std::int64_t{1}, 4, 4, "wrong parameter"},
      {"makeTransparentClip:", std::string("any"), 4, 4, "Made background transparent"},
      {"makeTransparentClip:", {}, 4, 4, "wrong parameter"},
      {"makeEmblemClip:", std::string("circle:clear"), 4, 4, "Made circular emblem"},
      {"makeEmblemClip:", std::string("squircle:dark"), 4, 4, "Made rounded-square emblem"},
      {"makeEmblemClip:", std::string("Circle"), 4, 4, "Made rounded-square emblem"},
      {"makeEmblemClip:", 1.0, 4, 4, "wrong parameter"},
      {"rotateClip:", std::int64_t{-90}, 4, 4, "Rotated -90°"},
      {"rotateClip:", std::int64_t{450}, 4, 4, "Rotated 450°"},
      {"rotateClip:", farthest, 4, 4, "Rotated -9223372036854775808°"},
      {"rotateClip:", 90.0, 4, 4, "wrong parameter"},
      {"flipClip:", std::string("h"), 4, 4, "Flipped"},
      {"flipClip:", std::int64_t{1}, 4, 4, "wrong parameter"},
      {"resizeClip:", 0.25, 3, 3, "Resized to 25%"},
      {"resizeClip:", 0.29, 3, 3, "Resized to 28%"},  // 0.29 * 100 is just below 29
      {"resizeClip:", -0.5, 3, 3, "Resized to -50%"},
      {"resizeClip:", 32768.0, 1, 1, "unreadable"},
      {"resizeClip:", -1e300, 1, 1, "unreadable"},
      {"resizeClip:", infinity, 1, 1, "unreadable"},
      {"resizeClip:", infinity - infinity, 1, 1, "unreadable"},
      {"resizeClip:", std::int64_t{1}, 3, 3, "wrong parameter"},
      {"cropClipImage:", {}, 3, 3, "no such action"},
  };
  for (const auto& [selector, parameter, width, height, message] : cases) {
    EXPECT_EQ(said(selector, parameter, width, height), message) << selector;
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
  std::string menu;
  for (const Operation& operation : operations()) {
    if (operation.startsSection) menu += "-\n";
    menu += std::string(operation.menuTitle) + " (" + std::string(operation.selector) + ")\n";
    for (const EditChoice& choice : operation.choices) {
      const bool item = !choice.arguments.empty();
      menu += "> " + std::string(choice.title.empty() ? "-" : choice.title) +
              (item ? " = " + textOf(operation.parameterOf(choice)) : "") + "\n";
    }
  }
  EXPECT_EQ(menu, R"(Add border (addBorderClip:)
> White = 255,255,255
> Black = 0,0,0
> Gray = 128,128,128
> Red = 255,59,48
> Blue = 0,122,255
> Green = 52,199,89
Add rounded shadow (addShadowClip:)
> Grow canvas (image stays full size)
>   Small = grow:small
>   Medium = grow:medium
>   Large = grow:large
> -
> Keep same size (fit image inside)
>   Small = same:small
>   Medium = same:medium
>   Large = same:large
Make transparent (makeTransparentClip:)
> Remove white background = white
> Remove black background = black
> Remove corner color (auto) = corner
Make emblem (makeEmblemClip:)
> Circle
>   Transparent background = circle:clear
>   White badge = circle:white
>   Dark badge = circle:dark
> -
> Rounded square (app-icon style)
>   Transparent background = squircle:clear
>   White badge = squircle:white
>   Dark badge = squircle:dark
-
Rotate (rotateClip:)
> Right 90° = 90
> Left 90° = -90
> 180° = 180
Flip (flipClip:)
> Horizontal = h
> Vertical = v
Resize (resizeClip:)
> 75% = 0.750000
> 50% = 0.500000
> 25% = 0.250000
)");
}

// The same words mean the same in an op string and in a menu's parameter, but for what is missing.
TEST(Operations, DefaultsOfOpStringsAndMenus) {
  const auto same = [](const char* op, const char* selector, const char* parameter) {
    Bitmap picture = *Bitmap::make(60, 50);
    for (int i = 0; i < 60 * 50 * 4; ++i)
      picture.data()[i] = static_cast<std::uint8_t>(i % 4 == 3 ? 255 : i * 7);
    const auto named = marbelot::apply(op, picture);
    const Result chosen =
        operationForSelector(selector)->edit(std::string(parameter))->apply(picture);
    return named && chosen && named->width() == chosen->width() &&
           named->height() == chosen->height() &&
           std::memcmp(named->data(), chosen->data(), named->bytesPerRow() * named->height()) == 0;
  };
  EXPECT_TRUE(same("emblem:circle", "makeEmblemClip:", "circle:white"));
  EXPECT_FALSE(same("emblem:circle", "makeEmblemClip:", "circle"));
  EXPECT_TRUE(same("emblem:circle:clear", "makeEmblemClip:", "circle"));
  EXPECT_TRUE(same("emblem:other:any", "makeEmblemClip:", "squircle:white"));
  EXPECT_TRUE(same("emblem", "makeEmblemClip:", "circle:white"));
  EXPECT_TRUE(same("emblem:circle:clear", "makeEmblemClip:", ""));
  EXPECT_TRUE(same("shadow", "addShadowClip:", "grow:medium"));
  EXPECT_TRUE(same("shadow:same", "addShadowClip:", "same:medium"));
  EXPECT_TRUE(same("shadow:large", "addShadowClip:", "large"));
  EXPECT_TRUE(same("shadow::same::large:", "addShadowClip:", ":same:large"));
  EXPECT_TRUE(same("transparent", "makeTransparentClip:", "corner"));
  EXPECT_FALSE(same("transparent", "makeTransparentClip:", "white"));
  EXPECT_TRUE(same("flip", "flipClip:", "v"));
  EXPECT_TRUE(same("flip:H", "flipClip:", "v"));
  EXPECT_FALSE(same("flip:h", "flipClip:", "v"));
}

// A picture of which no two sides, turns or colours look the same: white, black and noise.
Bitmap unevenPicture() {
  Bitmap picture = *Bitmap::make(48, 30);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 48; ++x) {
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

// What op strings and menus' parameters do, and what is said of it.
TEST(Operations, DoWhatTheySay) {
  const Bitmap picture = unevenPicture();
  using Pixels = std::function<Result()>;
  const auto border = [&](PixelColor color) -> Pixels {
    return [&, color] { return addBorder(picture, color); };
  };
  const auto shadow = [&](ShadowCanvas canvas, double share) -> Pixels {
    return [&, canvas, share] { return addRoundedShadow(picture, canvas, share); };
  };
  const auto transparent = [&](Background background) -> Pixels {
    return [&, background] { return makeTransparent(picture, background); };
  };
  const auto emblem = [&](EmblemShape shape, EmblemStyle style) -> Pixels {
    return [&, shape, style] { return makeEmblem(picture, shape, style); };
  };
  const auto turn = [&](int degrees) -> Pixels {
    return [&, degrees] { return rotate(picture, degrees); };
  };
  const auto mirror = [&](FlipAxis axis) -> Pixels {
    return [&, axis] { return flip(picture, axis); };
  };
  const auto scale = [&](double factor) -> Pixels {
    return [&, factor] { return resize(picture, factor); };
  };
  const auto grown = ShadowCanvas::grown, same = ShadowCanvas::sameSize;
  const auto circle = EmblemShape::circle, squircle = EmblemShape::squircle;
  const auto clear = EmblemStyle::clear, white = EmblemStyle::white, dark = EmblemStyle::dark;
  const std::string text[] = {
      "Added border",         "Added rounded shadow",       "Made background transparent",
      "Made circular emblem", "Made rounded-square emblem", "Flipped"};
  const struct {
    std::string op, selector;
    EditParameter parameter;
    Pixels pixels;
    std::string message;
  } cases[] = {
      {"border:white", "addBorderClip:", PixelColor{255, 255, 255}, border({255, 255, 255}),
       text[0]},
      {"border:black", "addBorderClip:", PixelColor{0, 0, 0}, border({0, 0, 0}), text[0]},
      {"border:gray", "addBorderClip:", PixelColor{128, 128, 128}, border({128, 128, 128}),
       text[0]},
      {"border:red", "addBorderClip:", PixelColor{255, 59, 48}, border({255, 59, 48}), text[0]},
      {"border:blue", "addBorderClip:", PixelColor{0, 122, 255}, border({0, 122, 255}), text[0]},
      {"border:green", "addBorderClip:", PixelColor{52, 199, 89}, border({52, 199, 89}), text[0]},
      {"border:pink", "addBorderClip:", PixelColor{255, 255, 255}, border({255, 255, 255}),
       text[0]},
      {"shadow:grow:small", "addShadowClip:", "grow:small", shadow(grown, 0.05), text[1]},
      {"shadow:grow:large", "addShadowClip:", "grow:large", shadow(grown, 0.15), text[1]},
      {"shadow:same:medium", "addShadowClip:", "same:medium", shadow(same, 0.09), text[1]},
      {"shadow", "addShadowClip:", "", shadow(grown, 0.09), text[1]},
      {"transparent:white", "makeTransparentClip:", "white", transparent(Background::white),
       text[2]},
      {"transparent:black", "makeTransparentClip:", "black", transparent(Background::black),
       text[2]},
      {"transparent:corner", "makeTransparentClip:", "corner", transparent(Background::corner),
       text[2]},
      {"transparent", "makeTransparentClip:", "", transparent(Background::corner), text[2]},
      {"emblem:circle:clear", "makeEmblemClip:", "circle:clear", emblem(circle, clear), text[3]},
      {"emblem:circle:white", "makeEmblemClip:", "circle:white", emblem(circle, white), text[3]},
      {"emblem:circle:dark", "makeEmblemClip:", "circle:dark", emblem(circle, dark), text[3]},
      {"emblem:squircle:clear", "makeEmblemClip:", "squircle", emblem(squircle, clear), text[4]},
      {"emblem:squircle", "makeEmblemClip:", "squircle:white", emblem(squircle, white), text[4]},
      {"emblem:squircle:dark", "makeEmblemClip:", "squircle:dark", emblem(squircle, dark), text[4]},
      {"emblem", "makeEmblemClip:", "circle:white", emblem(circle, white), text[3]},
      {"rotate:90", "rotateClip:", std::int64_t{90}, turn(90), "Rotated 90°"},
      {"rotate:-90", "rotateClip:", std::int64_t{-90}, turn(-90), "Rotated -90°"},
      {"rotate:30", "rotateClip:", std::int64_t{30}, turn(30), "Rotated 30°"},
      {"rotate:x", "rotateClip:", std::int64_t{90}, turn(90), "Rotated 90°"},
      {"flip:h", "flipClip:", "h", mirror(FlipAxis::leftRight), text[5]},
      {"flip:v", "flipClip:", "v", mirror(FlipAxis::topBottom), text[5]},
      {"flip", "flipClip:", "", mirror(FlipAxis::topBottom), text[5]},
      {"resize:0.75", "resizeClip:", 0.75, scale(0.75), "Resized to 75%"},
      {"resize:0.25", "resizeClip:", 0.25, scale(0.25), "Resized to 25%"},
      {"resize:x", "resizeClip:", 0.5, scale(0.5), "Resized to 50%"},
      {"resize:0.299", "resizeClip:", 0.299, scale(0.299), "Resized to 29%"},
      {"resize:-9e16", "resizeClip:", -9e16, scale(-9e16), "Resized to -9000000000000000000%"},
  };
  for (const auto& [op, selector, parameter, pixels, message] : cases) {
    SCOPED_TRACE(op);
    const auto expected = bytesOf(pixels());
    ASSERT_FALSE(expected.empty());
    const auto named = namedEdit(op);
    ASSERT_TRUE(named);
    EXPECT_EQ(named->operation->selector, selector);
    EXPECT_EQ(named->edit.message, message);
    EXPECT_EQ(bytesOf(named->edit.apply(picture)), expected);
    const auto chosen = operationForSelector(selector)->edit(parameter);
    ASSERT_TRUE(chosen);
    EXPECT_EQ(chosen->message, message);
    EXPECT_EQ(bytesOf(chosen->apply(picture)), expected);
  }
  EXPECT_FALSE(operationForSelector("cropClipImage:"));
}

TEST(Operations, Refusals) {
  // Results that cannot be told of in 64 bits.
  for (const char* op :
       {"resize:-1e17", "resize:1e17", "resize:INF", "resize:NaN", "resize:-inf"}) {
    const auto named = namedEdit(op);
    ASSERT_TRUE(named) << op;
    EXPECT_TRUE(named->edit.apply(unevenPicture()).refused()) << op;
  }
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
