#include "platform/text.h"

namespace marbelot::text {
namespace {

// How many bytes at the beginning are ASCII blanks. The inner loop has no exit and a fixed length,
// which lets the compiler look at sixteen bytes at once.
std::size_t leadingBlanks(std::string_view text) {
  const auto blank = [](char c) { return (c == ' ') | (static_cast<unsigned char>(c - '\t') < 5); };
  constexpr std::size_t block = 64;
  std::size_t at = 0;
  for (; at + block <= text.size(); at += block) {
    unsigned char others = 0;
    for (std::size_t i = 0; i < block; ++i)
      others = static_cast<unsigned char>(others | !blank(text[at + i]));
    if (others) break;
  }
  while (at < text.size() && blank(text[at])) ++at;
  return at;
}

}  // namespace

bool isAllBlank(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t blanks = leadingBlanks(text.substr(at)); blanks > 0) {
      at += blanks;
      continue;
    }
    const auto [value, bytes] = scalarAt(text, at);
    if (!isBlankOrNewline(value)) return false;
    at += bytes;
  }
  return true;
}

}  // namespace marbelot::text
