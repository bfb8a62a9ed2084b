// Built with clang when MARBELOT_FUZZ is on: png_reader_fuzz [CORPUS…]. Any bytes as a PNG, also
// with its chunks' checksums mended so that the pixels are reached.

#include <isa-l/crc.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/linux/png_reader.h"

namespace {

std::uint32_t bigEndian(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = at; i < at + 4; ++i)
    value = value << 8 | static_cast<std::uint8_t>(bytes[i]);
  return value;
}

void mendChecksums(std::string& png) {
  for (std::size_t at = 8; at + 12 <= png.size();) {
    const std::size_t length = bigEndian(png, at);
    if (length > png.size() - at - 12) return;
    const auto* checked = reinterpret_cast<const std::uint8_t*>(png.data()) + at + 4;
    const std::uint32_t sum = crc32_gzip_refl(0, checked, length + 4);
    at += 8 + length;
    for (int shift = 24; shift >= 0; shift -= 8) png[at++] = static_cast<char>(sum >> shift);
  }
}

// Small ones only: it is the reading that is tried, not the memory.
std::optional<marbelot::Bitmap> make(int width, int height) {
  constexpr int mostPixels = 1 << 20;
  if (std::int64_t{width} * height > mostPixels) return std::nullopt;
  return marbelot::Bitmap::make(width, height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string png(reinterpret_cast<const char*>(data), size);
  marbelot::decodePng(png, make);
  mendChecksums(png);
  marbelot::decodePng(png, make);
  return 0;
}
