// Conformance of the text services: hand-picked characters, and agreement with ICU's own break
// iterator and property data on everything that can be enumerated or drawn at random.
#include "platform/text.h"

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/rows.h"

namespace marbelot {
namespace {

using namespace std::string_literals;

// Every boundary that ICU sees, 0 and the size included.
std::vector<std::size_t> boundariesByIcu(std::string_view sample) {
  static UErrorCode error = U_ZERO_ERROR;
  static const std::unique_ptr<icu::BreakIterator> iterator(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
  UText bytes = UTEXT_INITIALIZER;
  utext_openUTF8(&bytes, sample.data(), static_cast<std::int64_t>(sample.size()), &error);
  iterator->setText(&bytes, error);
  EXPECT_TRUE(U_SUCCESS(error));
  std::vector<std::size_t> boundaries;
  for (int at = iterator->first(); at != icu::BreakIterator::DONE; at = iterator->next()) {
    boundaries.push_back(static_cast<std::size_t>(at));
  }
  utext_close(&bytes);
  return boundaries;
}

std::string hex(std::string_view sample) {
  std::string result;
  for (const char c : sample) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(c));
    result += digits;
  }
  return result;
}

void expectAgreement(const std::string& sample) {
  const std::vector<std::size_t> expected = boundariesByIcu(sample);
  const std::size_t count = expected.size() - 1;
  ASSERT_EQ(text::characterCount(sample), count) << hex(sample);
  for (std::size_t n = 0; n <= count + 1; ++n) {
    const std::size_t whole = std::min(n, count);
    ASSERT_EQ(text::prefixBytes(sample, n), expected[whole]) << n << " of " << hex(sample);
    ASSERT_EQ(text::suffixBytes(sample, n), sample.size() - expected[count - whole])
        << n << " of " << hex(sample);
  }
}

TEST(Characters, CountsWhatTheUserSees) {
  for (const Row& row : rowsOf("text/texts.tsv", "characters")) {
    EXPECT_EQ(text::characterCount(row[1]), std::stoul(row[0])) << row;
    expectAgreement(row[1]);
  }
}

TEST(Characters, EveryScalarNextToEveryKindAgreesWithIcu) {
  const std::string neighbours[] = {
      "a",      "\r",     "\n",     "\u0301",       "\u200D", "\u0903", "\u0600",
      "\u1100", "\u1161", "\u11A8", "\uAC00",       "\uAC01", "😀",      "😀\u200D",
      "🇩",      "\u0915", "\u0915", "\u0915\u094D", "\u0915"};
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    if (c >= 0xD800 && c < 0xE000) c = 0xE000;
    if (!u_isdefined(static_cast<UChar32>(c))) continue;
    // Ideographs and syllables by the ten thousand behave as their first ones do.
    if (c > 0x20 && (c & 0xFF) > 3 && u_isIDPart(static_cast<UChar32>(c)) && c > 0x3400 &&
        u_charType(static_cast<UChar32>(c)) == U_OTHER_LETTER) {
      continue;
    }
    std::string sample;
    for (const std::string& neighbour : neighbours) {
      sample += neighbour;
      text::appendScalar(sample, c);
    }
    const std::size_t expected = boundariesByIcu(sample).size() - 1;
    ASSERT_EQ(text::characterCount(sample), expected) << std::hex << static_cast<unsigned>(c);
  }
}

// Texts made of what joins, with runs of ASCII long enough for the fast path, and raw bytes.
TEST(Characters, RandomTextsAgreeWithIcu) {
  const std::string run(70, 'x'), crossing = std::string(63, 'y') + "\r\n" + run;
  // clang-format off
  const std::string pieces[] = {
      run, crossing, "a", "b c", "\r", "\n", "\r\n", "\u0301", "\u0308", "\u200D", "\u0903",
      "\u0600", "é", "ß", "漢", "한", "\u1100", "\u1161", "\u11A8", "😀", "👩", "\uFE0F", "🇩", "🇪",
      "\u0915", "\u094D", "\u0995", "\u09CD", "\u0C95", "\u0CCD", "🏽", "\u093C", "\u0937",
      "\u3000", "\u00AD", "\u0E33", "\x80", "\xC3", "\xE2\x82", "\xF0\x9F", "\xED\xA0\x80",
      "\xFF",
  };
  // clang-format on
  std::mt19937 random(20240229);
  for (int round = 0; round < 20000; ++round) {
    std::string sample;
    for (unsigned n = random() % 16; n > 0; --n) sample += pieces[random() % std::size(pieces)];
    ASSERT_NO_FATAL_FAILURE(expectAgreement(sample));
  }
}

