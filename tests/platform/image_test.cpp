#include "platform/image.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>

#include "platform/image_codec.h"
#include "platform/image_header.h"
#include "platform/linux/imaging.h"

namespace marbelot {
namespace {

std::string big(std::uint32_t value, int bytes) {
  std::string text;
  for (int i = bytes; i-- > 0;) text += static_cast<char>(value >> (8 * i));
  return text;
}
std::string little(std::uint32_t value, int bytes) {
  const std::string text = big(value, bytes);
  return {text.rbegin(), text.rend()};
}
std::string zeros(std::size_t count) { return std::string(count, '\0'); }

std::string png(std::uint32_t width, std::uint32_t height, std::size_t data = 100) {
  const auto chunk = [](const std::string& type, const std::string& content) {
    return big(static_cast<std::uint32_t>(content.size()), 4) + type + content + zeros(4);
  };
  return "\x89PNG\r\n\x1A\n" + chunk("IHDR", big(width, 4) + big(height, 4) + "\b\2" + zeros(3)) +
         chunk("tEXt", "Software\1scrot") + chunk("IDAT", zeros(data)) + chunk("IEND", "");
}
std::string jpeg(std::uint32_t width, std::uint32_t height) {
  return "\xFF\xD8\xFF\xE0" + big(16, 2) + zeros(14) + "\xFF\xFF\xC4" + big(4, 2) + zeros(2) +
         "\xFF\xC2" + big(17, 2) + "\b" + big(height, 2) + big(width, 2) + "\3" + zeros(9);
}
std::string tiff(bool bigEndian, std::uint32_t width, std::uint32_t height) {
  const auto n = [&](std::uint32_t v, int bytes) {
    return bigEndian ? big(v, bytes) : little(v, bytes);
  };
  return (bigEndian ? "MM" : "II") + n(42, 2) + n(10, 4) + "??" + n(2, 2) + n(256, 2) + n(3, 2) +
         n(1, 4) + n(width, 2) + n(0, 2) + n(257, 2) + n(4, 2) + n(1, 4) + n(height, 4) + n(0, 4);
}
// The camera was held upright. The directory that follows it lies beyond the file.
std::string turnedJpeg(std::uint32_t width, std::uint32_t height) {
  const std::string exif = "Exif" + zeros(2) + "MM" + big(42, 2) + big(8, 4) + big(1, 2) +
                           big(274, 2) + big(3, 2) + big(1, 4) + big(6, 2) + zeros(2) +
                           big(9999, 4);
  std::string bytes = jpeg(width, height);
  return bytes.insert(2, "\xFF\xE1" + big(static_cast<std::uint32_t>(exif.size()) + 2, 2) + exif);
}
std::string bmp(std::uint32_t width, std::uint32_t height) {
  return "BM" + zeros(12) + little(40, 4) + little(width, 4) + little(height, 4);
}
std::string gif(std::uint32_t width, std::uint32_t height) {
  return "GIF89a" + little(width, 2) + little(height, 2) + zeros(3);
}
std::string riff(const std::string& content) { return "RIFF" + zeros(4) + "WEBP" + content; }
std::string box(const std::string& type, const std::string& content) {
  return big(static_cast<std::uint32_t>(content.size()) + 8, 4) + type + content;
}
// Two tiles' properties first; the primary item is number 7, turned by 90 degrees.
std::string heic(std::uint32_t width, std::uint32_t height) {
  const std::string properties = box("ispe", zeros(4) + big(512, 4) + big(512, 4)) +
                                 box("ispe", zeros(4) + big(width, 4) + big(height, 4)) +
                                 box("irot", big(1, 1));
  const std::string association =
      box("ipma", zeros(4) + big(2, 4) + big(1, 2) + "\1\1" + big(7, 2) + "\2\x82\3");
  return box("ftyp", "mif1" + zeros(4) + "mif1heic") +
         box("meta", zeros(4) + box("pitm", zeros(4) + big(7, 2)) +
                         box("iprp", box("ipco", properties) + association));
}

TEST(ImageHeader, ReadsEveryFormatAndNothingThatIsCutOff) {
  const struct {
    ImageFormat format;
    std::string bytes;
    int width, height;
  } cases[] = {
      {ImageFormat::png, png(3840, 2160), 3840, 2160},
      {ImageFormat::jpeg, jpeg(4000, 3000), 4000, 3000},
      {ImageFormat::jpeg, turnedJpeg(4000, 3000), 3000, 4000},
      {ImageFormat::tiff, tiff(true, 640, 70000), 640, 70000},
      {ImageFormat::tiff, tiff(false, 640, 70000), 640, 70000},
      {ImageFormat::heic, heic(4032, 3024), 3024, 4032},
      {ImageFormat::gif, gif(1, 65535), 1, 65535},
      {ImageFormat::bmp, bmp(300, 200), 300, 200},
      {ImageFormat::bmp, bmp(300, static_cast<std::uint32_t>(-200)), 300, 200},
      {ImageFormat::webp, riff("VP8X" + zeros(8) + little(799, 3) + little(599, 3)), 800, 600},
      {ImageFormat::webp, riff("VP8L" + zeros(4) + "\x2F" + little(799 | 599 << 14, 4)), 800, 600},
      {ImageFormat::webp,
       riff("VP8 " + zeros(7) + "\x9D\x01\x2A" + little(800, 2) + little(600, 2)), 800, 600},
  };
  for (const auto& [format, bytes, width, height] : cases) {
    const auto header = imageHeader(bytes);
    ASSERT_TRUE(header) << mimeType(format);
    EXPECT_EQ(header->format, format);
    EXPECT_EQ(header->width, width) << mimeType(format);
    EXPECT_EQ(header->height, height) << mimeType(format);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
      // Its own allocation, so that a read beyond the end is found.
      const std::string cut(bytes, 0, length);
      EXPECT_FALSE(imageHeader(cut)) << mimeType(format) << " cut off at " << length;
    }
  }
}

TEST(ImageHeader, RefusesWhatNobodyMakes) {
  std::string endless = png(1, 1);
  endless.replace(33, 4, "\xFF\xFF\xFF\xFF");
  std::string loop = heic(1, 1);
  loop.replace(loop.find("ipco") + 4, 4, zeros(4));  // a property without a length
  for (const std::string& bytes :
       {png(0, 1), png(1, 0), png(1 << 14, (1 << 14) + 1), png(0xFFFFFFFF, 0xFFFFFFFF), endless,
        jpeg(10, 0), bmp(1, 0x80000000), bmp(0x80000000, 1), gif(0, 7), heic(0xFFFFFFFF, 2), loop,
        tiff(true, 0, 9), std::string("text"), std::string("\xFF\xD8\xFF\xDA" + zeros(40))})
    EXPECT_FALSE(imageHeader(bytes));
  EXPECT_TRUE(imageHeader(png(1 << 14, 1 << 14))) << "the largest";
}

TEST(LargestPage, IsTheLargestOfAllAndTheWalkEnds) {
  std::string pages = tiff(true, 100, 50);
  const std::string next = tiff(true, 70, 200).substr(10);
  pages.replace(pages.size() - 4, 4, big(static_cast<std::uint32_t>(pages.size()), 4));
  EXPECT_EQ(largestPage(pages + next), (ImageHeader{ImageFormat::tiff, 100, 200}));
  std::string circle = tiff(true, 100, 50);
  circle.replace(circle.size() - 4, 4, big(10, 4));
  for (const std::string& bytes : {circle, pages, pages + next.substr(0, 9)})
    EXPECT_EQ(largestPage(bytes), (ImageHeader{ImageFormat::tiff, 100, 50}));
}

class ImageFile : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "imageXXXXXX";
    ASSERT_TRUE(::mkdtemp(pattern.data()));
    folder = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(folder); }
  std::string file(const std::string& bytes) const {
    std::ofstream(folder + "/image", std::ios::binary | std::ios::trunc) << bytes;
    return folder + "/image";
  }
  std::string folder;
};

