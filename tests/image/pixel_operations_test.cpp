#include "image/pixel_operations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "image/operations.h"
#include "platform/fast_path.h"
#include "tests/image/reference.h"

namespace marbelot {
namespace {

using reference::Picture;

enum class Alpha { opaque, any, none, mixed };

// Noise, and smooth stretches: every run of eight pixels is opaque, transparent or neither
// somewhere.
Bitmap picture(int width, int height, Alpha alpha, unsigned seed = 1, std::size_t gap = 0) {
  std::mt19937 random(seed);
  const std::size_t bytesPerRow = 4 * static_cast<std::size_t>(width) + gap;
  // Exactly as large as it must be, so that sanitizers see what is read beyond.
  std::shared_ptr<std::uint8_t> memory(new std::uint8_t[bytesPerRow * height],
                                       std::default_delete<std::uint8_t[]>());
  for (int y = 0; y < height; ++y) {
    std::uint8_t* pixel = memory.get() + bytesPerRow * y;
    for (int x = 0; x < width; ++x, pixel += 4) {
      unsigned level = 255;
      if (alpha == Alpha::none) level = 0;
      if (alpha == Alpha::any) level = random() % 256;
      if (alpha == Alpha::mixed) level = std::array{255u, 0u, 128u}[x / 20 % 3];
      for (int c = 0; c < 3; ++c) {
        const unsigned smooth = (x * 3 + y * 5 + c * 80) % 256;
        const unsigned value = x / 16 % 2 == 0 ? random() % 256 : smooth;
        pixel[c] = static_cast<std::uint8_t>(value * level / 255);
      }
      pixel[3] = static_cast<std::uint8_t>(level);
    }
  }
  return *Bitmap::adopt(width, height, bytesPerRow, std::move(memory));
}

// How far the worst channel is from what it should be, in levels, of the pixels that are known;
// infinite when there is no result, or one of another size.
double worst(const Result& result, const Picture& expected) {
  if (!result || result->width() != expected.width || result->height() != expected.height)
    return std::numeric_limits<double>::infinity();
  double most = 0;
  for (int y = 0; y < expected.height; ++y) {
    for (int x = 0; x < expected.width; ++x) {
      for (int c = 0; c < 4; ++c) {
        const double level = expected.at(x, y)[c];
        if (!std::isnan(level)) most = std::max(most, std::abs(result->row(y)[4 * x + c] - level));
      }
    }
  }
  return most;
}

constexpr Alpha alphas[] = {Alpha::opaque, Alpha::any, Alpha::none, Alpha::mixed};
constexpr std::array<int, 2> sizes[] = {{1, 1},  {2, 1},  {1, 7},   {8, 8},
                                        {33, 9}, {9, 33}, {57, 64}, {61, 70}};

template <typename Test>
void forPictures(Test test, const std::vector<Alpha>& kinds = {alphas, alphas + 4}) {
  for (const auto [width, height] : sizes) {
    for (const Alpha alpha : kinds) {
      SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + ", alpha " +
                   std::to_string(static_cast<int>(alpha)));
      const Bitmap bitmap = picture(width, height, alpha, 1, width % 3 == 0 ? 12 : 0);
      test(bitmap, Picture(bitmap));
    }
  }
}

TEST(PixelOperations, MoveWholePixels) {
  forPictures([](const Bitmap& bitmap, const Picture& from) {
    const int w = from.width, h = from.height;
    const auto check = [&](const Result& result, int width, int height, auto place) {
      EXPECT_EQ(worst(result, moved(from, width, height, place)), 0);
    };
    using Place = std::array<int, 2>;
    const auto same = [](int x, int y) { return Place{x, y}; };
    const auto around = [=](int x, int y) { return Place{w - 1 - x, h - 1 - y}; };
    check(flip(bitmap, FlipAxis::leftRight), w, h, [=](int x, int y) {
      return Place{w - 1 - x, y};
    });
    check(flip(bitmap, FlipAxis::topBottom), w, h, [=](int x, int y) {
      return Place{x, h - 1 - y};
    });
    check(rotate(bitmap, 90), h, w, [=](int x, int y) { return Place{w - 1 - y, x}; });
    check(rotate(bitmap, -90), h, w, [=](int x, int y) { return Place{y, h - 1 - x}; });
    check(rotate(bitmap, 180), w, h, around);
    check(rotate(bitmap, -180), w, h, around);
    check(rotate(bitmap, 540), w, h, around);
    check(rotate(bitmap, 0), w, h, same);
    check(rotate(bitmap, -360), w, h, same);
    check(resize(bitmap, 1), w, h, same);
  });
}

TEST(PixelOperations, Border) {
  forPictures([](const Bitmap& bitmap, const Picture& from) {
    for (const PixelColor color : {colors::white, colors::black, colors::green}) {
      const reference::Pixel fill{double(color.red), double(color.green), double(color.blue), 255};
      Picture expected(from.width + 12, from.height + 12);
      for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
          expected.at(x, y) = reference::over(from.orNothing(x - 6, y - 6), 1, fill);
        }
      }
      EXPECT_LE(worst(addBorder(bitmap, color), expected), 0.5);
    }
  });
}

