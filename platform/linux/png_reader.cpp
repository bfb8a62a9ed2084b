#include "platform/linux/png_reader.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/fast_path.h"
#include "platform/linux/color_transform.h"
#include "platform/linux/pixel_rows.h"
#include "platform/linux/png_filters.h"

namespace marbelot {
namespace {

enum ColorType { gray = 0, colors = 2, palette = 3, grayAlpha = 4, colorsAlpha = 6 };

// Bytes of rows that are decompressed at a time; few enough to stay in the cache.
constexpr std::size_t pieceBytes = std::size_t{1} << 18;
constexpr std::size_t largestProfile = std::size_t{16} << 20;  // bytes

std::uint32_t bigEndian32(std::string_view bytes, std::size_t at = 0) {
  std::uint32_t value = 0;
  for (std::size_t i = at; i < at + 4; ++i)
    value = value << 8 | static_cast<std::uint8_t>(bytes[i]);
  return value;
}

unsigned bigEndian16(const std::uint8_t* bytes) { return unsigned{bytes[0]} << 8 | bytes[1]; }
unsigned bigEndian16(std::string_view bytes, std::size_t at) {
  return bigEndian16(reinterpret_cast<const std::uint8_t*>(bytes.data()) + at);
}

// All that comes before the pixels, and where these are.
struct Png {
  int width = 0;
  int height = 0;
  int depth = 0;  // bits a sample
  int type = -1;
  bool interlaced = false;
  std::string_view palette;       // three bytes a colour
  std::string_view transparency;  // as in the file; empty when there is none
  std::string profile;
  bool srgb = false;
  double gamma = 0;  // 0: not told
  std::array<double, 8> chromaticities{};
  bool hasChromaticities = false;
  std::string pixels;  // compressed

