#include "image/operations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

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

}  // namespace
}  // namespace marbelot
