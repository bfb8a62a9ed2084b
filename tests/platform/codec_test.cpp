// Our own PNG reader and writer beside the toolkit's, and what becomes of other formats' pixels.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QColorSpace>
#include <QImage>
#include <cmath>
#include <cstring>
#include <random>

#include "platform/image_codec.h"
#include "platform/linux/imaging.h"
#include "platform/linux/pixel_rows.h"
#include "platform/linux/png_filters.h"
#include "platform/linux/png_reader.h"
#include "tests/support/png.h"

namespace marbelot {
namespace {

int below(int limit) {
  static std::mt19937 generator(42);
  return static_cast<int>(generator() % static_cast<unsigned>(limit));
}
char anyByte() { return static_cast<char>(below(256)); }

struct Form {
  int type, depth, samples;
};
constexpr Form forms[] = {{0, 1, 1}, {0, 2, 1},  {0, 4, 1},  {0, 8, 1}, {0, 16, 1},
                          {2, 8, 3}, {2, 16, 3}, {3, 1, 1},  {3, 2, 1}, {3, 4, 1},
                          {3, 8, 1}, {4, 8, 2},  {4, 16, 2}, {6, 8, 4}, {6, 16, 4}};

// Any filtered bytes are some image: the reader has to make of them what others do. `between` goes
// before the pixels, which come in several chunks.
std::string anyPng(const Form& form, int width, int height, const std::string& between = {}) {
  const std::size_t rowBytes =
      static_cast<std::size_t>((width * form.samples * form.depth + 7) / 8);
  std::string rows;
  for (int y = 0; y < height; ++y) {
    rows += static_cast<char>(below(5));
    for (std::size_t i = 0; i < rowBytes; ++i) rows += below(3) ? '\0' : anyByte();
  }
  std::string out =
      "\x89PNG\r\n\x1A\n" +
      chunk("IHDR",
            big(static_cast<std::size_t>(width)) + big(static_cast<std::size_t>(height)) +
                std::string{static_cast<char>(form.depth), static_cast<char>(form.type), 0, 0, 0});
  if (form.type == 3) {
    std::string palette;
    for (int i = 0; i < 3 << form.depth; ++i) palette += anyByte();
    out += chunk("PLTE", palette);
  }
  out += between;
  const std::string data = stored(rows);
  const std::size_t first = static_cast<std::size_t>(below(static_cast<int>(data.size())));
  if (first >= 2) out += chunk("IDAT", data.substr(0, first)) + chunk("IDAT", "");
  return out + chunk("IDAT", data.substr(first >= 2 ? first : 0)) + chunk("IEND", "");
}

std::optional<Bitmap> read(const std::string& png) {
  return decodePng(png, [](int width, int height) { return Bitmap::make(width, height); });
}

QImage toolkit(const std::string& png) {
  QImage image = QImage::fromData(QByteArray::fromStdString(png), "PNG");
  if (image.colorSpace().isValid()) image.convertToColorSpace(QColorSpace::SRgb);
  return image.convertToFormat(QImage::Format_RGBA8888);
}

// The largest difference of a premultiplied part, of 255.
int difference(const Bitmap& bitmap, const QImage& expected) {
  if (bitmap.width() != expected.width() || bitmap.height() != expected.height()) return 256;
  int most = 0;
  std::vector<std::uint8_t> row(static_cast<std::size_t>(bitmap.width()) * 4);
  for (int y = 0; y < bitmap.height(); ++y) {
    premultiplySimply(expected.constScanLine(y), row.data(), bitmap.width());
    for (std::size_t i = 0; i < row.size(); ++i)
      most = std::max(most, std::abs(row[i] - bitmap.row(y)[i]));
  }
  return most;
}

std::string encoded(const QImage& image, const char* format, int quality = -1) {
  QByteArray bytes;
  QBuffer device(&bytes);
  device.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&device, format, quality));
  return bytes.toStdString();
}