  int samples() const {
    constexpr std::array<int, 7> counts{1, 0, 3, 1, 2, 0, 4};
    return counts[static_cast<std::size_t>(type)];
  }
  std::size_t rowBytes() const {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(samples() * depth) + 7) / 8;
  }
  // Whether the data could be that of so many rows: nothing is compressed to less than 1/1032.
  bool isPossible() const {
    return (rowBytes() + 1) * static_cast<std::size_t>(height) / 1032 <= pixels.size();
  }
  bool hasAlpha() const {
    return type == grayAlpha || type == colorsAlpha || !transparency.empty();
  }
};

bool isForm(int type, int depth) {
  switch (type) {
    case gray:
      return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case palette:
      return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case colors:
    case grayAlpha:
    case colorsAlpha:
      return depth == 8 || depth == 16;
    default:
      return false;
  }
}

// The profile in an iCCP chunk, empty when it is damaged.
std::string inflatedProfile(std::string_view chunk) {
  const std::size_t name = chunk.find('\0');
  if (name == std::string_view::npos || name + 2 > chunk.size()) return {};
  const std::string_view packed = chunk.substr(name + 2);
  inflate_state state{};
  isal_inflate_init(&state);
  state.crc_flag = ISAL_ZLIB;
  state.next_in = reinterpret_cast<std::uint8_t*>(const_cast<char*>(packed.data()));
  state.avail_in = static_cast<std::uint32_t>(packed.size());
  std::string profile;
  std::array<std::uint8_t, 4096> piece{};
  do {
    state.next_out = piece.data();
    state.avail_out = piece.size();
    if (isal_inflate(&state) != ISAL_DECOMP_OK) return {};
    profile.append(reinterpret_cast<char*>(piece.data()), piece.size() - state.avail_out);
  } while (state.avail_out == 0 && profile.size() < largestProfile);
  return state.block_state == ISAL_BLOCK_FINISH ? profile : std::string();
}

bool readHeader(std::string_view data, Png& png) {
  if (data.size() != 13) return false;
  png.width = static_cast<int>(std::min<std::uint32_t>(bigEndian32(data), 0x7FFFFFFF));
  png.height = static_cast<int>(std::min<std::uint32_t>(bigEndian32(data, 4), 0x7FFFFFFF));
  png.depth = static_cast<std::uint8_t>(data[8]);
  png.type = static_cast<std::uint8_t>(data[9]);
  png.interlaced = data[12] != 0;
  return Bitmap::fits(png.width, png.height) && isForm(png.type, png.depth) && data[10] == 0 &&
         data[11] == 0 && data[12] <= 1;
}

void readColors(std::string_view type, std::string_view data, Png& png) {
  constexpr double unit = 100000;
  if (type == "sRGB") png.srgb = true;
  if (type == "iCCP") png.profile = inflatedProfile(data);
  if (type == "gAMA" && data.size() == 4) png.gamma = bigEndian32(data) / unit;
  if (type == "cHRM" && data.size() == 32) {
    for (std::size_t i = 0; i < 8; ++i) png.chromaticities[i] = bigEndian32(data, 4 * i) / unit;
    png.hasChromaticities = true;
  }
}

// None when the file is damaged. A damaged chunk that can be done without is left out.
std::optional<Png> parse(std::string_view bytes) {
  Png png;
  for (std::size_t at = 8; at + 12 <= bytes.size();) {
    const std::size_t length = bigEndian32(bytes, at);
    if (length > bytes.size() - at - 12) return std::nullopt;
    const std::string_view type = bytes.substr(at + 4, 4);
    const std::string_view data = bytes.substr(at + 8, length);
    const auto* checked = reinterpret_cast<const std::uint8_t*>(type.data());
    const bool good =
        crc32_gzip_refl(0, checked, length + 4) == bigEndian32(bytes, at + 8 + length);
    const bool needed = (type[0] & 0x20) == 0;
    if (!good && needed) return std::nullopt;
    at += 12 + length;
    if (png.type < 0) {
      if (type != "IHDR" || !readHeader(data, png)) return std::nullopt;
    } else if (type == "PLTE") {
      if (data.size() % 3 != 0 || data.size() > 768) return std::nullopt;
      png.palette = data;
    } else if (type == "IDAT") {
      if (png.pixels.empty()) png.pixels.reserve(bytes.size() - at);
      png.pixels += data;
    } else if (type == "IEND") {
      return png;
    } else if (good && type == "tRNS") {
      png.transparency = data;
    } else if (good && png.pixels.empty()) {
      readColors(type, data, png);
    }
  }
  return std::nullopt;
}

// The decompressed rows, one after the other, freed of their filters.
class RowReader {
 public:
  explicit RowReader(const Png& png)
      : png_(png),
        stride_(png.rowBytes() + 1),
        pixelBytes_(static_cast<std::size_t>(std::max(1, png.samples() * png.depth / 8))),
        rowsAtOnce_(std::max<std::size_t>(1, pieceBytes / stride_)),
        rows_((std::min(rowsAtOnce_, static_cast<std::size_t>(png.height)) + 1) * stride_ +
              unfilterOverrun) {
    isal_inflate_init(&state_);  // of the bare data: the chunks' checksums have told already
  }

  // Before the first row. False for another compression than PNG knows.
  bool begin() {
    constexpr std::size_t header = 2;
    if (png_.pixels.size() < header) return false;
    const unsigned check = bigEndian16(png_.pixels, 0);
    if (check % 31 != 0 || (check & 0x0F20) != 0x0800) return false;
    state_.next_in =
        reinterpret_cast<std::uint8_t*>(const_cast<char*>(png_.pixels.data())) + header;
    state_.avail_in = static_cast<std::uint32_t>(png_.pixels.size() - header);
    return true;
  }

  // Null when the data is damaged or ends. Valid until the next call.
  const std::uint8_t* next() {
    if (row_ == filled_ && !fill()) return nullptr;
    return at(++row_) + 1;
  }

 private:
  // The first place is that of the last row before the piece.
  std::uint8_t* at(std::size_t row) { return rows_.data() + row * stride_; }

  bool fill() {
    std::copy_n(at(filled_), stride_, at(0));
    row_ = 0;
    filled_ = std::min(rowsAtOnce_, static_cast<std::size_t>(png_.height) - y_);
    state_.next_out = at(1);
    state_.avail_out = static_cast<std::uint32_t>(filled_ * stride_);
    while (state_.avail_out > 0) {
      const std::uint32_t before = state_.avail_out;
      if (isal_inflate(&state_) != ISAL_DECOMP_OK || state_.avail_out == before) return false;
    }
    y_ += filled_;
    return unfilterPiece();
  }

