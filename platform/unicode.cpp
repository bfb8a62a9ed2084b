// Scalars, their properties and case, from ICU's tables, with a short cut for ASCII.
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/text.h"
#include "platform/utf8.h"

namespace marbelot::text {
namespace {

constexpr char32_t replacement = 0xFFFD;
// ICU counts in int32_t; longer texts are handed over in pieces.
constexpr std::size_t largestPiece = std::size_t{1} << 30;

enum : std::uint8_t { letterBit = 1, numberBit = 2, lowerBit = 4, upperBit = 8 };

constexpr std::array<std::uint8_t, 128> asciiTable = [] {
  std::array<std::uint8_t, 128> table{};
  for (unsigned c = '0'; c <= '9'; ++c) table[c] = numberBit;
  for (unsigned c = 'a'; c <= 'z'; ++c) table[c] = letterBit | lowerBit;
  for (unsigned c = 'A'; c <= 'Z'; ++c) table[c] = letterBit | upperBit;
  return table;
}();

bool isAscii(char32_t c) { return c < 0x80; }

// Index of the first byte outside ASCII at or after `at`, eight bytes a step.
std::size_t asciiEnd(std::string_view text, std::size_t at) {
  while (text.size() - at >= sizeof(std::uint64_t)) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + at, sizeof word);
    if (word & 0x8080808080808080u) break;
    at += sizeof word;
  }
  while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) ++at;
  return at;
}

// Index of the first byte that belongs to no valid sequence, or the size.
std::size_t validEnd(std::string_view text) {
  std::size_t at = 0;
  while ((at = asciiEnd(text, at)) < text.size()) {
    while (at < text.size() && static_cast<unsigned char>(text[at]) >= 0x80) {
      std::size_t next = at;
      if (decode(text, next) < 0) return at;
      at = next;
    }
  }
  return at;
}

}  // namespace

Scalar scalarAt(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < 0x80) return {lead, 1};
  std::size_t next = at;
  const UChar32 c = decode(text, next);
  return {c < 0 ? replacement : static_cast<char32_t>(c), next - at};
}

Scalar scalarBefore(std::string_view text, std::size_t end) {
  const auto last = static_cast<unsigned char>(text[end - 1]);
  if (last < 0x80) return {last, 1};
  // No sequence is longer than four bytes, and ICU's index is an int32_t.
  const std::size_t window = std::min<std::size_t>(end, U8_MAX_LENGTH);
  const char* bytes = text.data() + (end - window);
  auto at = static_cast<std::int32_t>(window);
  UChar32 c;
  U8_PREV_OR_FFFD(bytes, 0, at, c);
  return {static_cast<char32_t>(c), window - static_cast<std::size_t>(at)};
}

void appendScalar(std::string& to, char32_t scalar) {
  if (isAscii(scalar)) {
    to += static_cast<char>(scalar);
    return;
  }
  if (scalar > 0x10FFFF || U_IS_SURROGATE(scalar)) scalar = replacement;
  char bytes[U8_MAX_LENGTH];
  std::size_t length = 0;
  U8_APPEND_UNSAFE(bytes, length, scalar);
  to.append(bytes, length);
}

bool isValid(std::string_view bytes) { return validEnd(bytes) == bytes.size(); }

std::string sanitized(std::string bytes) {
  const std::string_view text = bytes;
  const std::size_t valid = validEnd(text);
  if (valid == text.size()) return bytes;
  std::string result;
  result.reserve(text.size() + text.size() / 8);
  result.append(text, 0, valid);
  for (std::size_t at = valid; at < text.size();) {
    const std::size_t plain = asciiEnd(text, at);
    result.append(text, at, plain - at);
    at = plain;
    while (at < text.size() && static_cast<unsigned char>(text[at]) >= 0x80) {
      const Scalar scalar = scalarAt(text, at);
      appendScalar(result, scalar.value);
      at += scalar.bytes;
    }
  }
  return result;
}

std::string shownTitle(std::string_view title) {
  std::string shown;
  for (std::size_t at = 0; at < title.size();) {
    const Scalar scalar = scalarAt(title, at);
    const auto c = static_cast<UChar32>(scalar.value);
    at += scalar.bytes;
    if (u_hasBinaryProperty(c, UCHAR_BIDI_CONTROL)) continue;
    const bool acts = u_charType(c) == U_CONTROL_CHAR || c == 0x2028 || c == 0x2029;
    appendScalar(shown, acts ? U' ' : scalar.value);
  }
  return shown;
}

bool isLetter(char32_t c) {
  if (isAscii(c)) return asciiTable[c] & letterBit;
  return u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_ALPHABETIC);
}

bool isNumber(char32_t c) {
  if (isAscii(c)) return asciiTable[c] & numberBit;
  return u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_NUMERIC_TYPE) != U_NT_NONE;
}

bool isLowercase(char32_t c) {
  if (isAscii(c)) return asciiTable[c] & lowerBit;
  return u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_LOWERCASE);
}

bool isUppercase(char32_t c) {
  if (isAscii(c)) return asciiTable[c] & upperBit;
  return u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_UPPERCASE);
}

bool isDecimalDigit(char32_t c) {
  if (isAscii(c)) return c >= '0' && c <= '9';
  return u_charType(static_cast<UChar32>(c)) == U_DECIMAL_DIGIT_NUMBER;
}

bool isWordCharacter(char32_t c) {
  if (isAscii(c)) return (asciiTable[c] & (letterBit | numberBit)) || c == '_';
  constexpr char32_t nonJoiner = 0x200C, joiner = 0x200D;
  constexpr std::uint32_t categoryTable = U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK;
  return c == nonJoiner || c == joiner || isLetter(c) ||
         (U_GET_GC_MASK(static_cast<UChar32>(c)) & categoryTable);
}

WordRole wordRole(char32_t c) {
  const auto scalar = static_cast<UChar32>(c);
  const auto isA = [&](std::uint32_t categories) {
    return (U_MASK(u_charType(scalar)) & categories) != 0;
  };
  if (isA(U_GC_CF_MASK) || u_hasBinaryProperty(scalar, UCHAR_GRAPHEME_EXTEND)) {
    return WordRole::extender;
  }
  const bool word = isA(U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK) || u_isUAlphabetic(scalar);
  return word ? WordRole::word : WordRole::separator;
}

std::string lowercased(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  const std::size_t ascii = asciiEnd(text, 0);
  if (ascii == text.size()) {
    for (const char c : text) result += c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
    return result;
  }
  icu::StringByteSink<std::string> sink(&result);
  while (!text.empty()) {
    std::size_t length = text.size();
    if (length > largestPiece) {
      // What a sigma becomes depends on its word, and no word crosses a line break.
      const std::size_t lineBreak = text.rfind('\n', largestPiece - 1);
      length = lineBreak == std::string_view::npos ? largestPiece : lineBreak + 1;
      while (length > 1 && U8_IS_TRAIL(text[length])) --length;
    }
    UErrorCode error = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0, {text.data(), static_cast<std::int32_t>(length)}, sink,
                              nullptr, error);
    text.remove_prefix(length);
  }
  return result;
}

}  // namespace marbelot::text
