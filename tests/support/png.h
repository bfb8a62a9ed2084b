// PNG files, chunk by chunk, and small ones that are white all over.
#pragma once

#include <string>

#include "platform/value.h"

namespace marbelot {

inline std::string big(std::size_t value, int bytes = 4) {
  std::string text;
  for (int i = bytes; i-- > 0;) text += static_cast<char>(value >> (8 * i));
  return text;
}

inline std::string chunk(const std::string& type, const std::string& data) {
  unsigned crc = ~0u;
  for (const char c : type + data) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0);
  }
  return big(data.size()) + type + data + big(~crc);
}

// Compressed without compressing: stored blocks.
inline std::string stored(const std::string& data) {
  std::string out = "\x78\x01";
  unsigned low = 1, high = 0;
  for (const char c : data) {
    low = (low + static_cast<unsigned char>(c)) % 65521;
    high = (high + low) % 65521;
  }
  for (std::size_t at = 0; at < data.size() || at == 0; at += 50000) {
    const std::string part = data.substr(at, 50000);
    out += static_cast<char>(at + part.size() >= data.size());
    for (const std::size_t length : {part.size(), ~part.size()})
      out += {static_cast<char>(length), static_cast<char>(length >> 8)};
    out += part;
  }
  return out + big(std::size_t{high} << 16 | low);
}

// A PNG of the width and a height of 20 pixels, padded to at least `bytes` with a chunk that says
// nothing.
inline SharedBytes png(unsigned width, std::size_t bytes = 0) {
  constexpr unsigned height = 20;
  std::string rows;  // of one bit for each pixel
  for (unsigned y = 0; y < height; ++y) rows += '\0' + std::string((width + 7) / 8, '\xFF');
  return share("\x89PNG\r\n\x1a\n" +
               chunk("IHDR", big(width) + big(height) + std::string("\x01\0\0\0\0", 5)) +
               (bytes > 0 ? chunk("teSt", std::string(bytes, 'x')) : "") +
               chunk("IDAT", stored(rows)) + chunk("IEND", ""));
}

}  // namespace marbelot