  bool unfilterPiece() {
    const std::size_t bytes = stride_ - 1;
    for (std::size_t row = 1; row <= filled_;) {
      std::uint8_t* const first = at(row);
      std::uint8_t* const second = at(row + 1);
      const std::uint8_t* const above = at(row - 1) + 1;
      const bool two = row < filled_ && unfilterTwo(first[0], second[0], first + 1, second + 1,
                                                    above, bytes, pixelBytes_);
      if (!two && !unfilter(first[0], first + 1, above, bytes, pixelBytes_)) return false;
      row += two ? 2 : 1;
    }
    return true;
  }

  const Png& png_;
  const std::size_t stride_;
  const std::size_t pixelBytes_;
  const std::size_t rowsAtOnce_;
  std::vector<std::uint8_t> rows_;
  inflate_state state_{};
  std::size_t row_ = 0;
  std::size_t filled_ = 0;
  std::size_t y_ = 0;
};

// Turns the rows of the file's form into a bitmap's.
class Converter {
 public:
  explicit Converter(const Png& png)
      : png_(png), samples_(static_cast<std::size_t>(png.width) * 4) {
    const bool isGray = png.type == gray || png.type == grayAlpha;
    if (!png.profile.empty()) {
      transform_ = ColorTransform::fromProfile(png.profile, isGray);
    } else if (!png.srgb && png.gamma > 0 && !isGray) {
      transform_ = ColorTransform::fromGamma(
          png.gamma, png.hasChromaticities ? png.chromaticities.data() : nullptr);
    }
    if (png.depth == 16) {
      words_.resize(samples_.size());
    } else if (png.type == palette || png.type == gray) {
      png.type == palette ? makePalette() : makeGrays();
      if (transform_) transform_->apply(indexed_[0].data(), 256);
      for (Pixel& pixel : indexed_) premultiplySimply(Pixel(pixel).data(), pixel.data(), 1);
    }
  }

  void convert(const std::uint8_t* row, std::uint8_t* to) {
    if (png_.samples() == 1 && png_.depth == 1) return convertIndices<1>(row, to);
    if (png_.samples() == 1 && png_.depth == 2) return convertIndices<2>(row, to);
    if (png_.samples() == 1 && png_.depth == 4) return convertIndices<4>(row, to);
    if (png_.samples() == 1 && png_.depth == 8) return convertIndices<8>(row, to);
    if (png_.depth == 8 && png_.type == colors && !transform_ && !png_.hasAlpha())
      return addAlpha(row, to, png_.width);
    if (png_.depth == 8 && png_.type == colorsAlpha && !transform_)
      return premultiply(row, to, png_.width);
    sample(row);
    premultiply(samples_.data(), to, png_.width);
  }

 private:
  using Pixel = std::array<std::uint8_t, 4>;

  void makeGrays() {
    const int most = (1 << png_.depth) - 1;
    for (int value = 0; value <= most; ++value) {
      const auto level = static_cast<std::uint8_t>(value * 255 / most);
      indexed_[static_cast<std::size_t>(value)] = {level, level, level, 255};
    }
    if (png_.transparency.size() == 2)
      indexed_[bigEndian16(png_.transparency, 0) & static_cast<unsigned>(most)][3] = 0;
  }

  // Indices beyond the palette show black.
  void makePalette() {
    indexed_.fill({0, 0, 0, 255});
    for (std::size_t i = 0; i < png_.palette.size() / 3; ++i) {
      for (std::size_t k = 0; k < 3; ++k)
        indexed_[i][k] = static_cast<std::uint8_t>(png_.palette[3 * i + k]);
      if (i < png_.transparency.size())
        indexed_[i][3] = static_cast<std::uint8_t>(png_.transparency[i]);
    }
  }

