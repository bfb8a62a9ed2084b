// Bytes of text that are ASCII, and nothing else: no locale, no Unicode. Bytes outside ASCII belong
// to none of the classes.
#pragma once

#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>

namespace marbelot {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool isLower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool isAlpha(char c) { return isLower(c) || isUpper(c); }
constexpr bool isAlnum(char c) { return isAlpha(c) || isDigit(c); }
constexpr bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }
constexpr char lower(char c) { return isUpper(c) ? static_cast<char>(c + 32) : c; }

// The byte at `at`, or '\0' behind the end.
constexpr char byteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? text[at] : '\0';
}

// The number that the text is, without a sign unless it is "-"; none when there is anything else in
// it, or it is out of bounds.
template <class Number>
std::optional<Number> wholeNumber(std::string_view text, int base = 10) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace marbelot
