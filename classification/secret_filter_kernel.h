// The loop of the filter, included once per instruction set. It is written with the vector types of
// GCC and Clang, so the same text becomes SSE2, AVX2 or NEON. Everything here has internal linkage
// and no library function is called: code made for one processor must not be shared with another.
#pragma once

#include "classification/secret_filter.h"

namespace marbelot::secret_filter {
namespace {

#ifdef __AVX2__
constexpr std::size_t laneBytes = 32;
#else
constexpr std::size_t laneBytes = 16;
#endif
constexpr std::size_t lanes = stepBytes / laneBytes;
// An anchor looks two bytes beyond the byte that it begins at.
constexpr std::size_t readBytes = stepBytes + 2;

using Bytes [[gnu::vector_size(laneBytes)]] = char;
using Words [[gnu::vector_size(laneBytes)]] = unsigned long long;

inline Bytes loadBytes(const char* at) {
  Bytes bytes;
  __builtin_memcpy(&bytes, at, sizeof bytes);
  return bytes;
}

inline std::uint64_t loadWord(const void* at) {
  std::uint64_t word;
  __builtin_memcpy(&word, at, sizeof word);
  return word;
}

inline bool anySet(Words mask) {
  std::uint64_t all = 0;
  for (std::size_t i = 0; i < laneBytes / 8; ++i) all |= mask[i];
  return all != 0;
}

// One bit per byte of a mask whose bytes are 0x00 or 0xFF: the product moves the lowest bits of the
// eight bytes of a word side by side into its top byte.
inline std::uint64_t bitPerByte(const void* mask) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < stepBytes / 8; ++i) {
    const std::uint64_t word = loadWord(static_cast<const char*>(mask) + 8 * i);
    bits |= ((word & 0x0101010101010101) * 0x0102040810204080 >> 56) << (8 * i);
  }
  return bits;
}

// Whether all of the eight bytes are hexadecimal digits. A byte plus what it takes to reach a
// character has its top bit set if it does reach it; no sum of ASCII bytes carries into the next.
inline bool isHex(const char* at) {
  constexpr std::uint64_t each = 0x0101010101010101;
  constexpr auto toReach = [](int c) { return each * static_cast<std::uint64_t>(0x80 - c); };
  const std::uint64_t bytes = loadWord(at);
  const std::uint64_t lower = bytes | each * 0x20;
  const std::uint64_t digits = (bytes + toReach('0')) & ~(bytes + toReach('9' + 1));
  const std::uint64_t letters = (lower + toReach('a')) & ~(lower + toReach('f' + 1));
  return ((digits | letters) & ~bytes & each * 0x80) == each * 0x80;
}

// Looks at one step; reads readBytes from `at`. Inlined, so that the loop keeps its constants in
// registers.
[[gnu::always_inline]] inline bool inspect(const char* at, Step& step) {
  Words found[lanes];
  Words any{};
#pragma GCC unroll 4
  for (std::size_t i = 0; i < lanes; ++i) {
    const char* lane = at + i * laneBytes;
    found[i] = (Words)isAnchor(loadBytes(lane), loadBytes(lane + 1), loadBytes(lane + 2));
    any |= found[i];
  }
  step.hexSamples = static_cast<std::uint32_t>(isHex(at)) |
                    static_cast<std::uint32_t>(isHex(at + hexStride)) << 1;
  if (!anySet(any)) {
    step.anchors = 0;
    return step.hexSamples != 0;
  }
  step.anchors = bitPerByte(found);
  return true;
}

inline Step scan(const char* text, std::size_t size, std::size_t from) {
  Step step;
  for (step.at = from; step.at + readBytes <= size; step.at += stepBytes) {
    if (inspect(text + step.at, step)) return step;
  }
  if (step.at < size) {
    // What is left is at most one byte longer than a step, and no anchor is that short.
    char padded[readBytes] = {};
    __builtin_memcpy(padded, text + step.at, size - step.at);
    if (inspect(padded, step)) return step;
  }
  step.at = size;
  return step;
}

}  // namespace
}  // namespace marbelot::secret_filter
