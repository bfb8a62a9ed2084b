// Blanks: the Unicode space separators and the tab; with them the line breaks where so said.
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

// The edges of most texts are ASCII and decided without a call: this runs once per line.
template <bool (*trims)(char32_t)>
std::string_view trimmed(std::string_view text) {
  while (!text.empty()) {
    const auto lead = static_cast<unsigned char>(text.front());
    const Scalar first = lead < 0x80 ? Scalar{lead, 1} : scalarAt(text, 0);
    if (!trims(first.value)) break;
    text.remove_prefix(first.bytes);
  }
  while (!text.empty()) {
    const auto end = static_cast<unsigned char>(text.back());
    const Scalar last = end < 0x80 ? Scalar{end, 1} : scalarBefore(text, text.size());
    if (!trims(last.value)) break;
    text.remove_suffix(last.bytes);
  }
  return text;
}

}  // namespace

bool isBlank(char32_t c) {
  if (c < 0x80) return c == ' ' || c == '\t';
  // All of Zs, so that a blank costs no table; the tests hold it against ICU.
  return c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

bool isBlankOrNewline(char32_t c) {
  return isBlank(c) || (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

std::string_view trimmedBlanks(std::string_view text) { return trimmed<isBlank>(text); }

std::string_view trimmedBlanksAndNewlines(std::string_view text) {
  return trimmed<isBlankOrNewline>(text);
}

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