TEST(PixelOperations, Transparent) {
  const auto expected = [](Picture picture, const reference::Pixel& near) {
    for (auto& pixel : picture.pixels) {
      bool clear = true;
      for (int c = 0; c < 3; ++c) clear = clear && std::abs(pixel[c] - near[c]) <= 40;
      if (clear) pixel = {};
    }
    return picture;
  };
  forPictures([&](const Bitmap& bitmap, const Picture& from) {
    const auto check = [&](Background background, const reference::Pixel& near) {
      EXPECT_EQ(worst(makeTransparent(bitmap, background), expected(from, near)), 0);
    };
    check(Background::white, {255, 255, 255});
    check(Background::black, {0, 0, 0});
    check(Background::corner, from.at(0, 0));
  });
  // Every distance of each channel, from both sides.
  for (int channel = 0; channel < 3; ++channel) {
    for (const int corner : {0, 41, 128, 215, 255}) {
      Bitmap levels = *Bitmap::make(257, 1);
      std::memset(levels.data(), corner, levels.bytesPerRow());
      for (int level = 0; level < 256; ++level) {
        levels.data()[4 * (level + 1) + channel] = static_cast<std::uint8_t>(level);
      }
      const Picture from(levels);
      EXPECT_EQ(worst(makeTransparent(levels, Background::corner), expected(from, from.at(0, 0))),
                0);
      EXPECT_EQ(worst(makeTransparent(levels, Background::white), expected(from, {255, 255, 255})),
                0);
    }
  }
}

TEST(PixelOperations, TurnByAnyAngle) {
  forPictures([](const Bitmap& bitmap, const Picture& from) {
    for (const std::int64_t degrees : {1, -7, 30, 45, 135, 200, 270, -270, 359, 450}) {
      EXPECT_LE(worst(rotate(bitmap, degrees), turned(from, static_cast<double>(degrees))), 1)
          << degrees;
    }
    // 2^63 - 1 is 7 degrees, -2^63 is -8 degrees.
    EXPECT_LE(worst(rotate(bitmap, std::numeric_limits<std::int64_t>::max()), turned(from, 7)), 1);
    EXPECT_LE(worst(rotate(bitmap, std::numeric_limits<std::int64_t>::min()), turned(from, -8)), 1);
  });
}

TEST(PixelOperations, Resize) {
  forPictures([](const Bitmap& bitmap, const Picture& from) {
    for (const double factor : {0.75, 0.5, 0.25, 0.9, 0.07, 1.3, 3.0}) {
      const int width = std::max(1, static_cast<int>(factor * from.width));
      const int height = std::max(1, static_cast<int>(factor * from.height));
      const auto axis = [](int old, int count) {
        return reference::Axis{count, 0, double(old) / count};
      };
      const Picture expected = resampled(from, axis(from.width, width), axis(from.height, height));
      EXPECT_LE(worst(resize(bitmap, factor), expected), 0.6) << factor;
    }
  });
}

