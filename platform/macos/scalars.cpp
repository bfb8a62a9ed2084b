// The part of the text services that needs nothing of the system: UTF-8 and the fixed sets.
#include <algorithm>
#include <utility>

#include "platform/text.h"

namespace marbelot::text {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isTrail(unsigned char byte) { return (byte & 0xC0) == 0x80; }

struct Lead {
  std::size_t bytes;  // 0: no lead byte
  unsigned char low;  // bounds of the second byte
  unsigned char high;
};

// Well-formed UTF-8 byte sequences: The Unicode Standard, table 3-7.
Lead leadOf(unsigned char byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, 0xBF};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {3, 0x80, 0xBF};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {4, 0x80, 0xBF};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

// Like scalarAt, and says whether the sequence was valid: U+FFFD itself may be.
std::pair<Scalar, bool> decode(std::string_view text, std::size_t at) {
  const auto first = static_cast<unsigned char>(text[at]);
  if (first < 0x80) return {{first, 1}, true};
  const Lead lead = leadOf(first);
  if (lead.bytes == 0) return {{kReplacement, 1}, false};
  char32_t value = first & (0x7Fu >> lead.bytes);
  for (std::size_t i = 1; i < lead.bytes; ++i) {
    const auto byte = at + i < text.size() ? static_cast<unsigned char>(text[at + i])
                                           : static_cast<unsigned char>(0);
    const bool fits = i == 1 ? byte >= lead.low && byte <= lead.high : isTrail(byte);
    if (!fits) return {{kReplacement, i}, false};
    value = value << 6 | (byte & 0x3Fu);
  }
  return {{value, lead.bytes}, true};
}

}  // namespace

Scalar scalarAt(std::string_view text, std::size_t at) { return decode(text, at).first; }

Scalar scalarBefore(std::string_view text, std::size_t end) {
  const std::string_view before = text.substr(0, end);
  const std::size_t longest = std::min<std::size_t>(end, 4);
  for (std::size_t bytes = 1; bytes <= longest; ++bytes) {
    if (isTrail(static_cast<unsigned char>(before[end - bytes]))) continue;
    const Scalar scalar = scalarAt(before, end - bytes);
    if (scalar.bytes == bytes) return scalar;
    break;
  }
  return {kReplacement, 1};
}

void appendScalar(std::string& to, char32_t scalar) {
  if (scalar > 0x10FFFF || (scalar >= 0xD800 && scalar <= 0xDFFF)) scalar = kReplacement;
  const auto put = [&to](char32_t byte) { to += static_cast<char>(byte); };
  const auto trail = [&](unsigned shift) { put(0x80 | (scalar >> shift & 0x3F)); };
  if (scalar < 0x80) {
    put(scalar);
  } else if (scalar < 0x800) {
    put(0xC0 | scalar >> 6);
    trail(0);
  } else if (scalar < 0x10000) {
    put(0xE0 | scalar >> 12);
    trail(6);
    trail(0);
  } else {
    put(0xF0 | scalar >> 18);
    trail(12);
    trail(6);
    trail(0);
  }
}

std::string sanitized(std::string bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const auto [scalar, valid] = decode(bytes, at);
    if (!valid) break;
    at += scalar.bytes;
  }
  if (at == bytes.size()) return bytes;
  std::string result(bytes, 0, at);
  while (at < bytes.size()) {
    const Scalar scalar = scalarAt(bytes, at);
    appendScalar(result, scalar.value);
    at += scalar.bytes;
  }
  return result;
}

}  // namespace marbelot::text
