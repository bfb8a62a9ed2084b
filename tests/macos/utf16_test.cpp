// The UTF-8 and UTF-16 code of the macOS backend is plain C++, so it runs everywhere; ICU says what
// is right.
#include "platform/macos/utf16.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <random>

#include "platform/text.h"

namespace marbelot {
namespace {

std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result);
}

icu::UnicodeString icuText(std::string_view text) {
  return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

void expectAsIcu(const std::string& bytes) {
  const auto size = static_cast<std::int32_t>(bytes.size());
  const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  SCOPED_TRACE(testing::PrintToString(bytes));
  for (std::int32_t at = 0; at < size; ++at) {
    std::int32_t next = at;
    UChar32 c;
    U8_NEXT_OR_FFFD(data, next, size, c);
    const text::Scalar scalar = text::scalarAt(bytes, static_cast<std::size_t>(at));
    ASSERT_EQ(scalar.value, static_cast<char32_t>(c)) << "at " << at;
    ASSERT_EQ(scalar.bytes, static_cast<std::size_t>(next - at)) << "at " << at;
    std::int32_t before = at + 1;
    U8_PREV_OR_FFFD(data, 0, before, c);
    const text::Scalar last = text::scalarBefore(bytes, static_cast<std::size_t>(at) + 1);
    ASSERT_EQ(last.value, static_cast<char32_t>(c)) << "before " << at + 1;
    ASSERT_EQ(last.bytes, static_cast<std::size_t>(at + 1 - before)) << "before " << at + 1;
  }
  const icu::UnicodeString expected = icuText(bytes);
  ASSERT_EQ(text::sanitized(bytes), utf8(expected));
  const std::u16string units = toUtf16(bytes);
  ASSERT_EQ(icu::UnicodeString(units.data(), static_cast<std::int32_t>(units.size())), expected);
}

TEST(MacosText, DecodesLikeIcuWhateverTheBytes) {
  // Every edge of the table of well-formed sequences.
  const std::string edges =
      "\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF1\xF3"
      "\xF4\xF5\xFF";
  for (const char a : edges)
    for (const char b : edges) expectAsIcu({a, b});
  std::mt19937 random(1);
  for (int i = 0; i < 50000; ++i) {
    std::string bytes(3 + random() % 6, '\0');
    for (char& byte : bytes) byte = edges[random() % edges.size()];
    ASSERT_NO_FATAL_FAILURE(expectAsIcu(bytes));
  }
}

TEST(MacosText, EveryScalarComesBack) {
  std::string all;
  for (char32_t c = 0; c <= 0x10FFFF; ++c)
    if (!U_IS_SURROGATE(c)) text::appendScalar(all, c);
  EXPECT_EQ(fromUtf16(toUtf16(all)), all);
  EXPECT_EQ(toUtf16(all).size(), static_cast<std::size_t>(icuText(all).length()));
  for (const char32_t bad : {0xD800u, 0xDFFFu, 0x110000u}) {
    std::string one;
    text::appendScalar(one, bad);
    EXPECT_EQ(one, "\uFFFD");
  }
  EXPECT_EQ(fromUtf16(u"a\xD83Dz\xDE00"), "a\uFFFDz\uFFFD") << "halves of a pair";
}

TEST(MacosText, BlanksAreThoseOfUnicode) {
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    const auto icu = static_cast<UChar32>(c);
    ASSERT_EQ(text::isBlank(c), c == '\t' || u_charType(icu) == U_SPACE_SEPARATOR) << icu;
    ASSERT_EQ(text::isBlankOrNewline(c), text::isBlank(c) || u_isUWhiteSpace(icu)) << icu;
  }
  EXPECT_EQ(text::trimmedBlanks(" \t\u3000a b\n \u2003"), "a b\n");
  EXPECT_EQ(text::trimmedBlanksAndNewlines("\r\n\u2028a b\u0085 \n"), "a b");
  EXPECT_EQ(text::trimmedBlanksAndNewlines(" \n\t"), "");
}

TEST(MacosText, OffsetsPointAtTheBytesOfAUnit) {
  const std::string mixed = "a\u00E9\u20AC\U0001F600\xFFz";  // 1, 2, 3, 4 and 1 bytes, and a z
  Utf16Offsets offsets(mixed);
  const std::size_t expected[] = {0, 1, 3, 6, 10, 10, 11, 12, 12};
  for (std::size_t unit = 0; unit < std::size(expected); ++unit)
    EXPECT_EQ(offsets.bytesAt(unit), expected[unit]) << unit;
  EXPECT_EQ(offsets.bytesAt(2), 3u) << "backwards";
}

}  // namespace
}  // namespace marbelot
