#include "clipboard/secret_scanner.h"

#include <gtest/gtest.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "clipboard/classifier.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// Tokens are made up, and put together here so that no scanner of this repository takes them for
// leaked ones.
std::string run(std::size_t length, std::string_view from = "Az3") {
  std::string characters;
  for (std::size_t i = 0; i < length; ++i) characters += from[i % from.size()];
  return characters;
}

std::string jwt(std::size_t first, std::size_t second, std::size_t third) {
  return "ey"
         "J" +
         run(first) + "." + run(second) + "." + run(third);
}

constexpr const char* expressions[] = {
    R"(\beyJ[A-Za-z0-9_-]{8,}\.[A-Za-z0-9_-]{8,}\.[A-Za-z0-9_-]{8,})",
    R"(\b(?:sk|pk|rk)-[A-Za-z0-9_-]{16,})",
    R"(\b(?:sk|pk|rk)_(?:live|test)_[A-Za-z0-9]{16,})",
    R"(\b(?:ghp|gho|ghu|ghs|ghr)_[A-Za-z0-9]{20,})",
    R"(\bgithub_pat_[A-Za-z0-9_]{20,})",
    R"(\b(?:AKIA|ASIA)[A-Z0-9]{16}\b)",
    R"(\bAIza[A-Za-z0-9_-]{35})",
    R"(\bya29\.[A-Za-z0-9_-]{20,})",
    R"(\bxox[baprs]-[A-Za-z0-9-]{10,})",
    R"(\b[0-9a-fA-F]{40,}\b)",
};

// The same question answered by ICU's regular expressions.
class Oracle {
 public:
  Oracle() {
    for (const char* expression : expressions) {
      UErrorCode status = U_ZERO_ERROR;
      matchers_.push_back(
          std::make_unique<icu::RegexMatcher>(icu::UnicodeString::fromUTF8(expression), 0, status));
      EXPECT_TRUE(U_SUCCESS(status));
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
    for (const auto& matcher : matchers_) {
      matcher->reset(utf16);
      UErrorCode status = U_ZERO_ERROR;
      while (matcher->find(status)) {
        const std::size_t start = byteAt[matcher->start(status)];
        const Range range{start, byteAt[matcher->end(status)] - start};
        const auto overlaps = [&](const Range& other) {
          return range.start < other.end() && other.start < range.end();
        };
        if (std::none_of(kept.begin(), kept.end(), overlaps)) kept.push_back(range);
      }
      EXPECT_TRUE(U_SUCCESS(status));
    }
    std::sort(kept.begin(), kept.end(), [](Range a, Range b) { return a.start < b.start; });
    return kept;
  }

 private:
  std::vector<std::unique_ptr<icu::RegexMatcher>> matchers_;
};

// What is found, each between square brackets.
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
    std::string prefix;
    std::size_t least;
    bool atMost = false;  // longer ones are cut off there
    std::string body = "Az3";
  };
  const Case cases[] = {
      {"sk"
       "-",
       16},
      {"pk"
       "-",
       16},
      {"rk"
       "-",
       16},
      {"sk"
       "_live_",
       16},
      {"pk"
       "_test_",
       16},
      {"rk"
       "_live_",
       16},
      {"gh"
       "p_",
       20},
      {"gh"
       "o_",
       20},
      {"gh"
       "u_",
       20},
      {"gh"
       "s_",
       20},
      {"gh"
       "r_",
       20},
      {"github"
       "_pat_",
       20, false, "a_Z"},
      {"AI"
       "za",
       35, true},
      {"ya"
       "29.",
       20},
      {"xo"
       "xb-",
       10, false, "a-7"},
      {"xo"
       "xa-",
       10},
      {"xo"
       "xp-",
       10},
      {"xo"
       "xr-",
       10},
      {"xo"
       "xs-",
       10},
      {"", 40, false, "0aF"},
  };
  for (const Case& c : cases) {
    const std::string shortest = c.prefix + run(c.least, c.body);
    const std::string longer = shortest + run(7, c.body);
    const std::string tooShort = shortest.substr(0, shortest.size() - 1);
    EXPECT_EQ(marked("= " + shortest + "\n"), "= [" + shortest + "]\n");
    EXPECT_EQ(marked("= " + tooShort + "\n"), "= " + tooShort + "\n");
    EXPECT_EQ(marked(longer), "[" + (c.atMost ? shortest + "]" + run(7, c.body) : longer + "]"));
    EXPECT_EQ(marked("x" + shortest), "x" + shortest) << "no word begins there";
  }
  for (const std::string prefix : {"AK"
                                   "IA",
                                   "AS"
                                   "IA"}) {
    const std::string key = prefix + run(16, "Q7");
    EXPECT_EQ(marked("(" + key + ")"), "([" + key + "])");
    EXPECT_EQ(marked(key + "Q"), key + "Q") << "a word goes on";
    EXPECT_EQ(marked(key + "_"), key + "_");
    EXPECT_EQ(marked(key + "-"), "[" + key + "]-");
    EXPECT_EQ(marked(key.substr(1)), key.substr(1));
  }
}

