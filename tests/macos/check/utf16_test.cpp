// The UTF-16 code of the macOS backend is plain C++, so it runs everywhere; ICU says what is right.
#include "platform/macos/utf16.h"

#include <gtest/gtest.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <random>

#include "platform/text.h"

namespace marbelot {
namespace {

icu::UnicodeString icuText(std::string_view text) {
  return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

void expectAsIcu(const std::string& bytes) {
  SCOPED_TRACE(testing::PrintToString(bytes));
  const icu::UnicodeString expected = icuText(bytes);
  const std::u16string units = toUtf16(bytes);
  ASSERT_EQ(icu::UnicodeString(units.data(), static_cast<std::int32_t>(units.size())), expected);
}

TEST(MacosText, ConvertsLikeIcuWhateverTheBytes) {
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
  EXPECT_EQ(fromUtf16(u"a\xD83Dz\xDE00"), "a\uFFFDz\uFFFD") << "halves of a pair";
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