SharedBitmap decoded(const std::string& bytes) {
  const auto image = Image::fromBytes(share(bytes));
  return image ? decode(*image) : nullptr;
}

TEST(PngReader, AgreesWithTheToolkitInEveryForm) {
  for (const Form& form : forms) {
    for (const auto& [width, height] :
         {std::pair(1, 1), {2, 3}, {7, 5}, {33, 9}, {500, 40}, {3000, 200}}) {
      const std::string png = anyPng(form, width, height);
      const auto bitmap = read(png);
      ASSERT_TRUE(bitmap) << form.type << " of " << form.depth << " bits, width " << width;
      EXPECT_LE(difference(*bitmap, toolkit(png)), form.depth == 16 ? 1 : 0)
          << form.type << " of " << form.depth << " bits, width " << width;
    }
  }
}

TEST(PngReader, KnowsTheColourThatStandsForNothing) {
  const std::string zero16 = big(0, 2);
  for (const Form& form : forms) {
    if (form.samples % 2 == 0) continue;
    std::string key = form.samples == 3 ? zero16 + zero16 + zero16 : zero16;
    if (form.type == 3) key = "\x40";  // of the first colour
    const std::string png = anyPng(form, 40, 30, chunk("tRNS", key));
    const auto bitmap = read(png);
    ASSERT_TRUE(bitmap);
    // The toolkit overlooks it in colours of 16 bits.
    if (form.samples == 3 && form.depth == 16) continue;
    EXPECT_LE(difference(*bitmap, toolkit(png)), form.depth == 16 ? 1 : 0) << form.type;
  }
  const std::string row = std::string(11, '\0') + big(1, 2);
  const auto deep = read(
      "\x89PNG\r\n\x1A\n" + chunk("IHDR", big(2) + big(1) + std::string("\x10\2\0\0\0", 5)) +
      chunk("tRNS", zero16 + zero16 + zero16) + chunk("IDAT", stored(row)) + chunk("IEND", ""));
  ASSERT_TRUE(deep);
  EXPECT_EQ(deep->row(0)[3], 0);
  EXPECT_EQ(deep->row(0)[7], 255) << "nearly that colour is not that colour";
}

TEST(PngReader, RefusesDamage) {
  const std::string good = anyPng({6, 8, 4}, 60, 50);
  ASSERT_TRUE(read(good));
  for (std::size_t length = 0; length < good.size(); ++length)
    EXPECT_FALSE(read(std::string(good, 0, length))) << "cut off at " << length;
  for (std::size_t at = 8; at < good.size(); ++at) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 1 << below(5));  // not what makes a chunk optional
    EXPECT_FALSE(read(bad)) << "bit flipped at " << at;
  }
  const std::string start = good.substr(0, 33);
  const std::string end = chunk("IEND", "");
  const auto with = [&](const std::string& data) { return start + chunk("IDAT", data) + end; };
  std::string badFilter(241 * 50, '\0');
  EXPECT_TRUE(read(with(stored(badFilter))));
  badFilter[241] = 5;
  for (const std::string& data :
       {std::string(), std::string("\x78"), std::string("\x78\x01"), stored(""),
        stored(std::string(100, 'x')), stored(badFilter), std::string(300, '\xFF')})
    EXPECT_FALSE(read(with(data))) << data.size();
  EXPECT_FALSE(read(start + end));
  EXPECT_FALSE(read(anyPng({2, 8, 3}, 40000, 1))) << "wider than a bitmap";
  EXPECT_FALSE(decodePng(good, [](int, int) { return std::optional<Bitmap>(); }));
}

