#include "platform/linux/png_reader.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

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
  std::vector<std::string_view> pixels;

  int samples() const {
    constexpr std::array<int, 7> counts{1, 0, 3, 1, 2, 0, 4};
    return counts[static_cast<std::size_t>(type)];
  }
  std::size_t rowBytes() const {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(samples() * depth) + 7) / 8;
  }
  // Whether the data could be that of so many rows: nothing is compressed to less than 1/1032.
  bool isPossible() const {
    std::size_t bytes = 0;
    for (const std::string_view part : pixels) bytes += part.size();
    return (rowBytes() + 1) * static_cast<std::size_t>(height) / 1032 <= bytes;
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
      png.pixels.push_back(data);
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
        // Four bytes more, for whoever reads a pixel of three as four.
        rows_((std::min(rowsAtOnce_, static_cast<std::size_t>(png.height)) + 1) * stride_ + 4) {
    isal_inflate_init(&state_);  // of the bare data: the chunks' checksums have told already
  }

  // Before the first row. False for another compression than PNG knows.
  bool begin() {
    constexpr std::size_t header = 2;
    if (png_.pixels.empty() || png_.pixels[0].size() < header) return false;
    const unsigned check = bigEndian16(png_.pixels[0], 0);
    if (check % 31 != 0 || (check & 0x0F20) != 0x0800) return false;
    give(png_.pixels[nextPart_++].substr(header));
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

  void give(std::string_view part) {
    state_.next_in = reinterpret_cast<std::uint8_t*>(const_cast<char*>(part.data()));
    state_.avail_in = static_cast<std::uint32_t>(part.size());
  }

  bool fill() {
    std::copy_n(at(filled_), stride_, at(0));
    row_ = 0;
    filled_ = std::min(rowsAtOnce_, static_cast<std::size_t>(png_.height) - y_);
    state_.next_out = at(1);
    state_.avail_out = static_cast<std::uint32_t>(filled_ * stride_);
    while (state_.avail_out > 0) {
      const bool more = nextPart_ < png_.pixels.size();
      if (state_.avail_in == 0 && more) give(png_.pixels[nextPart_++]);
      const std::uint32_t before = state_.avail_out;
      if (isal_inflate(&state_) != ISAL_DECOMP_OK) return false;
      if (state_.avail_out == before && state_.avail_in == 0 && !more) return false;
      if (state_.avail_out > 0 && state_.block_state == ISAL_BLOCK_FINISH) return false;
    }
    y_ += filled_;
    return unfilterPiece();
  }

  bool unfilterPiece() {
    const std::size_t bytes = stride_ - 1;
    std::size_t row = 1;
    for (; row < filled_; row += 2) {
      std::uint8_t* const first = at(row);
      std::uint8_t* const second = at(row + 1);
      if (!unfilterTwo(first[0], second[0], first + 1, second + 1, at(row - 1) + 1, bytes,
                       pixelBytes_))
        return false;
    }
    std::uint8_t* const last = at(filled_);
    return row > filled_ || unfilter(last[0], last + 1, at(filled_ - 1) + 1, bytes, pixelBytes_);
  }

  const Png& png_;
  const std::size_t stride_;
  const std::size_t pixelBytes_;
  const std::size_t rowsAtOnce_;
  std::vector<std::uint8_t> rows_;
  inflate_state state_{};
  std::size_t nextPart_ = 0;
  std::size_t row_ = 0;
  std::size_t filled_ = 0;
  std::size_t y_ = 0;
};

// Turns the rows of the file's form into pixels in sRGB, not premultiplied yet.
class Converter {
 public:
  explicit Converter(const Png& png) : png_(png) {
    const bool isGray = png.type == gray || png.type == grayAlpha;
    if (!png.profile.empty()) {
      transform_ = ColorTransform::fromProfile(png.profile, isGray);
    } else if (!png.srgb && png.gamma > 0 && !isGray) {
      transform_ = ColorTransform::fromGamma(
          png.gamma, png.hasChromaticities ? png.chromaticities.data() : nullptr);
    }
    if (png.depth == 16) {
      words_.resize(static_cast<std::size_t>(png.width) * 4);
    } else if (png.type == palette || png.type == gray) {
      png.type == palette ? makePalette() : makeGrays();
      if (transform_) transform_->apply(indices_[0].data(), 256);
    }
  }

  void convert(const std::uint8_t* row, std::uint8_t* to) {
    if (png_.depth == 16) return convertWords(row, to);
    if (png_.samples() == 1) return convertIndices(row, to);
    if (png_.type == colors) {
      convertColors(row, to);
    } else if (png_.type == grayAlpha) {
      convertGrayAlpha(row, to);
    } else {
      std::memcpy(to, row, static_cast<std::size_t>(png_.width) * 4);
    }
    if (transform_) transform_->apply(to, png_.width);
  }

 private:
  using Pixel = std::array<std::uint8_t, 4>;

  void makeGrays() {
    const int most = (1 << png_.depth) - 1;
    for (int value = 0; value <= most; ++value) {
      const auto level = static_cast<std::uint8_t>(value * 255 / most);
      indices_[static_cast<std::size_t>(value)] = {level, level, level, 255};
    }
    if (png_.transparency.size() == 2)
      indices_[bigEndian16(png_.transparency, 0) & static_cast<unsigned>(most)][3] = 0;
  }

  // Indices beyond the palette show black.
  void makePalette() {
    indices_.fill({0, 0, 0, 255});
    for (std::size_t i = 0; i < png_.palette.size() / 3; ++i) {
      for (std::size_t k = 0; k < 3; ++k)
        indices_[i][k] = static_cast<std::uint8_t>(png_.palette[3 * i + k]);
      if (i < png_.transparency.size())
        indices_[i][3] = static_cast<std::uint8_t>(png_.transparency[i]);
    }
  }

  void convertIndices(const std::uint8_t* row, std::uint8_t* to) const {
    const int perByte = 8 / png_.depth;
    const int mask = (1 << png_.depth) - 1;
    for (int x = 0; x < png_.width; ++x, to += 4) {
      const int shift = 8 - png_.depth * (x % perByte + 1);
      const Pixel& pixel = indices_[static_cast<std::size_t>(row[x / perByte] >> shift & mask)];
      std::memcpy(to, pixel.data(), 4);
    }
  }

  void convertColors(const std::uint8_t* row, std::uint8_t* to) const {
    addAlpha(row, to, png_.width);
    if (png_.transparency.size() != 6) return;
    const Pixel key{static_cast<std::uint8_t>(png_.transparency[1]),
                    static_cast<std::uint8_t>(png_.transparency[3]),
                    static_cast<std::uint8_t>(png_.transparency[5]), 255};
    for (int x = 0; x < png_.width; ++x)
      if (std::memcmp(to + 4 * x, key.data(), 4) == 0) to[4 * x + 3] = 0;
  }

  void convertGrayAlpha(const std::uint8_t* row, std::uint8_t* to) const {
    for (int x = 0; x < png_.width; ++x, row += 2, to += 4) {
      std::memset(to, row[0], 3);
      to[3] = row[1];
    }
  }

  void convertWords(const std::uint8_t* row, std::uint8_t* to) {
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
    if (transform_) return transform_->apply(words_.data(), to, png_.width);
    for (std::size_t i = 0; i < words_.size(); ++i) to[i] = to8(words_[i]);
  }

  // Whether the pixel of 16 bits a sample is the one that stands for nothing.
  bool isKey(const std::uint8_t* pixel) const {
    return !png_.transparency.empty() &&
           png_.transparency.size() == static_cast<std::size_t>(png_.samples()) * 2 &&
           std::memcmp(pixel, png_.transparency.data(), png_.transparency.size()) == 0;
  }

  const Png& png_;
  std::unique_ptr<ColorTransform> transform_;
  std::array<Pixel, 256> indices_{};
  std::vector<std::uint16_t> words_;
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
    if (png->hasAlpha()) premultiply(bitmap->row(y), bitmap->row(y), png->width);
  }
  return bitmap;
}

}  // namespace marbelot
