#include "platform/bitmap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "platform/pixel_memory.h"

namespace marbelot {
namespace {

TEST(Bitmap, SizesThatThereCanBe) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  const struct {
    std::int64_t width, height;
    bool fits;
  } cases[] = {{1, 1, true},         {32768, 1, true},     {1, 32768, true},  {32768, 8192, true},
               {16384, 16384, true}, {32768, 8193, false}, {32769, 1, false}, {1, 32769, false},
               {0, 1, false},        {1, 0, false},        {-1, -1, false},   {most, most, false},
               {most, 1, false},     {1 << 31, 2, false}};
  for (const auto& [width, height, fits] : cases) {
    EXPECT_EQ(Bitmap::fits(width, height), fits) << width << "x" << height;
    if (!fits) {
      EXPECT_FALSE(Bitmap::make(width, height));
      EXPECT_FALSE(Bitmap::adopt(width, height, 1 << 20, pixelMemory(4)));
    }
  }
  const auto clear = Bitmap::makeClear(3, 2);
  ASSERT_TRUE(clear);
  EXPECT_EQ(std::vector<std::uint8_t>(clear->data(), clear->data() + 24),
            std::vector<std::uint8_t>(24));
}

TEST(Bitmap, AdoptsMemoryAndLetsItGo) {
  std::weak_ptr<std::uint8_t> watched;
  {
    std::shared_ptr<std::uint8_t> memory = pixelMemory(64);
    watched = memory;
    EXPECT_FALSE(Bitmap::adopt(5, 2, 19, memory));
    EXPECT_FALSE(Bitmap::adopt(5, 2, 20, nullptr));
    auto bitmap = Bitmap::adopt(5, 2, 32, std::move(memory));
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->row(1), watched.lock().get() + 32);
    const Bitmap moved = *std::move(bitmap);
    EXPECT_FALSE(watched.expired());
  }
  EXPECT_TRUE(watched.expired());
}

void releaseKept() {
  releaseIdlePixelMemory();  // all that is kept now
  releaseIdlePixelMemory();
}

// With the address sanitizer nothing is kept.
bool keepsMemory() {
  releaseKept();
  pixelMemory(1 << 20);
  return keptPixelMemory() > 0;
}

TEST(PixelMemory, IsReusedWithinALimit) {
  if (!keepsMemory()) GTEST_SKIP();
  releaseKept();
  constexpr std::size_t large = std::size_t{33} << 20;
  const std::uint8_t* first = pixelMemory(large).get();
  EXPECT_EQ(pixelMemory(large - 5000).get(), first);  // a little smaller will do
  EXPECT_NE(pixelMemory(large / 3).get(), first);     // but no waste
  EXPECT_NE(pixelMemory(large * 2).get(), first);

  const auto held = pixelMemory(large), other = pixelMemory(large);
  EXPECT_NE(held.get(), other.get());
  {
    std::vector<std::shared_ptr<std::uint8_t>> many;
    for (int i = 0; i < 12; ++i) {
      many.push_back(pixelMemory(large));
      std::memset(many.back().get(), i, large);
    }
  }
  EXPECT_LE(keptPixelMemory(), keptPixelMemoryLimit);
  EXPECT_GT(keptPixelMemory(), keptPixelMemoryLimit / 2);
  releaseKept();
  EXPECT_EQ(keptPixelMemory(), 0u);
  EXPECT_EQ(pixelMemory(std::numeric_limits<std::size_t>::max() / 4), nullptr);
}

constexpr std::size_t mebibyte = std::size_t{1} << 20;

TEST(PixelMemory, GoesBackToTheSystemWhenIdle) {
  if (!keepsMemory()) GTEST_SKIP();
  releaseKept();
  pixelMemory(4 * mebibyte);
  releaseIdlePixelMemory();
  pixelMemory(4 * mebibyte);  // used again, so it is not idle yet
  releaseIdlePixelMemory();
  EXPECT_EQ(keptPixelMemory(), 4 * mebibyte);
  releaseIdlePixelMemory();
  EXPECT_EQ(keptPixelMemory(), 0u);
}

TEST(PixelMemory, MakesRoomByDroppingTheOldest) {
  if (!keepsMemory()) GTEST_SKIP();
  releaseKept();
  pixelMemory(4 * mebibyte);
  pixelMemory(keptPixelMemoryLimit + mebibyte);  // alone too large: it drives out nothing
  EXPECT_EQ(keptPixelMemory(), 4 * mebibyte);
  pixelMemory(keptPixelMemoryLimit - 2 * mebibyte);
  EXPECT_EQ(keptPixelMemory(), keptPixelMemoryLimit - 2 * mebibyte);
}

TEST(PixelMemory, IsNobodyElsesOnAnyThread) {
  std::vector<std::thread> threads;
  for (int id = 0; id < 4; ++id) {
    threads.emplace_back([id] {
      for (int round = 0; round < 200; ++round) {
        const std::size_t bytes =
            (std::size_t{256} << 10) + 7000 * static_cast<std::size_t>(round % 5);
        const auto memory = pixelMemory(bytes);
        std::memset(memory.get(), id, bytes);
        for (std::size_t i = 0; i < bytes; i += 1000) ASSERT_EQ(memory.get()[i], id);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace marbelot