TEST(SecretRanges, WebTokensNeedThreePartsOfEight) {
  EXPECT_EQ(marked(jwt(8, 8, 8)), "[" + jwt(8, 8, 8) + "]");
  for (const auto& token : {jwt(7, 8, 8), jwt(8, 7, 8), jwt(8, 8, 7)})
    EXPECT_EQ(marked(token), token);
  EXPECT_EQ(marked(jwt(8, 8, 8) + ".tail"), "[" + jwt(8, 8, 8) + "].tail");
  // The first part that is long enough may begin within a run that an earlier prefix shares.
  EXPECT_EQ(marked("x" + jwt(3, 8, 8) + "-" + jwt(8, 9, 10)),
            "x" + jwt(3, 8, 8) + "-[" + jwt(8, 9, 10) + "]");
  EXPECT_EQ(marked("ey"
                   "J-" +
                   jwt(8, 8, 8)),
            "["
            "ey"
            "J-" +
                jwt(8, 8, 8) + "]");
}

TEST(SecretRanges, WordBoundariesKnowAllOfUnicode) {
  const std::string key =
      "AK"
      "IA" +
      run(16, "Q7");
  const std::string hash = run(40, "0aF");
  struct Case {
    std::string neighbour;
    bool before, after;  // whether a token is one next to it
  };
  const Case cases[] = {
      {"é", false, false},
      {"字", false, false},
      {"𝒳", false, false},
      {"٣", false, false},
      {"‿", false, false},
      {"_", false, false},
      {"ः", false, false},  // a spacing mark counts as a letter
      {"²", true, true},
      {"—", true, true},
      {"😀", true, true},
      {"\u00a0", true, true},
      {"\x80", true, true},
      {"\xe2\x82", true, true},
      {"\xed\xa0\x80", true, true},  // a surrogate
      {"\u0301", true, false},
      {"\u00ad", true, false},
      {"\u200d", true, false},
      {".\u0301", true, true},
      {"é\u0301\u200d", false, false},
  };
  for (const Case& c : cases) {
    for (const std::string& token : {key, hash}) {
      const std::string plain = c.neighbour + token;
      EXPECT_EQ(marked(plain), c.before ? c.neighbour + "[" + token + "]" : plain);
      EXPECT_EQ(marked(token + c.neighbour),
                c.after ? "[" + token + "]" + c.neighbour : token + c.neighbour);
    }
  }
  EXPECT_EQ(marked("a\u0301\u0302" + key), "a\u0301\u0302" + key);
}

TEST(SecretRanges, EarlierPatternsWinOverlaps) {
  const std::string hash = run(48, "0a");
  // A hash inside a key, a token inside a key, a web token that runs into a key.
  for (const std::string& text : {"sk"
                                  "-" +
                                      hash,
                                  "sk"
                                  "-" +
                                      run(9) +
                                      "-xo"
                                      "xb-" +
                                      run(12),
                                  jwt(8, 8, 8) +
                                      "-sk"
                                      "-" +
                                      run(20)}) {
    EXPECT_EQ(marked(text), "[" + text + "]");
  }
  // The web token is kept although the key begins before it, and takes the key away with it.
  EXPECT_EQ(marked("sk"
                   "-" +
                   run(4) + "-" + jwt(8, 8, 8)),
            "sk"
            "-" +
                run(4) + "-[" + jwt(8, 8, 8) + "]");
  // Ranges that touch do not overlap.
  const std::string google =
      "AI"
      "za" +
      run(34) + "-";
  EXPECT_EQ(marked(google +
                   "gh"
                   "p_" +
                   run(20)),
            "[" + google +
                "][gh"
                "p_" +
                run(20) + "]");
  EXPECT_EQ(marked(hash + " " + jwt(8, 8, 8) + " " + hash),
            "[" + hash + "] [" + jwt(8, 8, 8) + "] [" + hash + "]");
}