TEST(PngFilters, TheFastOnesEqualTheSimpleOnes) {
  for (const std::size_t pixel : {1, 2, 3, 4, 6, 8}) {
    for (int filter = 0; filter < 6; ++filter) {
      for (const std::size_t pixels : {1, 2, 3, 50, 1001}) {
        std::vector<std::uint8_t> row(pixels * pixel + 4), above(row.size());
        for (auto* bytes : {&row, &above})
          for (auto& byte : *bytes) byte = static_cast<std::uint8_t>(anyByte());
        auto expected = row;
        const bool known =
            unfilterSimply(filter, expected.data(), above.data(), pixels * pixel, pixel);
        EXPECT_EQ(unfilter(filter, row.data(), above.data(), pixels * pixel, pixel), known);
        EXPECT_EQ(known, filter < 5);
        EXPECT_EQ(row, expected) << "filter " << filter << ", " << pixel << " bytes a pixel";
      }
    }
  }
}

TEST(PngFilters, TwoRowsAtOnceEqualOneAfterTheOther) {
  for (const std::size_t pixel : {1, 3, 4, 6}) {
    for (int filters = 0; filters < 25; ++filters) {
      for (const std::size_t pixels : {1, 2, 3, 1001}) {
        const std::size_t bytes = pixels * pixel;
        const std::size_t stride = bytes + unfilterOverrun;
        std::vector<std::uint8_t> rows(3 * stride);
        for (auto& byte : rows) byte = static_cast<std::uint8_t>(anyByte());
        auto expected = rows;
        const auto at = [&](std::vector<std::uint8_t>& from, std::size_t row) {
          return from.data() + row * stride;
        };
        const bool done = unfilterTwo(filters / 5, filters % 5, at(rows, 1), at(rows, 2),
                                      at(rows, 0), bytes, pixel);
        EXPECT_TRUE(done || filters < 24 || pixel == 1 || pixel == 6);
        if (done) {
          unfilterSimply(filters / 5, at(expected, 1), at(expected, 0), bytes, pixel);
          unfilterSimply(filters % 5, at(expected, 2), at(expected, 1), bytes, pixel);
        }
        EXPECT_EQ(rows, expected) << filters << ", " << pixel << " bytes a pixel";
      }
    }
  }
}

TEST(PixelRows, EveryColourAndAlpha) {
  std::vector<std::uint8_t> pixels;
  for (int alpha = 0; alpha < 256; ++alpha) {
    for (int color = 0; color < 256; ++color) {
      for (const int part : {color, 255 - color, color / 2, alpha})
        pixels.push_back(static_cast<std::uint8_t>(part));
    }
  }
  const int most = static_cast<int>(pixels.size() / 4) - 1;  // one more may be written
  std::vector<int> widths{most, most - 1};
  for (int width = 0; width < 40; ++width) widths.push_back(width);
  const std::vector<std::uint8_t> blank(pixels.size(), 7);
  std::vector<std::uint8_t> fast, simple;
  for (const auto& [quick, slow] : {std::pair(&premultiply, &premultiplySimply),
                                    {&unpremultiply, &unpremultiplySimply},
                                    {&addAlpha, &addAlphaSimply},
                                    {&dropAlpha, &dropAlphaSimply}}) {
    for (const int width : widths) {
      fast = simple = blank;
      quick(pixels.data(), fast.data(), width);
      slow(pixels.data(), simple.data(), width);
      ASSERT_EQ(fast, simple) << width;
    }
  }
  premultiplySimply(pixels.data(), simple.data(), most);
  unpremultiply(simple.data(), pixels.data(), most);
  premultiply(pixels.data(), fast.data(), most);
  fast.resize(std::size_t{4} * most);
  simple.resize(fast.size());
  EXPECT_EQ(fast, simple) << "there and back";
}

// Noise, gradients and flat parts, with or without transparency.
Bitmap picture(int width, int height, bool opaque) {
  Bitmap bitmap = *Bitmap::make(width, height);
  for (int y = 0; y < height; ++y) {
    std::uint8_t* row = bitmap.row(y);
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < 4; ++k) {
        row[4 * x + k] = static_cast<std::uint8_t>(x % 97 < 30   ? below(256)
                                                   : x % 97 < 60 ? x + y
                                                                 : 9);
      }
    }
    for (int x = 0; opaque && x < width; ++x) row[4 * x + 3] = 255;
    premultiplySimply(row, row, width);
  }
  return bitmap;
}

