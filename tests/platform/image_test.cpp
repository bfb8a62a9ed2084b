#include "platform/image.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <future>

#include "platform/image_codec.h"
#include "platform/image_header.h"
#include "platform/linux/imaging.h"
#include "tests/support/png.h"
#include "tests/support/rows.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

std::string little(std::uint32_t value, int bytes) {
  std::string text;
  for (; bytes-- > 0; value >>= 8) text += static_cast<char>(value);
  return text;
}
std::string zeros(std::size_t count) { return std::string(count, '\0'); }

TEST(ImageHeader, ReadsEveryFormatAndNothingThatIsCutOff) {
  for (const Row& row : rowsOf("pictures/headers.tsv", "headers")) {
    const std::string bytes = row[3];
    const auto header = imageHeader(bytes);
    ASSERT_TRUE(header) << row;
    EXPECT_EQ(mimeType(header->format), "image/" + row[0]) << row;
    EXPECT_EQ(header->width, std::stoi(row[1])) << row;
    EXPECT_EQ(header->height, std::stoi(row[2])) << row;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
      // Its own allocation, so that a read beyond the end is found.
      const std::string cut(bytes, 0, length);
      EXPECT_FALSE(imageHeader(cut)) << row << " cut off at " << length;
    }
  }
}

TEST(ImageHeader, RefusesWhatNobodyMakes) {
  for (const Row& row : rowsOf("pictures/headers.tsv", "refused"))
    EXPECT_FALSE(imageHeader(row[0])) << row << ": " << row[1];
  EXPECT_TRUE(imageHeader(rowsOf("pictures/headers.tsv", "largest")[0][0]));
}

TEST(LargestPage, IsTheLargestOfAllAndTheWalkEnds) {
  for (const Row& row : rowsOf("pictures/headers.tsv", "pages")) {
    const auto page = largestPage(row[2]);
    ASSERT_TRUE(page) << row;
    EXPECT_EQ(page->width, std::stoi(row[0])) << row << ": " << row[3];
    EXPECT_EQ(page->height, std::stoi(row[1])) << row << ": " << row[3];
  }
}

class ImageFile : public testing::Test {
 protected:
  std::string file(const std::string& bytes) const {
    writeFile(home / "image", bytes);
    return home / "image";
  }
  TemporaryHome home;
  const std::string folder = home.path();
};

TEST_F(ImageFile, StaysReadableWhenItsFileIsDeletedOrReplaced) {
  const std::string bytes = *png(1920, 3 << 20);
  const auto path = file(bytes);
  const auto image = Image::fromFile(path);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->format(), ImageFormat::png);
  EXPECT_EQ(image->width(), 1920);
  std::filesystem::remove(path);
  file(*png(1));
  ASSERT_TRUE(image->bytes());
  EXPECT_TRUE(*image->bytes() == bytes);
}

TEST_F(ImageFile, GivesNoBytesOfAnotherImage) {
  const auto path = file(*png(1920));
  const auto image = Image::fromFile(path);
  ASSERT_TRUE(image);
  file(*png(5));  // into the same file
  EXPECT_FALSE(image->bytes());
  file("");
  EXPECT_FALSE(image->bytes());
}

TEST_F(ImageFile, OpensOnlyWholeImages) {
  const std::string bytes = *png(640, 100000);
  EXPECT_FALSE(Image::fromFile(file(bytes.substr(0, bytes.size() - 1)))) << "still being written";
  EXPECT_FALSE(Image::fromFile(file("")));
  EXPECT_FALSE(Image::fromFile(folder + "/missing"));
  EXPECT_FALSE(Image::fromFile(folder));
  const std::string pipe = folder + "/pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_FALSE(Image::fromFile(pipe));
}

TEST(ImageOfPixels, EncodesOnceAndLetsGoOfThem) {
  auto pixels = std::make_shared<const Bitmap>(*Bitmap::makeClear(800, 600));
  const std::weak_ptr<const Bitmap> watched = pixels;
  const Image image = Image::fromPixels(std::move(pixels));
  EXPECT_EQ(image.format(), ImageFormat::png);
  EXPECT_EQ(image.width(), 800);
  EXPECT_FALSE(image.isEncoded());
  EXPECT_TRUE(image.isReadable());
  EXPECT_EQ(decode(image), watched.lock()) << "no way through the encoder";
  std::vector<std::future<SharedBytes>> readers;
  readers.reserve(4);
  for (int i = 0; i < 4; ++i)
    readers.push_back(std::async(std::launch::async, [copy = image] { return copy.bytes(); }));
  const SharedBytes bytes = image.bytes();
  ASSERT_TRUE(bytes);
  for (auto& reader : readers) EXPECT_EQ(reader.get(), bytes);
  EXPECT_TRUE(image.isEncoded());
  EXPECT_TRUE(watched.expired()) << "forty of them would fill the memory";
  EXPECT_EQ(imageHeader(std::string_view(*bytes))->width, 800);
  EXPECT_EQ(pngBytes(image), bytes);
  EXPECT_EQ(decode(image)->height(), 600);
}

TEST(Imaging, ConvertsInAnotherProcess) {
  // A 2 by 1 bitmap: blue, red.
  const std::string bitmap = "BM" + little(62, 4) + zeros(4) + little(54, 4) + little(40, 4) +
                             little(2, 4) + little(1, 4) + little(1, 2) + little(24, 2) +
                             zeros(24) + "\xFF" + zeros(4) + "\xFF" + zeros(2);
  const auto image = Image::fromBytes(share(bitmap));
  ASSERT_TRUE(image);
  for (const std::string_view encoding : encodings) {
    const auto bytes = convertedBytes(*image, encoding);
    ASSERT_TRUE(bytes) << encoding;
    const auto header = imageHeader(std::string_view(*bytes));
    if (!header) continue;  // a form that is only written
    EXPECT_EQ(mimeType(header->format), "image/" + std::string(encoding));
    EXPECT_EQ(header->width, 2) << encoding;
    if (encoding == "jpeg") continue;
    const auto back = convertedBytes(*Image::fromBytes(bytes), "bmp");
    ASSERT_TRUE(back);
    EXPECT_EQ(back->substr(54, 6), bitmap.substr(54, 6)) << encoding;
  }
  EXPECT_EQ(convertedBytes(*image, "bmp")->size(), bitmap.size());
}

TEST(Imaging, DamageGivesNothing) {
  const auto damaged = Image::fromBytes(share(rowsOf("pictures/headers.tsv", "headers")[1][3]));
  ASSERT_TRUE(damaged);
  EXPECT_FALSE(pngBytes(*damaged));
  EXPECT_FALSE(convertedBytes(*damaged, "heic")) << "no encoder for it";
  const auto same = png(5);
  EXPECT_EQ(pngBytes(*Image::fromBytes(same)), same) << "PNG stays what it was";
}

}  // namespace
}  // namespace marbelot