  template <unsigned depth>
  void convertIndices(const std::uint8_t* row, std::uint8_t* to) const {
    constexpr unsigned perByte = 8 / depth;
    const auto width = static_cast<unsigned>(png_.width);
    for (unsigned x = 0; x < width; ++x) {
      const unsigned shift = 8 - depth * (x % perByte + 1);
      const unsigned index = unsigned{row[x / perByte]} >> shift & ((1U << depth) - 1);
      std::memcpy(to + 4 * std::size_t{x}, indexed_[index].data(), 4);
    }
  }

  // To red, green, blue and alpha in sRGB, not premultiplied.
  void sample(const std::uint8_t* row) {
    if (png_.depth == 16) return sampleWords(row);
    if (png_.type == colors) {
      sampleColors(row);
    } else if (png_.type == grayAlpha) {
      sampleGrayAlpha(row);
    } else {
      std::memcpy(samples_.data(), row, samples_.size());
    }
    if (transform_) transform_->apply(samples_.data(), png_.width);
  }

  void sampleColors(const std::uint8_t* row) {
    addAlphaSimply(row, samples_.data(), png_.width);
    if (png_.transparency.size() != 6) return;
    const Pixel key{static_cast<std::uint8_t>(png_.transparency[1]),
                    static_cast<std::uint8_t>(png_.transparency[3]),
                    static_cast<std::uint8_t>(png_.transparency[5]), 255};
    for (std::uint8_t* to = samples_.data(); to != samples_.data() + samples_.size(); to += 4)
      if (std::memcmp(to, key.data(), 4) == 0) to[3] = 0;
  }

  void sampleGrayAlpha(const std::uint8_t* row) {
    for (std::size_t i = 0; i < samples_.size(); i += 4, row += 2) {
      std::memset(&samples_[i], row[0], 3);
      samples_[i + 3] = row[1];
    }
  }

  void sampleWords(const std::uint8_t* row) {
    const bool isGray = png_.samples() < 3;
    const int step = png_.samples() * 2;
    for (int x = 0; x < png_.width; ++x, row += step) {
      std::uint16_t* const word = &words_[static_cast<std::size_t>(x) * 4];
      for (int k = 0; k < 3; ++k)
        word[k] = static_cast<std::uint16_t>(bigEndian16(row + (isGray ? 0 : 2 * k)));
      word[3] = isKey(row) ? 0 : 0xFFFF;
      if (png_.samples() % 2 == 0)
        word[3] = static_cast<std::uint16_t>(bigEndian16(row + step - 2));
    }
    if (transform_) return transform_->apply(words_.data(), samples_.data(), png_.width);
    for (std::size_t i = 0; i < words_.size(); ++i) samples_[i] = to8(words_[i]);
  }

  // Whether the pixel of 16 bits a sample is the one that stands for nothing.
  bool isKey(const std::uint8_t* pixel) const {
    return !png_.transparency.empty() &&
           png_.transparency.size() == static_cast<std::size_t>(png_.samples()) * 2 &&
           std::memcmp(pixel, png_.transparency.data(), png_.transparency.size()) == 0;
  }

  const Png& png_;
  std::unique_ptr<ColorTransform> transform_;
  std::array<Pixel, 256> indexed_{};   // what indices stand for, premultiplied
  std::vector<std::uint8_t> samples_;  // of a row
  std::vector<std::uint16_t> words_;   // the same of 16 bits
};

}  // namespace

bool isOurPng(std::string_view bytes) {
  constexpr std::size_t interlacing = 28;  // its place in the first chunk
  return bytes.starts_with("\x89PNG") && bytes.size() > interlacing && bytes[interlacing] == 0;
}

std::optional<Bitmap> decodePng(std::string_view bytes, const MakeBitmap& make) {
  const std::optional<Png> png = parse(bytes);
  if (!png || png->interlaced || !png->isPossible() ||
      (png->type == palette && png->palette.empty()))
    return std::nullopt;
  std::optional<Bitmap> bitmap = make(png->width, png->height);
  if (!bitmap) return std::nullopt;
  RowReader rows(*png);
  if (!rows.begin()) return std::nullopt;
  Converter converter(*png);
  for (int y = 0; y < png->height; ++y) {
    const std::uint8_t* row = rows.next();
    if (!row) return std::nullopt;
    converter.convert(row, bitmap->row(y));
  }
  finishStreaming();
  return bitmap;
}

}  // namespace marbelot