// Written, the picture is the same for the toolkit and for our own reader.
SharedBytes written(const Bitmap& bitmap, const std::string& what) {
  SharedBytes bytes = encodePng(bitmap);
  const auto back = bytes ? read(*bytes) : std::nullopt;
  EXPECT_TRUE(back) << what;
  if (!back) return share("");
  EXPECT_EQ(difference(bitmap, toolkit(*bytes)), 0) << what;
  for (int y = 0; y < bitmap.height(); ++y) {
    const auto size = static_cast<std::size_t>(bitmap.width()) * 4;
    EXPECT_EQ(std::memcmp(back->row(y), bitmap.row(y), size), 0) << what << ", row " << y;
  }
  return bytes;
}

TEST(PngWriter, WritesWhatEveryReaderReads) {
  for (const bool opaque : {true, false}) {
    for (const auto& [width, height] :
         {std::pair(1, 1), {3, 1}, {1, 700}, {640, 480}, {2500, 1100}}) {
      const Bitmap bitmap = picture(width, height, opaque);
      const SharedBytes bytes =
          written(bitmap, std::to_string(width) + " by " + std::to_string(height));
      const QImage image = QImage::fromData(QByteArray::fromStdString(*bytes));
      EXPECT_EQ(image.hasAlphaChannel(), !opaque);
      EXPECT_TRUE(image.colorSpace() == QColorSpace::SRgb);
    }
  }
}

// A stripe of each colour in turn; of one more than a palette holds, too.
TEST(PngWriter, KeepsFewColours) {
  for (const int colours : {1, 2, 3, 4, 5, 16, 17, 256, 257}) {
    for (const int width : {1, 7, 8, 300}) {
      Bitmap bitmap = *Bitmap::make(width, 300);
      for (int y = 0; y < 300; ++y) {
        for (int x = 0; x < width; ++x) {
          const int colour = (x / 3 + y) % colours;
          const auto high = static_cast<std::uint8_t>(colour >> 4);
          const std::uint8_t pixel[] = {static_cast<std::uint8_t>(colour), high, 77, 255};
          std::copy_n(pixel, 4, bitmap.row(y) + 4 * x);
        }
      }
      // Clear pixels before the first colour are no colour of the palette.
      if (width == 8) std::fill_n(bitmap.row(0), colours % 2 == 0 ? 4 : 32, std::uint8_t{0});
      written(bitmap, std::to_string(colours) + " colours, width " + std::to_string(width));
    }
  }
}

// Whatever filter the picture asks for.
TEST(PngWriter, FiltersWithoutLoss) {
  const auto wave = [](int at) { return static_cast<std::uint8_t>(128 + 90 * std::sin(at / 9.0)); };
  for (const bool opaque : {true, false}) {
    for (const int slope : {0, 1, 2, 3, 4}) {
      const bool photo = slope == 4;
      Bitmap bitmap = *Bitmap::make(401, 203);
      for (int y = 0; y < 203; ++y) {
        for (int x = 0; x < 401; ++x) {
          const std::uint8_t at = wave(slope == 0   ? x
                                       : slope == 1 ? y * 7
                                       : photo      ? (x + y) / 16
                                                    : x * slope + y * 5);
          const auto noisy = static_cast<std::uint8_t>(at + below(slope >= 3 ? 9 : 2));
          const auto red = static_cast<std::uint8_t>(at + (photo ? below(9) : 0));
          const auto blue = static_cast<std::uint8_t>(255 - at + (photo ? below(9) : 0));
          const std::uint8_t pixel[] = {red, noisy, blue, 255};
          std::copy_n(pixel, 4, bitmap.row(y) + 4 * x);
          if (!opaque) bitmap.row(y)[4 * x + 3] = wave(x + y);
        }
      }
      for (int y = 0; y < 203; ++y) premultiplySimply(bitmap.row(y), bitmap.row(y), 401);
      const SharedBytes png = written(bitmap, "slope " + std::to_string(slope));
      if (photo && opaque) {
        const auto theirs = encoded(toolkit(*png).convertToFormat(QImage::Format_RGB888), "PNG");
        EXPECT_LT(static_cast<double>(png->size()), 1.04 * static_cast<double>(theirs.size()));
      }
    }
  }
}