TEST(Characters, LongClustersAndManyThreads) {
  std::string marks = "a";
  for (int i = 0; i < 100000; ++i) marks += "\u0301";
  std::string family = "👩";
  for (int i = 0; i < 100000; ++i) family += "\u200D👩";
  std::string flags;
  for (int i = 0; i < 100000; ++i) flags += "🇩";
  const auto check = [&] {
    EXPECT_EQ(text::characterCount(marks), 1u);
    EXPECT_EQ(text::characterCount(family), 1u);
    EXPECT_EQ(text::characterCount(flags), 50000u);
    EXPECT_EQ(text::prefixBytes(flags + "x", 3), 24u);
    EXPECT_EQ(text::suffixBytes("x" + flags, 3), 24u);
  };
  std::thread other(check);
  check();
  other.join();
}

TEST(Scalars, DecodeBothWaysAndSanitise) {
  for (const Row& row : rowsOf("text/texts.tsv", "scalars")) {
    const std::string bytes = row[0], sane = row[1];
    EXPECT_EQ(text::sanitized(bytes), sane) << row;
    std::string forwards;
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at < bytes.size();) {
      const text::Scalar scalar = text::scalarAt(bytes, at);
      text::appendScalar(forwards, scalar.value);
      starts.push_back(at);
      at += scalar.bytes;
    }
    EXPECT_EQ(forwards, sane) << hex(bytes);
    for (std::size_t end = bytes.size(); end > 0; starts.pop_back()) {
      end -= text::scalarBefore(bytes, end).bytes;
      ASSERT_EQ(end, starts.back()) << hex(bytes);
    }
  }
  std::string large(1 << 20, 'x');
  const char* const bytes = large.data();
  EXPECT_EQ(text::sanitized(std::move(large)).data(), bytes) << "valid text is not copied";
  std::string written;
  text::appendScalar(written, 0xD800);
  text::appendScalar(written, 0x110000);
  EXPECT_EQ(written, "\uFFFD\uFFFD");
}

TEST(Properties, AgreeWithUnicodeData) {
  for (char32_t c = 0; c <= 0x110000; ++c) {
    const auto point = static_cast<UChar32>(c);
    ASSERT_EQ(text::isLetter(c), !!u_isUAlphabetic(point)) << std::hex << point;
    ASSERT_EQ(text::isLowercase(c), !!u_isULowercase(point)) << std::hex << point;
    ASSERT_EQ(text::isUppercase(c), !!u_isUUppercase(point)) << std::hex << point;
    ASSERT_EQ(text::isNumber(c), u_getNumericValue(point) != U_NO_NUMERIC_VALUE)
        << std::hex << point;
    const bool blank = u_charType(point) == U_SPACE_SEPARATOR || c == '\t';
    ASSERT_EQ(text::isBlank(c), blank) << std::hex << point;
    const bool newline = (c >= 10 && c <= 13) || c == 0x85 || c == 0x2028 || c == 0x2029;
    ASSERT_EQ(text::isBlankOrNewline(c), blank || newline) << std::hex << point;
  }
  EXPECT_TRUE(text::isNumber(U'一') && text::isNumber(U'½') && text::isNumber(U'٣'));
}

TEST(Text, TrimsLowersAndCompares) {
  EXPECT_EQ(text::trimmedBlanks("\u00A0\t x y\u3000 "), "x y");
  EXPECT_EQ(text::trimmedBlanks(" \n "), "\n");
  EXPECT_EQ(text::trimmedBlanksAndNewlines("\r\n\u2028 x\u0085\n"), "x");
  EXPECT_EQ(text::trimmedBlanksAndNewlines(" \n\u3000"), "");
  EXPECT_EQ(text::trimmedBlanks("\x80 \xA0"), "\x80 \xA0");
  EXPECT_EQ(text::lowercased("HELLO [World]"), "hello [world]");
  EXPECT_EQ(text::lowercased("ÀÉ İ ΟΔΟΣ"), "àé i̇ οδος");
  EXPECT_EQ(text::localizedCompare("ABC", "abc"), std::weak_ordering::equivalent);
  EXPECT_EQ(text::localizedCompare("apple", "Banana"), std::weak_ordering::less);
  EXPECT_EQ(text::localizedCompare("ž", "z"), std::weak_ordering::greater);
  EXPECT_NE(text::localizedCompare("resume", "résumé"), std::weak_ordering::equivalent);
}

TEST(Time, StampsAreLocalAndAlwaysTheSameWidth) {
  const char* const before = std::getenv("TZ");
  const std::string zone = before ? before : "";
  for (const Row& row : rowsOf("text/texts.tsv", "stamps")) {
    setenv("TZ", row[0].c_str(), 1);
    EXPECT_EQ(text::fileTimestamp(std::stod(row[1])), row[2]) << row;
  }
  before ? setenv("TZ", zone.c_str(), 1) : unsetenv("TZ");
  EXPECT_GT(text::now(), 1.6e9);
}

}  // namespace
}  // namespace marbelot