reference::Card shadowCard(const Picture& from, ShadowCanvas canvas, double share) {
  const int w = from.width, h = from.height, p = std::max(12, int(share * std::min(w, h)));
  const bool grown = canvas == ShadowCanvas::grown;
  const double scale = grown ? 1 : std::min((w - 2.0 * p) / w, (h - 2.0 * p) / h);
  const int width = grown ? w + 2 * p : w, height = grown ? h + 2 * p : h;
  const reference::Shape shape{(width - scale * w) / 2, (height - scale * h) / 2, scale * w,
                               scale * h, 0.04 * scale * std::min(w, h)};
  return {width, height, true, shape, {255, 255, 255, 255}, 0.4 * p, p / 3.0, 0.45, shape, scale};
}

reference::Card emblemCard(const Picture& from, EmblemShape shape, EmblemStyle style) {
  const int s = std::min(from.width, from.height);
  const bool badge = style != EmblemStyle::clear;
  const int q = !badge ? 0 : s <= 47 ? 4 : s / 12, side = s + 2 * q;
  const double roundness = shape == EmblemShape::circle ? 0.5 : 0.22;
  const double inset = badge ? 0.05 * s : 0, inner = s - 2 * inset;
  const double level = style == EmblemStyle::dark ? 28 : 255;
  return {side,
          side,
          badge,
          {double(q), double(q), double(s), double(s), roundness * s},
          {level, level, level, 255},
          0.45 * q,
          q / 3.0,
          0.4,
          {q + inset, q + inset, inner, inner, roundness * inner},
          inner / s};
}

TEST(PixelOperations, RoundedShadow) {
  forPictures(
      [](const Bitmap& bitmap, const Picture& from) {
        for (const auto canvas : {ShadowCanvas::grown, ShadowCanvas::sameSize}) {
          const Result result = addRoundedShadow(bitmap, canvas, 0.09);
          if (canvas == ShadowCanvas::sameSize && std::min(from.width, from.height) < 25) {
            EXPECT_FALSE(result);
            EXPECT_FALSE(result.refused());
          } else {
            EXPECT_LE(worst(result, draw(from, shadowCard(from, canvas, 0.09))), 1.5);
          }
        }
      },
      {Alpha::any, Alpha::mixed});
  // Where the margin grows with the picture.
  const Bitmap large = picture(330, 300, Alpha::mixed);
  const Picture from(large);
  EXPECT_LE(worst(addRoundedShadow(large, ShadowCanvas::grown, 0.15),
                  draw(from, shadowCard(from, ShadowCanvas::grown, 0.15), 13)),
            1.5);
}

TEST(PixelOperations, Emblem) {
  const auto check = [](const Bitmap& bitmap, const Picture& from, EmblemShape shape,
                        EmblemStyle style, int every) {
    EXPECT_LE(
        worst(makeEmblem(bitmap, shape, style), draw(from, emblemCard(from, shape, style), every)),
        1.5)
        << static_cast<int>(shape) << " " << static_cast<int>(style);
  };
  forPictures(
      [&](const Bitmap& bitmap, const Picture& from) {
        for (const auto shape : {EmblemShape::circle, EmblemShape::squircle}) {
          for (const auto style : {EmblemStyle::clear, EmblemStyle::white, EmblemStyle::dark})
            check(bitmap, from, shape, style, 1);
        }
      },
      {Alpha::any, Alpha::mixed});
  const Bitmap large = picture(310, 330, Alpha::mixed);
  check(large, Picture(large), EmblemShape::squircle, EmblemStyle::white, 13);
}

