// Text services: what Unicode says about characters, the same on every system; comparison in the
// user's language, and time stamps. Stateless and safe to call from any thread. All text is UTF-8;
// each invalid sequence (its longest valid start, else one byte) counts as one U+FFFD, in every
// function here alike.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace marbelot {

// A half-open piece of a text, in bytes.
struct Range {
  std::size_t start = 0;
  std::size_t length = 0;
  std::size_t end() const { return start + length; }
  bool operator==(const Range&) const = default;
};

namespace text {

// Whether the byte goes on with a scalar that began before it.
inline bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// One decoded scalar and the bytes it took (at least 1).
struct Scalar {
  char32_t value;
  std::size_t bytes;
};

// Decodes the scalar at `at` (must be < text.size()); an invalid sequence gives U+FFFD.
Scalar scalarAt(std::string_view text, std::size_t at);
// Decodes the scalar that ends just before `end` (must be > 0).
Scalar scalarBefore(std::string_view text, std::size_t end);
void appendScalar(std::string& to, char32_t scalar);

bool isValid(std::string_view bytes);
// Valid UTF-8 whatever came in: every invalid sequence and lone surrogate becomes U+FFFD.
std::string sanitized(std::string bytes);

// A title as it is shown, in a menu or on a terminal: control characters and line separators, which
// would be acted upon, as one blank each; without marks of direction, which would make it read as
// another one.
std::string shownTitle(std::string_view title);

// Unicode properties: Alphabetic, Numeric_Type other than None, Lowercase, Uppercase.
bool isLetter(char32_t c);
bool isNumber(char32_t c);
bool isLowercase(char32_t c);
bool isUppercase(char32_t c);
// What \d and \w match in a regular expression: category Nd; and letters, marks, Nd, connector
// punctuation and the two zero-width joiners (UTS #18, annex C).
bool isDecimalDigit(char32_t c);
bool isWordCharacter(char32_t c);
// Category Zs and the tab: blanks inside a line.
bool isBlank(char32_t c);
// isBlank, and U+000A–U+000D, U+0085, U+2028, U+2029.
bool isBlankOrNewline(char32_t c);

// The part that a scalar plays in the \b of a regular expression (UTS #18, as ICU has it when not
// asked for UREGEX_UWORD): there is a boundary between a word and a separator, and an extender
// (a combining mark or a format character) belongs to whatever stands before it.
enum class WordRole { separator, word, extender };
WordRole wordRole(char32_t c);

// Nothing but blanks and line ends. Quick on a hundred million of them, where trimming, which
// decodes each, is not.
bool isAllBlank(std::string_view text);

std::string_view trimmedBlanks(std::string_view text);
std::string_view trimmedBlanksAndNewlines(std::string_view text);

// Characters as a user counts them: extended grapheme clusters (UAX #29).
std::size_t characterCount(std::string_view text);
// Bytes of the first (last) `count` characters, or the whole size when there are fewer. They look
// no further than they must, so a small count is cheap on a text of any size.
std::size_t prefixBytes(std::string_view text, std::size_t count);
std::size_t suffixBytes(std::string_view text, std::size_t count);

// Full Unicode lower-casing in no particular language.
std::string lowercased(std::string_view text);

// Case-insensitive comparison in the user's language.
std::weak_ordering localizedCompare(std::string_view a, std::string_view b);

// "yyyy-MM-dd 'at' HH.mm.ss" in local time; the stamp of every generated file name.
// `seconds` since 1970-01-01 00:00 UTC.
std::string fileTimestamp(double seconds);

// The wall clock: seconds since 1970-01-01 00:00 UTC.
double now();

}  // namespace text
}  // namespace marbelot