// The filter works in steps of 64 bytes and samples of 8: no position may make a difference.
TEST(SecretRanges, AreFoundAtEveryPosition) {
  for (const std::string& token : {"AK"
                                   "IA" +
                                       run(16, "Q7"),
                                   "github"
                                   "_pat_" +
                                       run(20),
                                   "xo"
                                   "xb-" +
                                       run(10),
                                   run(40, "0aF"), jwt(8, 8, 8)}) {
    for (std::size_t before = 0; before < 140; ++before) {
      for (const std::size_t after : {0, 1, 25, 64}) {
        const std::string text = run(before, " ,") + token + run(after, " ");
        const std::vector<Range> expected{{before, token.size()}};
        ASSERT_EQ(secretRanges(text), expected) << before << " before, " << after << " after";
        ASSERT_TRUE(containsSecret(text));
      }
    }
  }
  EXPECT_TRUE(secretRanges("").empty());
  EXPECT_FALSE(containsSecret("risk-averse ghost_writers of task_test_suites, 0123456789abcdef"));
}

class RandomText {
 public:
  explicit RandomText(unsigned seed) : random_(seed) {}

  std::string next() {
    static const std::vector<std::string> pieces = {
        "ey"
        "J",
        "eyj",
        "yJ",
        "sk"
        "-",
        "pk-",
        "rk"
        "_",
        "sk"
        "_live_",
        "pk_test_",
        "live_",
        "gh"
        "p_",
        "ghs_",
        "ght_",
        "github",
        "_pat_",
        "AK"
        "IA",
        "AS"
        "IA",
        "IA",
        "AI"
        "za",
        "ya"
        "29.",
        "29.",
        "xo"
        "xb-",
        "xoxc-",
        "xox",
        ".",
        ".",
        "-",
        "_",
        " ",
        "\n",
        "/",
        "é",
        "ß",
        "字",
        "𝒳",
        "٣",
        "²",
        "‿",
        "ः",
        "\u0301",
        "\u0301",
        "\u00ad",
        "\u200c",
        "\u200d",
        "\u2060",
        "😀",
        "\ufffd",
        "—"};
    static const std::string_view alphabets[] = {"A3Q7Z", "aZ9",       "0aF", "a_",
                                                 "b-",    "deadbeef0", "zy"};
    static const std::size_t lengths[] = {1,  3,  7,  8,  9,  10, 13, 15, 16, 17,
                                          19, 20, 34, 35, 36, 39, 40, 41, 70};
    std::string text = run(pick(70), " ");
    for (std::size_t i = 0, count = 2 + pick(12); i < count; ++i) {
      text += pick(3) == 0
                  ? run(lengths[pick(std::size(lengths))], alphabets[pick(std::size(alphabets))])
                  : pieces[pick(pieces.size())];
    }
    return text;
  }

 private:
  std::size_t pick(std::size_t below) { return random_() % below; }
  std::mt19937 random_;
};

TEST(SecretRanges, AreThoseOfTheRegularExpressions) {
  Oracle oracle;
  RandomText texts(20240607);
  std::size_t found = 0;
  for (int i = 0; i < 40000; ++i) {
    const std::string text = texts.next();
    const std::vector<Range> expected = oracle.ranges(text);
    ASSERT_EQ(secretRanges(text), expected) << text;
    ASSERT_EQ(containsSecret(text), !expected.empty()) << text;
    found += expected.size();
  }
  EXPECT_GT(found, 10000U) << "the texts are too tame to show anything";
}

TEST(SecretRanges, WordsAreThoseOfTheRegularExpressions) {
  Oracle oracle;
  const std::string hash = run(40, "0aF");
  for (char32_t c = 0; c <= 0x10FFFF; c = c == 0xD7FF ? 0xE000 : c + (c < 0x3000 ? 1 : 37)) {
    std::string text = "a";
    text::appendScalar(text, c);
    text += hash;
    text::appendScalar(text, c);
    ASSERT_EQ(secretRanges(text), oracle.ranges(text)) << "U+" << std::hex << std::uint32_t{c};
  }
}

// Anything but linear work would keep these from ending within the day.
TEST(SecretRanges, TakeLinearTimeOnHostileTexts) {
  const std::string long16 = run(16);
  for (const std::string& piece : {std::string("a"), std::string("0"),
                                   std::string("ey"
                                               "J"),
                                   std::string("-ey"
                                               "J"),
                                   "ey"
                                   "J" +
                                       run(8) + ".",
                                   std::string("sk"
                                               "-"),
                                   std::string(".sk"
                                               "-"),
                                   std::string("AK"
                                               "IA"),
                                   std::string("AK"
                                               "IA "),
                                   std::string("("), std::string(" "), std::string("\u0301"),
                                   std::string("\u0301sk"
                                               "-"),
                                   std::string("é0"), std::string("\xe2"),
                                   "sk"
                                   "-" +
                                       long16 + " "}) {
    std::string text;
    while (text.size() < 8'000'000) text += piece;
    secretRanges(text);
    secretRanges(text + "." + text);  // two parts of a web token, which lacks the third
  }
}

}  // namespace
}  // namespace marbelot
