// PNG files for tests that never decode one.
#pragma once

#include <string>

#include "platform/value.h"

namespace marbelot {

// A PNG of the width and a height of 20 pixels, padded to at least `bytes` with a chunk that says
// nothing. Its pixels are not there.
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
  chunk("IHDR", number(width) + number(20) + std::string("\x08\x06\0\0\0", 5));
  if (bytes > 0) chunk("teSt", std::string(bytes, 'x'));
  chunk("IDAT", std::string("\x78\x9c\x03\0\0\0\0\x01", 8));
  chunk("IEND", "");
  return share(out);
}

}  // namespace marbelot