// On the canvas the picture begins and ends within pixels, of some of which it covers next to
// nothing.
TEST(PixelOperations, RimsOfPicturesOnCards) {
  for (const auto [width, height] : {std::array{120, 111}, {157, 111}, {138, 111}}) {
    Bitmap solid = *Bitmap::make(width, height);
    std::memset(solid.data(), 255, solid.bytesPerRow() * height);
    for (const Bitmap& bitmap : {std::move(solid), picture(width, height, Alpha::opaque)}) {
      const Picture from(bitmap);
      for (const double share : {0.05, 0.09}) {
        EXPECT_LE(worst(addRoundedShadow(bitmap, ShadowCanvas::sameSize, share),
                        draw(from, shadowCard(from, ShadowCanvas::sameSize, share), 5)),
                  1.5)
            << width << "x" << height << ", " << share;
      }
    }
  }
  // White on a white card is white wherever the card is, and mixes with the shadow like it.
  std::vector<std::array<int, 2>> rims{{1269, 1080}};
  for (int width = 60; width < 190; width += 3) rims.push_back({width, 111});
  for (const auto [width, height] : rims) {
    Bitmap white = *Bitmap::make(width, height);
    std::memset(white.data(), 255, white.bytesPerRow() * height);
    const Bitmap nothing = *Bitmap::makeClear(width, height);
    for (const double share : {0.05, 0.09, 0.15}) {
      const Result card = addRoundedShadow(nothing, ShadowCanvas::sameSize, share);
      Picture expected(*card);
      for (auto& pixel : expected.pixels) {
        const double shown = pixel[0] / 255;
        pixel = reference::over({255, 255, 255, 255}, shown, pixel);
      }
      EXPECT_LE(worst(addRoundedShadow(white, ShadowCanvas::sameSize, share), expected), 1.5)
          << width << "x" << height << ", " << share;
    }
  }
}

// The processor's fast path, if it has one, and whatever was in the memory before.
TEST(PixelOperations, SameBytesOnEveryPath) {
  std::vector<std::string> ops{"rotate:45", "rotate:360", "resize:1.4", "resize:0.011",
                               "resize:0.93"};
  for (const Operation& operation : operations()) {
    for (const EditChoice& choice : operation.choices) {
      ops.push_back(std::string(operation.verb) + ':' + std::string(choice.arguments));
    }
  }
  const auto expectSame = [](const std::string& op, const Bitmap& bitmap) {
    const auto poisoned = [&](std::uint8_t with) {
      if (auto before = apply(std::string_view(op), bitmap)) {
        std::memset(before->data(), with, before->bytesPerRow() * before->height());
      }
      return apply(std::string_view(op), bitmap);
    };
    const auto fast = poisoned(0x55);
    const PlainPathOnly plainOnly;
    const auto plain = poisoned(0xAA);
    ASSERT_EQ(fast.has_value(), plain.has_value()) << op;
    if (!fast) return;
    ASSERT_EQ(fast->width(), plain->width());
    ASSERT_EQ(fast->height(), plain->height());
    ASSERT_EQ(std::memcmp(fast->data(), plain->data(), fast->bytesPerRow() * fast->height()), 0)
        << op << " of " << bitmap.width() << "x" << bitmap.height();
  };
  std::mt19937 random(3);
  for (int round = 0; round < 40; ++round) {
    const int width = 1 + static_cast<int>(random() % (round % 2 == 0 ? 40 : 400));
    const int height = 1 + static_cast<int>(random() % (round % 3 == 0 ? 40 : 300));
    const Bitmap bitmap = picture(width, height, alphas[round % 4], round, round % 5 * 4);
    for (const std::string& op : ops) expectSame(op, bitmap);
  }
  // Where the rims of pictures on cards are thinnest.
  for (int width = 60; width < 190; width += 3) {
    const Bitmap bitmap = picture(width, 111, alphas[width % 2], width);
    for (const char* op : {"shadow:same:small", "shadow:same", "shadow:same:large", "emblem"})
      expectSame(op, bitmap);
  }
  expectSame("shadow:same:medium", picture(1269, 1080, Alpha::opaque));
}

}  // namespace
}  // namespace marbelot
