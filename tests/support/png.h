// Small PNG files, white all over.
#pragma once

#include <string>

#include "platform/value.h"

namespace marbelot {

// A PNG of the width (up to 25,000) and a height of 20 pixels, padded to at least `bytes` with a
// chunk that says nothing.
inline SharedBytes png(unsigned width, std::size_t bytes = 0) {
  std::string out("\x89PNG\r\n\x1a\n", 8);
  const auto number = [](std::size_t value) {
    std::string big(4, '\0');
    for (int i = 0; i < 4; ++i) big[static_cast<std::size_t>(i)] = char(value >> (24 - 8 * i));
    return big;
  };
  const auto chunk = [&](const std::string& type, const std::string& body) {
    unsigned crc = ~0u;
    for (const char c : type + body) {
      crc ^= static_cast<unsigned char>(c);
      for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0);
    }
    out += number(body.size()) + type + body + number(~crc);
  };
  constexpr unsigned height = 20;
  std::string rows;  // of one bit for each pixel
  for (unsigned y = 0; y < height; ++y) rows += '\0' + std::string((width + 7) / 8, '\xFF');
  const auto low = static_cast<char>(rows.size()), high = static_cast<char>(rows.size() >> 8);
  unsigned a = 1, b = 0;
  for (const char c : rows) {
    a = (a + static_cast<unsigned char>(c)) % 65521;
    b = (b + a) % 65521;
  }
  // One block, not compressed.
  const std::string block{
      '\x78', '\x01', '\x01', low, high, static_cast<char>(~low), static_cast<char>(~high)};
  chunk("IHDR", number(width) + number(height) + std::string("\x01\0\0\0\0", 5));
  if (bytes > 0) chunk("teSt", std::string(bytes, 'x'));
  chunk("IDAT", block + rows + number(std::size_t{b} << 16 | a));
  chunk("IEND", "");
  return share(out);
}

}  // namespace marbelot
