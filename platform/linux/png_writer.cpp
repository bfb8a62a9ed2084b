// PNG for pasting: speed first. One filter for the whole picture and ISA-L's deflate make it some
// twenty times faster than libpng at its default level, and hardly larger.
#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "platform/image_codec.h"
#include "platform/linux/png_rows.h"

namespace marbelot {
namespace {

using Rows = std::vector<std::uint8_t>;

// Bytes of rows that are compressed at a time. Small pieces cut long matches, and larger ones fall
// out of the cache.
constexpr std::size_t pieceBytes = std::size_t{1} << 20;

// How a picture's rows are written: behind a filter, and with repeated bytes looked for so far
// back.
struct Manner {
  PngFilter filter;
  std::uint16_t windowBits;  // the logarithm of bytes
};
// In the noise of photographs repetitions are chance, and cost more than the bytes themselves
// unless they are close.
constexpr Manner manners[] = {{PngFilter::none, ISAL_DEF_MAX_HIST_BITS},
                              {PngFilter::sub, ISAL_DEF_MAX_HIST_BITS},
                              {PngFilter::up, ISAL_DEF_MAX_HIST_BITS},
                              {PngFilter::average, 8},
                              {PngFilter::paeth, 8}};
// What decides which one a picture gets: this many rows, in strips from top to bottom.
constexpr int sampleStrips = 4;
constexpr int stripRows = 8;
// What gets smaller than this part of it without them is no noise.
constexpr std::size_t noiseShare = 4;
// A filter takes time of its own, so that it has to save one byte in so many.
constexpr std::size_t worthOf = 30;

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

// Deflate in the form that PNG wants, fed piece by piece.
class Compressor {
 public:
  // Gives each stretch of compressed bytes to `write`.
  Compressor(std::uint16_t windowBits, std::function<void(std::string_view)> write)
      : write_(std::move(write)), levelMemory_(ISAL_DEF_LVL1_DEFAULT), output_(pieceBytes / 4) {
    isal_deflate_init(&stream_);
    stream_.level = 1;
    stream_.level_buf = levelMemory_.data();
    stream_.level_buf_size = static_cast<std::uint32_t>(levelMemory_.size());
    stream_.gzip_flag = IGZIP_ZLIB;
    stream_.hist_bits = windowBits;
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
    if (bytes > 0) write_({reinterpret_cast<char*>(output_.data()), bytes});
    restart();
  }

  std::function<void(std::string_view)> write_;
  isal_zstream stream_{};
  std::vector<std::uint8_t> levelMemory_;
  std::vector<std::uint8_t> output_;
};

// What makes some of the picture's rows smallest. Text and flat areas repeat themselves
// and are best left alone; what changes smoothly gets small by a filter.
Manner bestManner(PngRows& rows, int height) {
  if (rows.palette()) return manners[0];
  const int strips = std::min(sampleStrips, (height + stripRows - 1) / stripRows);
  const std::size_t rowBytes = rows.rowBytes();
  Rows sample(rowBytes * stripRows * static_cast<std::size_t>(strips) + 1);
  Manner best = manners[0];
  std::size_t smallest = 0;
  for (const Manner& manner : manners) {
    if (manner.windowBits < ISAL_DEF_MAX_HIST_BITS && smallest * noiseShare < sample.size()) break;
    std::uint8_t* to = sample.data();
    for (int strip = 0; strip < strips; ++strip) {
      const int top = static_cast<int>(std::int64_t{height} * strip / strips);
      for (int y = top; y < std::min(top + stripRows, height); ++y, to += rowBytes)
        rows.write(y, manner.filter, to);
    }
    std::size_t bytes = 0;
    Compressor compressor(manner.windowBits,
                          [&bytes](std::string_view piece) { bytes += piece.size(); });
    compressor.add(sample.data(), static_cast<std::size_t>(to - sample.data()), true);
    if (smallest > 0 && bytes + smallest / worthOf >= smallest) continue;
    best = manner;
    smallest = bytes;
  }
  return best;
}

}  // namespace

SharedBytes encodePng(const Bitmap& bitmap) {
  PngRows rows(bitmap);
  std::string out("\x89PNG\r\n\x1A\n");
  std::string header;
  appendBigEndian(header, static_cast<std::uint32_t>(bitmap.width()));
  appendBigEndian(header, static_cast<std::uint32_t>(bitmap.height()));
  header.append({static_cast<char>(rows.bits()), static_cast<char>(rows.colourType()), 0, 0, 0});
  appendChunk(out, "IHDR", header);
  appendChunk(out, "sRGB", std::string_view("\0", 1));  // perceptual intent, the usual one
  if (rows.palette()) appendChunk(out, "PLTE", rows.palette()->colours());

  const Manner manner = bestManner(rows, bitmap.height());
  Compressor compressor(manner.windowBits,
                        [&out](std::string_view piece) { appendChunk(out, "IDAT", piece); });
  const std::size_t rowBytes = rows.rowBytes();
  const int rowsAtOnce = static_cast<int>(std::max<std::size_t>(1, pieceBytes / rowBytes));
  Rows piece(rowBytes * static_cast<std::size_t>(std::min(rowsAtOnce, bitmap.height())) + 1);
  for (int y = 0; y < bitmap.height(); y += rowsAtOnce) {
    const int count = std::min(rowsAtOnce, bitmap.height() - y);
    for (int i = 0; i < count; ++i)
      rows.write(y + i, manner.filter, &piece[static_cast<std::size_t>(i) * rowBytes]);
    if (!compressor.add(piece.data(), static_cast<std::size_t>(count) * rowBytes,
                        y + count == bitmap.height()))
      return nullptr;
  }
  appendChunk(out, "IEND", {});
  return share(std::move(out));
}

}  // namespace marbelot