TEST(Decode, CrossesTheProcessesBorder) {
  const Bitmap bitmap = picture(700, 300, false);
  const SharedBitmap back = decoded(*encodePng(bitmap));
  ASSERT_TRUE(back);
  ASSERT_EQ(back->width(), 700);
  for (int y = 0; y < 300; ++y)
    ASSERT_EQ(std::memcmp(back->row(y), bitmap.row(y), 2800), 0) << "row " << y;
}

TEST(Decode, ReadsTheOtherFormats) {
  QImage image(61, 43, QImage::Format_RGB32);
  for (int y = 0; y < 43; ++y)
    for (int x = 0; x < 61; ++x) image.setPixel(x, y, qRgb(4 * x, 5 * y, x + y));
  for (const auto& [format, quality, off] :
       {std::tuple("BMP", -1, 0), {"TIFF", -1, 0}, {"WEBP", 100, 0}, {"JPEG", 98, 12}}) {
    const SharedBitmap bitmap = decoded(encoded(image, format, quality));
    ASSERT_TRUE(bitmap) << format;
    EXPECT_LE(difference(*bitmap, image.convertToFormat(QImage::Format_RGBA8888)), off) << format;
  }
}

TEST(Decode, ConvertsColoursToSrgb) {
  for (const QImage::Format format : {QImage::Format_RGBA8888, QImage::Format_RGBA64}) {
    for (const auto space : {QColorSpace::AdobeRgb, QColorSpace::DisplayP3, QColorSpace::SRgb,
                             QColorSpace::SRgbLinear, QColorSpace::ProPhotoRgb}) {
      for (const char* encoding : {"PNG", "TIFF"}) {
        QImage image(64, 64, format);
        for (int y = 0; y < 64; ++y) {
          for (int x = 0; x < 64; ++x)
            image.setPixelColor(x, y, QColor(64 + x, 64 + y, 128, 255 - (x == 5 ? 200 : 0)));
        }
        image.setColorSpace(space);
        const auto bitmap = decoded(encoded(image, encoding));
        ASSERT_TRUE(bitmap);
        const QImage expected = image.convertedToColorSpace(QColorSpace::SRgb);
        EXPECT_LE(difference(*bitmap, expected.convertToFormat(QImage::Format_RGBA8888)), 3)
            << encoding << " in " << image.colorSpace().description().toStdString();
      }
    }
  }
}

TEST(Decode, FailsCleanly) {
  const std::string good = anyPng({2, 8, 3}, 300, 200);
  EXPECT_TRUE(decoded(good));
  std::string damaged = good;
  damaged[good.size() / 2] ^= 0x55;
  EXPECT_FALSE(decoded(damaged));
  EXPECT_FALSE(decoded(anyPng({2, 8, 3}, 33000, 1))) << "more than a bitmap's side";
  EXPECT_FALSE(decoded(std::string("GIF89a\x10\0\x10\0", 10) + std::string(30, '\xFF')));
  EXPECT_FALSE(decoded("\xFF\xD8\xFF\xC0" + big(17, 2) + "\b" + big(100, 2) + big(100, 2) + "\3" +
                       std::string(300, '\x11')));
  // Sixteen thousand by sixteen thousand pixels in a few bytes.
  const std::string bomb = "\x89PNG\r\n\x1A\n" +
                           chunk("IHDR", big(16384) + big(16384) + std::string("\x08\2\0\0\0", 5)) +
                           chunk("IDAT", stored("")) + chunk("IEND", "");
  EXPECT_FALSE(decoded(bomb));
}

}  // namespace
}  // namespace marbelot
