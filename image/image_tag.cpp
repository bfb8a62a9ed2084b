#include "image/image_tag.h"

#include <algorithm>
#include <cstdint>

#include "platform/image_codec.h"
#include "platform/image_header.h"

namespace marbelot {

std::string base64(std::string_view bytes) {
  constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out((bytes.size() + 2) / 3 * 4, '=');
  for (std::size_t at = 0, to = 0; at < bytes.size(); at += 3, to += 4) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i)
      group = group << 8 | (i < count ? static_cast<std::uint8_t>(bytes[at + i]) : 0u);
    for (std::size_t i = 0; i <= count; ++i) out[to + i] = alphabet[group >> (18 - 6 * i) & 63];
  }
  return out;
}

std::string imageTag(std::string_view png, int width, int height) {
  return "<img src=\"data:image/png;base64," + base64(png) + "\" width=\"" + std::to_string(width) +
         "\" height=\"" + std::to_string(height) + "\" alt=\"\">";
}

std::optional<std::string> imageTag(const Image& image) {
  const SharedBitmap pixels = decode(image);
  if (!pixels) return std::nullopt;
  const SharedBytes png = image.format() == ImageFormat::png ? image.bytes() : encodePng(*pixels);
  if (!png) return std::nullopt;
  // Of a picture with several pages the largest is told, whichever the tag shows.
  const SharedBytes pages = image.format() == ImageFormat::tiff ? image.bytes() : nullptr;
  const auto largest = pages ? largestPage(*pages) : std::nullopt;
  return imageTag(*png, std::max(pixels->width(), largest ? largest->width : 0),
                  std::max(pixels->height(), largest ? largest->height : 0));
}

}  // namespace marbelot
