#include "platform/linux/raw_picture.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace marbelot {
namespace {

constexpr std::size_t headersBytes = 54;

std::uint32_t word(std::string_view bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (int i = 3; i >= 0; --i)
    value = value << 8 | static_cast<std::uint8_t>(bytes[at + static_cast<std::size_t>(i)]);
  return value;
}

// From blue, green and red; `step` bytes a pixel.
void convert(const char* from, std::size_t step, std::uint8_t* to, int pixels) {
  for (int x = 0; x < pixels; ++x, from += step, to += Bitmap::pixelBytes) {
    to[0] = static_cast<std::uint8_t>(from[2]);
    to[1] = static_cast<std::uint8_t>(from[1]);
    to[2] = static_cast<std::uint8_t>(from[0]);
    to[3] = 255;
  }
}

// Without comments, which such tools do not write.
std::optional<Bitmap> portablePixmap(std::string_view bytes) {
  std::size_t at = 2;
  const auto number = [&] {
    at = std::min(bytes.find_first_not_of(" \n", at), bytes.size());
    int value = 0;
    const char* const end = bytes.data() + bytes.size();
    at =
        static_cast<std::size_t>(std::from_chars(bytes.data() + at, end, value).ptr - bytes.data());
    return value;
  };
  const int width = number(), height = number(), most = number();
  ++at;  // the one blank behind the numbers
  if (most != 255 || !Bitmap::fits(width, height)) return std::nullopt;
  const std::size_t rowBytes = static_cast<std::size_t>(width) * 3;
  if (at > bytes.size() || (bytes.size() - at) / rowBytes < static_cast<std::size_t>(height))
    return std::nullopt;
  auto bitmap = Bitmap::make(width, height);
  if (!bitmap) return std::nullopt;
  for (int y = 0; y < height; ++y) {
    const char* from = bytes.data() + at + static_cast<std::size_t>(y) * rowBytes;
    std::uint8_t* to = bitmap->row(y);
    for (int x = 0; x < width; ++x, from += 3, to += Bitmap::pixelBytes) {
      std::memcpy(to, from, 3);
      to[3] = 255;
    }
  }
  return bitmap;
}

}  // namespace

std::optional<Bitmap> rawPicture(std::string_view bytes) {
  if (bytes.starts_with("P6")) return portablePixmap(bytes);
  if (bytes.size() < headersBytes || !bytes.starts_with("BM")) return std::nullopt;
  const std::size_t start = word(bytes, 10);
  const auto width = static_cast<std::int32_t>(word(bytes, 18));
  const auto signedHeight = static_cast<std::int32_t>(word(bytes, 22));
  const std::size_t bits = word(bytes, 28) & 0xFFFF;
  const bool compressed = word(bytes, 30) != 0;
  // Rows stand from the bottom to the top unless the height says otherwise.
  const bool isTopFirst = signedHeight < 0;
  const std::int64_t height = isTopFirst ? -std::int64_t{signedHeight} : signedHeight;
  if (compressed || (bits != 24 && bits != 32) || !Bitmap::fits(width, height) ||
      start > bytes.size())
    return std::nullopt;
  const std::size_t step = bits / 8;
  const std::size_t rowBytes = (static_cast<std::size_t>(width) * step + 3) / 4 * 4;
  if ((bytes.size() - start) / rowBytes < static_cast<std::size_t>(height)) return std::nullopt;
  auto bitmap = Bitmap::make(width, height);
  if (!bitmap) return std::nullopt;
  for (std::int64_t y = 0; y < height; ++y) {
    const std::int64_t row = isTopFirst ? y : height - 1 - y;
    convert(bytes.data() + start + static_cast<std::size_t>(y) * rowBytes, step,
            bitmap->row(static_cast<int>(row)), width);
  }
  return bitmap;
}

}  // namespace marbelot
