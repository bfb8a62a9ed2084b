// The macOS backend's own part of counting characters, with ICU in the place of Foundation.
#include "platform/macos/clusters.h"

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <memory>
#include <random>

#include "platform/macos/character_properties.h"
#include "platform/text.h"

namespace marbelot {
namespace {

std::vector<std::size_t> characterEnds(const icu::UnicodeString& text) {
  UErrorCode error = U_ZERO_ERROR;
  static const std::unique_ptr<icu::BreakIterator> iterator(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
  iterator->setText(text);
  std::vector<std::size_t> ends;
  while (iterator->next() != icu::BreakIterator::DONE)
    ends.push_back(static_cast<std::size_t>(iterator->current()));
  return ends;
}

icu::UnicodeString icuText(std::string_view text) {
  return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

std::size_t bytesOf(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result).size();
}

}  // namespace

bool hasProperty(char32_t scalar, CharacterProperty property) {
  switch (u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_CONTROL:
    case U_GCB_CR:
    case U_GCB_LF:
      return property == kControl;
    case U_GCB_OTHER:
    case U_GCB_LV:
    case U_GCB_LVT:
      return property == kBase;
    default:
      return false;
  }
}

// Like Foundation it must not be asked about controls.
std::vector<std::size_t> composedEnds(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); at += text::scalarAt(text, at).bytes)
    EXPECT_FALSE(hasProperty(text::scalarAt(text, at).value, kControl));
  return characterEnds(icuText(text));
}

namespace {

TEST(MacosClusters, CountsCutsAndEndsLikeIcu) {
  const std::string pieces[] = {
      "a",      "b c",        "\r",         "\n",         "\r\n",       "\t",     "\u0301",
      "\u200D", "\u0903",     "\u0600",     "\u00E9",     "\u6F22",     "\uD55C", "\u1100",
      "\u1161", "\u11A8",     "\u0915",     "\u094D",     "\u00AD",     "\u2028", "\u0E33",
      "\uFE0F", "\U0001F469", "\U0001F3FD", "\U0001F1E9", "\U0001F1EA",
  };
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string sample;
    for (auto n = random() % 14; n > 0; --n) sample += pieces[random() % std::size(pieces)];
    SCOPED_TRACE(testing::PrintToString(sample));
    const icu::UnicodeString units = icuText(sample);
    std::vector<std::size_t> cuts = {0};
    for (const std::size_t end : characterEnds(units))
      cuts.push_back(bytesOf(units.tempSubString(0, static_cast<std::int32_t>(end))));
    const std::size_t count = cuts.size() - 1;
    ASSERT_EQ(text::characterCount(sample), count);
    for (std::size_t n = 0; n <= count + 1; ++n) {
      ASSERT_EQ(text::prefixBytes(sample, n), cuts[std::min(n, count)]) << n;
      ASSERT_EQ(text::suffixBytes(sample, n), sample.size() - cuts[count - std::min(n, count)])
          << n;
    }
  }
}

}  // namespace
}  // namespace marbelot
