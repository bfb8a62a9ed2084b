// PNG for pasting: speed first. One filter and ISA-L's deflate make it some twenty times faster
// than libpng at its default level, and hardly larger.
#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "platform/image_codec.h"
#include "platform/linux/pixel_rows.h"

namespace marbelot {
namespace {

using Rows = std::vector<std::uint8_t>;

// Bytes of rows that are compressed at a time. Small pieces cut long matches, and larger ones fall
// out of the cache.
constexpr std::size_t pieceBytes = std::size_t{1} << 20;
constexpr std::uint8_t filterUp = 2;

void appendBigEndian(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<char>(value >> shift));
}

void appendChunk(std::string& out, std::string_view type, std::string_view data) {
  appendBigEndian(out, static_cast<std::uint32_t>(data.size()));
  const std::size_t start = out.size();
  out.append(type).append(data);
  appendBigEndian(out, crc32_gzip_refl(0, reinterpret_cast<const std::uint8_t*>(&out[start]),
                                       out.size() - start));
}

bool isOpaque(const Bitmap& bitmap) {
  for (int y = 0; y < bitmap.height(); ++y) {
    const std::uint8_t* row = bitmap.row(y);
    std::uint32_t all = ~std::uint32_t{0};
    for (int x = 0; x < bitmap.width(); ++x) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel, row + 4 * x, sizeof pixel);
      all &= pixel;
    }
    std::array<std::uint8_t, 4> bytes{};
    std::memcpy(bytes.data(), &all, sizeof all);
    if (bytes[3] != 255) return false;
  }
  return true;
}

void subtract(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* to,
              std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) to[i] = static_cast<std::uint8_t>(row[i] - above[i]);
}

// Leaves out every fourth byte. Writes one byte past the last pixel.
void dropAlpha(const std::uint8_t* from, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x) std::memcpy(to + 3 * x, from + 4 * x, 4);
}

// The rows as PNG stores them, each behind its filter's number, top first.
class RowFilter {
 public:
  RowFilter(const Bitmap& bitmap, bool opaque)
      : bitmap_(bitmap),
        opaque_(opaque),
        stride_(static_cast<std::size_t>(bitmap.width()) * 4),
        above_(stride_),
        row_(opaque ? 0 : stride_),
        difference_(opaque ? stride_ : 0) {}

  // Bytes of one row.
  std::size_t rowBytes() const { return 1 + stride_ / 4 * (opaque_ ? 3 : 4); }

  // `to` has room for the row and one byte more.
  void next(std::uint8_t* to) {
    const std::uint8_t* row = bitmap_.row(y_++);
    *to++ = filterUp;
    if (opaque_) {
      const std::uint8_t* above = y_ > 1 ? bitmap_.row(y_ - 2) : above_.data();
      subtract(row, above, difference_.data(), stride_);
      dropAlpha(difference_.data(), to, bitmap_.width());
    } else {
      unpremultiply(row, row_.data(), bitmap_.width());
      subtract(row_.data(), above_.data(), to, stride_);
      std::swap(row_, above_);
    }
  }

 private:
  const Bitmap& bitmap_;
  const bool opaque_;
  const std::size_t stride_;
  Rows above_;  // of an opaque bitmap only the blank row above the first
  Rows row_;
  Rows difference_;
  int y_ = 0;
};

// Compresses what comes and appends it as the chunks of the pixels.
class Compressor {
 public:
  explicit Compressor(std::string& out)
      : out_(out), levelMemory_(ISAL_DEF_LVL1_DEFAULT), output_(pieceBytes / 4) {
    isal_deflate_init(&stream_);
    stream_.level = 1;
    stream_.level_buf = levelMemory_.data();
    stream_.level_buf_size = static_cast<std::uint32_t>(levelMemory_.size());
    stream_.gzip_flag = IGZIP_ZLIB;
    restart();
  }

  bool add(std::uint8_t* data, std::size_t bytes, bool last) {
    stream_.next_in = data;
    stream_.avail_in = static_cast<std::uint32_t>(bytes);
    stream_.end_of_stream = last;
    do {
      if (stream_.avail_out == 0) flush();
      if (isal_deflate(&stream_) != COMP_OK) return false;
    } while (stream_.avail_out == 0);
    if (last) flush();
    return true;
  }

 private:
  void restart() {
    stream_.next_out = output_.data();
    stream_.avail_out = static_cast<std::uint32_t>(output_.size());
  }
  void flush() {
    const std::size_t bytes = output_.size() - stream_.avail_out;
    if (bytes > 0) appendChunk(out_, "IDAT", {reinterpret_cast<char*>(output_.data()), bytes});
    restart();
  }

  std::string& out_;
  isal_zstream stream_{};
  std::vector<std::uint8_t> levelMemory_;
  std::vector<std::uint8_t> output_;
};

}  // namespace

SharedBytes encodePng(const Bitmap& bitmap) {
  const bool opaque = isOpaque(bitmap);
  std::string out("\x89PNG\r\n\x1A\n");
  std::string header;
  appendBigEndian(header, static_cast<std::uint32_t>(bitmap.width()));
  appendBigEndian(header, static_cast<std::uint32_t>(bitmap.height()));
  header.append({8, static_cast<char>(opaque ? 2 : 6), 0, 0, 0});  // bits, colours or with alpha
  appendChunk(out, "IHDR", header);
  appendChunk(out, "sRGB", std::string_view("\0", 1));  // perceptual intent, the usual one

  RowFilter filter(bitmap, opaque);
  Compressor compressor(out);
  const std::size_t rowBytes = filter.rowBytes();
  const int rowsAtOnce = static_cast<int>(std::max<std::size_t>(1, pieceBytes / rowBytes));
  Rows rows(rowBytes * static_cast<std::size_t>(std::min(rowsAtOnce, bitmap.height())) + 1);
  for (int y = 0; y < bitmap.height(); y += rowsAtOnce) {
    const int count = std::min(rowsAtOnce, bitmap.height() - y);
    for (int i = 0; i < count; ++i) filter.next(&rows[static_cast<std::size_t>(i) * rowBytes]);
    if (!compressor.add(rows.data(), static_cast<std::size_t>(count) * rowBytes,
                        y + count == bitmap.height()))
      return nullptr;
  }
  appendChunk(out, "IEND", {});
  return share(std::move(out));
}

}  // namespace marbelot