TEST_F(ImageFile, StaysReadableWhenItsFileIsDeletedOrReplaced) {
  const std::string bytes = png(1920, 1080, 3 << 20);
  const auto path = file(bytes);
  const auto image = Image::fromFile(path);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->format(), ImageFormat::png);
  EXPECT_EQ(image->height(), 1080);
  std::filesystem::remove(path);
  file(png(1, 1));
  ASSERT_TRUE(image->bytes());
  EXPECT_TRUE(*image->bytes() == bytes);
}

TEST_F(ImageFile, GivesNoBytesOfAnotherImage) {
  const auto path = file(png(1920, 1080));
  const auto image = Image::fromFile(path);
  ASSERT_TRUE(image);
  file(png(5, 5));  // into the same file
  EXPECT_FALSE(image->bytes());
  file("");
  EXPECT_FALSE(image->bytes());
}

TEST_F(ImageFile, OpensOnlyWholeImages) {
  const std::string bytes = png(640, 480, 100000);
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
  const auto damaged = Image::fromBytes(share(jpeg(100, 100)));
  ASSERT_TRUE(damaged);
  EXPECT_FALSE(pngBytes(*damaged));
  EXPECT_FALSE(convertedBytes(*damaged, "heic")) << "no encoder for it";
  const auto same = share(png(5, 5));
  EXPECT_EQ(pngBytes(*Image::fromBytes(same)), same) << "PNG stays what it was";
}

}  // namespace
}  // namespace marbelot
