#include "classification/secret_scanner.h"

#include <gtest/gtest.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "classification/classifier.h"
#include "platform/text.h"
#include "tests/support/secret_expressions.h"
#include "tests/support/work.h"

namespace marbelot {
namespace {

// Tokens are made up, and written with a '~' in their prefix that is taken out here, so that
// nobody's search for leaked secrets stops at this file.
std::string made(std::string text) {
  std::erase(text, '~');
  return text;
}

std::string run(std::size_t length, std::string_view from = "Az3") {
  std::string characters;
  for (std::size_t i = 0; i < length; ++i) characters += from[i % from.size()];
  return characters;
}

std::string jwt(std::size_t first, std::size_t second, std::size_t third) {
  return made("ey~J") + run(first) + "." + run(second) + "." + run(third);
}

// The same question answered by ICU's regular expressions.
class Oracle {
 public:
  Oracle() {
    for (const char* expression : secretExpressions) {
      matchers_.push_back(std::make_unique<icu::RegexMatcher>(expression, 0, status_));
    }
  }

  std::vector<Range> ranges(const std::string& text) {
    const auto utf16 = icu::UnicodeString::fromUTF8(text);
    std::vector<std::size_t> byteAt;  // of every UTF-16 unit, and of the end
    for (std::size_t at = 0; at < text.size();) {
      const text::Scalar scalar = text::scalarAt(text, at);
      byteAt.insert(byteAt.end(), scalar.value > 0xFFFF ? 2 : 1, at);
      at += scalar.bytes;
    }
    byteAt.push_back(text.size());

    std::vector<Range> kept;
    for (std::size_t pattern = 0; pattern < matchers_.size(); ++pattern) {
      const auto& matcher = matchers_[pattern];
      for (matcher->reset(utf16); matcher->find(status_); ++found[pattern]) {
        const std::size_t start = byteAt[matcher->start(status_)];
        const Range range{start, byteAt[matcher->end(status_)] - start};
        const auto overlaps = [&](const Range& other) {
          return range.start < other.end() && other.start < range.end();
        };
        if (std::none_of(kept.begin(), kept.end(), overlaps)) kept.push_back(range);
      }
    }
    EXPECT_TRUE(U_SUCCESS(status_));
    std::sort(kept.begin(), kept.end(), [](Range a, Range b) { return a.start < b.start; });
    return kept;
  }

  std::size_t found[std::size(secretExpressions)] = {};  // by pattern

 private:
  UErrorCode status_ = U_ZERO_ERROR;
  std::vector<std::unique_ptr<icu::RegexMatcher>> matchers_;
};

// The text with what is found between square brackets.
std::string marked(const std::string& text) {
  std::string result;
  std::size_t at = 0;
  for (const Range& range : secretRanges(text)) {
    result +=
        text.substr(at, range.start - at) + "[" + text.substr(range.start, range.length) + "]";
    at = range.end();
  }
  return result + text.substr(at);
}

TEST(SecretRanges, EachPatternBeginsAtItsShortestLength) {
  struct Case {
    const char* prefixes;
    std::size_t least;
    const char* body;
    bool isMost = false;  // a longer one is cut off there
  };
  for (const Case& c :
       {Case{"s~k- p~k- r~k-", 16, "A_z-3"},
        Case{"s~k_live_ s~k_test_ p~k_live_ p~k_test_ r~k_live_ r~k_test_", 16, "Az3"},
        Case{"g~hp_ g~ho_ g~hu_ g~hs_ g~hr_", 20, "Az3"}, Case{"git~hub_pat_", 20, "A_z3"},
        Case{"AI~za", 35, "A_z-3", true}, Case{"ya~29.", 20, "A_z-3"},
        Case{"xo~xb- xo~xa- xo~xp- xo~xr- xo~xs-", 10, "A-z3"}, Case{"c~afe", 36, "0aF"}}) {
    std::istringstream prefixes(made(c.prefixes));
    for (std::string prefix; prefixes >> prefix;) {
      const std::string shortest = prefix + run(c.least, c.body), more = run(7, c.body);
      const std::string tooShort = shortest.substr(0, shortest.size() - 1);
      EXPECT_EQ(marked("= " + shortest + "\n"), "= [" + shortest + "]\n");
      EXPECT_EQ(marked("= " + tooShort + "\n"), "= " + tooShort + "\n");
      EXPECT_EQ(marked(shortest + more), "[" + shortest + (c.isMost ? "]" + more : more + "]"));
      EXPECT_EQ(marked("x" + shortest), "x" + shortest) << "no word begins there";
    }
  }
  for (const std::string prefix : {"AK~IA", "AS~IA"}) {
    const std::string key = made(prefix) + run(16, "Q7");
    EXPECT_EQ(marked("(" + key + "-)"), "([" + key + "]-)");
    EXPECT_EQ(marked(key + "Q"), key + "Q") << "the word goes on";
    EXPECT_EQ(marked(key.substr(0, key.size() - 1)), key.substr(0, key.size() - 1));
  }
}

// The filter works in steps of 64 bytes and samples of 8: no position may make a difference.
TEST(SecretRanges, AreFoundAtEveryPosition) {
  for (const std::string& token : {made("AK~IA") + run(16, "Q7"), made("git~hub_pat_") + run(20),
                                   run(40, "0aF"), jwt(8, 8, 8)}) {
    for (std::size_t before = 0; before < 140; ++before) {
      for (const std::size_t after : {0, 1, 25, 64}) {
        const std::string text = run(before, " ,") + token + run(after, " ");
        const std::vector<Range> expected{{before, token.size()}};
        ASSERT_EQ(secretRanges(text), expected) << before << " before, " << after << " after";
      }
    }
  }
  EXPECT_TRUE(secretRanges("").empty());
}

// Pieces of the patterns, near misses and what a word boundary may stumble over.
class RandomText {
 public:
  RandomText() {
    std::istringstream pieces(made(
        "ey~J ey~J eyj s~k- p~k- r~k_ s~k_live_ p~k_test_ live_ g~hp_ g~hs_ ght_ git~hub_pat_ hub_ "
        "AK~IA "
        "AS~IA AK~IA IA AI~za AI~za ya~29. 29. xo~xb- xoxc- xox . . . - - _ / é ß 字 𝒳 ٣ ² ‿ ः "
        "\u0301 \u0301 "
        "\u00ad \u200c \u200d \u2060 😀 \ufffd —"));
    for (std::string piece; pieces >> piece;) pieces_.push_back(piece);
  }

