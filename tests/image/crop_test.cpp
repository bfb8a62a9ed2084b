#include <gtest/gtest.h>

#include "image/crop_selection.h"

namespace marbelot {
namespace {

TEST(Crop, FitsTheViewIntoTheScreenWithoutEnlargingThePicture) {
  const Rect screen{0, 0, 1000, 1000};
  EXPECT_EQ(cropViewSize(100, 50, screen), (Size{320, 240}));
  EXPECT_EQ(cropViewSize(600, 400, screen), (Size{600, 400}));
  EXPECT_EQ(cropViewSize(1600, 800, screen), (Size{800, 400}));
  EXPECT_EQ(cropViewSize(756, 1512, screen), (Size{378, 756}));
  EXPECT_EQ(cropImageRectangle(100, 50, {320, 240}), (Rect{0, 40, 320, 160}));
}

TEST(Crop, FollowsPixelsHoweverLargeThePictureIsShown) {
  const Rect shown{10, 20, 400, 300};  // of 1600 × 1200 pixels
  EXPECT_EQ(selectedPixels({10, 20, 200, 300}, shown, 1600, 1200), (PixelRect{0, 0, 800, 1200}));
  EXPECT_EQ(selectedPixels({110, 220, 50, 100}, shown, 1600, 1200), (PixelRect{400, 0, 200, 400}));
  // Whole pixels, rounded outwards; what lies outside does not count.
  EXPECT_EQ(selectedPixels({10.1, 20.1, 10, 10}, shown, 1600, 1200), (PixelRect{0, 1159, 41, 41}));
  EXPECT_EQ(selectedPixels({-90, -80, 200, 200}, shown, 1600, 1200), (PixelRect{0, 800, 400, 400}));
  EXPECT_EQ(selectedPixels({-90, -80, 2000, 2000}, shown, 1600, 1200),
            (PixelRect{0, 0, 1600, 1200}));
  // A third of a point a pixel: sums of such fractions select no pixel more.
  EXPECT_EQ(selectedPixels({0.1 * 3, 0, 10, 10}, {0, 0, 100, 100}, 1000, 1000),
            (PixelRect{3, 900, 100, 100}));
}

TEST(Crop, NeedsMoreThanFourPointsEachWay) {
  const Rect shown{0, 0, 100, 100};
  EXPECT_TRUE(selectedPixels({0, 0, 5, 5}, shown, 100, 100));
  EXPECT_FALSE(selectedPixels({0, 0, 4, 10}, shown, 100, 100));
  EXPECT_FALSE(selectedPixels({0, 0, 10, 4}, shown, 100, 100));
  EXPECT_FALSE(selectedPixels({96, 0, 50, 50}, shown, 100, 100));
  EXPECT_FALSE(selectedPixels({200, 0, 50, 50}, shown, 100, 100));
}

TEST(Crop, CutsThePixelsOut) {
  Bitmap picture = *Bitmap::make(5, 4);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 5; ++x) picture.row(y)[4 * x] = static_cast<std::uint8_t>(10 * y + x);
  const Result part = cut(picture, {2, 1, 3, 2});
  ASSERT_TRUE(part);
  EXPECT_EQ(part->width(), 3);
  EXPECT_EQ(part->height(), 2);
  EXPECT_EQ(part->row(0)[0], 12);
  EXPECT_EQ(part->row(1)[8], 24);
}

}  // namespace
}  // namespace marbelot