  std::string next() {
    static const std::string_view alphabets[] = {"A3Q7Z", "aZ9", "0aF", "a_", "b-", "deadbeef0"};
    static const std::size_t lengths[] = {1, 8, 9, 15, 16, 16, 17, 20, 34, 35, 39, 40, 70};
    std::string text = run(pick(70), " ");
    for (std::size_t i = 0, count = 2 + pick(12); i < count; ++i) {
      text += pick(12) == 0 ? jwt(6 + pick(8), 6 + pick(8), 6 + pick(8))
                            : pieces_[pick(pieces_.size())];
      if (pick(3) == 0) continue;
      text += text.ends_with("IA")
                  ? run(15 + pick(3), "A3Q7Z")
                  : run(lengths[pick(std::size(lengths))], alphabets[pick(std::size(alphabets))]);
      if (pick(2) == 0) text += " ";
    }
    return text;
  }

  std::size_t pick(std::size_t below) { return random_() % below; }

 private:
  std::mt19937 random_{20240607};
  std::vector<std::string> pieces_;
};

TEST(SecretRanges, AreThoseOfTheRegularExpressions) {
  Oracle oracle;
  RandomText texts;
  for (int i = 0; i < 30000; ++i) {
    std::string text = texts.next();
    const std::vector<Range> expected = oracle.ranges(text);
    ASSERT_EQ(secretRanges(text), expected) << text;
    ASSERT_EQ(containsSecret(text), !expected.empty()) << text;

    for (int damage = 0; damage < 4; ++damage) {
      text[texts.pick(text.size())] = static_cast<char>(0x80 + texts.pick(0x80));
    }
    for (const Range& range : secretRanges(text)) ASSERT_LE(range.end(), text.size());
  }
  for (const std::size_t count : oracle.found) {
    EXPECT_GT(count, 50U) << "the texts are too tame to show anything";
  }
}

TEST(SecretRanges, WordsAreThoseOfTheRegularExpressions) {
  Oracle oracle;
  const std::string hash = run(40, "0aF");
  for (char32_t c = 0; c <= 0x10FFFF; c = c == 0xD7FF ? 0xE000 : c + (c < 0x3000 ? 1 : 37)) {
    std::string text = "a";
    text::appendScalar(text, c);
    text += hash + "." + hash;
    text::appendScalar(text, c);
    ASSERT_EQ(secretRanges(text), oracle.ranges(text)) << "U+" << std::hex << std::uint32_t{c};
  }
}

TEST(SecretRanges, TakeLinearWorkOnHostileTexts) {
  for (const std::string piece :
       {"a", "0", "(", "ey~J", "-ey~J", "-ey~Jaaaaaaaa", "ey~Jaaaaaaaa.", "s~k-", ".s~k-", "AK~IA",
        ".AK~IA", "\u0301", "\u0301s~k-", "0\u0301", "\xe2", "s~k-0123456789abcdef "}) {
    const auto work = [unit = made(piece)](std::size_t bytes) {
      std::string text;
      while (text.size() < bytes) text += unit;
      text[text.size() / 2] = '.';  // two halves of a web token that lacks its third part
      const std::uint64_t before = workDone();
      secretRanges(text);
      return static_cast<double>(workDone() - before);
    };
    EXPECT_LT(work(std::size_t{1} << 17), 16 * work(std::size_t{1} << 14) + 1) << piece;
  }
}

}  // namespace
}  // namespace marbelot
