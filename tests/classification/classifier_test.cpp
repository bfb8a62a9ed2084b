#include "classification/classifier.h"

#include <gtest/gtest.h>
#include <unicode/regex.h>

#include <string>
#include <vector>

#include "classification/code_lines.h"
#include "classification/language_signals.h"
#include "classification/line_counts.h"
#include "classification/masking.h"
#include "classification/password_tokens.h"
#include "tests/support/rows.h"
#include "tests/support/work.h"

namespace marbelot {
namespace {

std::string repeated(std::string_view piece, std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += piece;
  return text;
}

std::vector<std::string> pieces(std::string_view text, const std::vector<Range>& ranges) {
  std::vector<std::string> found;
  found.reserve(ranges.size());
  for (const Range& range : ranges) found.emplace_back(text.substr(range.start, range.length));
  return found;
}

TEST(SecretToken, FollowsTheRulesOfBothTests) {
  for (const Row& row : rowsOf("classification/texts.tsv", "secret tokens"))
    EXPECT_EQ(looksLikeSecretToken(row[1]), row[0] == "yes") << row << ": " << row[2];
}

// Every token of up to six of these characters, and the expression that says what a version is.
TEST(VersionNumber, IsWhatItsExpressionMatches) {
  constexpr std::string_view characters[] = {"v", "V", "1", "\u0661", ".", "-", "_", "b", "\r"};
  UErrorCode status = U_ZERO_ERROR;
  icu::RegexMatcher expression(R"(^[vV]?\d+([.\-_]\d+){1,}([.\-_][A-Za-z][A-Za-z0-9]*)?$)", 0,
                               status);
  std::vector<std::string> tokens = {""};
  std::size_t versions = 0;
  for (std::size_t done = 0, length = 0; length < 6; ++length) {
    for (const std::size_t end = tokens.size(); done < end; ++done) {
      for (const std::string_view c : characters) tokens.push_back(tokens[done] + std::string(c));
    }
  }
  for (const std::string& token : tokens) {
    const icu::UnicodeString wide = icu::UnicodeString::fromUTF8(token);
    const bool isVersion = expression.reset(wide).find(status);
    versions += isVersion;
    ASSERT_EQ(isVersionNumber(token), isVersion) << token;
  }
  EXPECT_TRUE(U_SUCCESS(status));
  EXPECT_GT(versions, 1000);
  for (const char* version : {"v133.0.6943", "v8.18.39", "v2024.11.21", "v10.0.19045"}) {
    EXPECT_EQ(maskSecrets(version), version);
    EXPECT_EQ(rawValue(classify(version)), "text");
  }
}

TEST(PasswordTokens, AreStrippedOfEdgePunctuation) {
  const std::string text = "(\"Xk9#mQ2$vL\"), then\u3000[Hunter2!x];\u2028<<ann@Hunter2!>> \"\"";
  EXPECT_EQ(pieces(text, passwordTokens(text)),
            (std::vector<std::string>{"Xk9#mQ2$vL", "Hunter2!x"}));
  // A mark makes another character of the quote it stands on.
  const std::string marked = "'\u0301Hunter2x'";
  EXPECT_EQ(pieces(marked, passwordTokens(marked)), (std::vector<std::string>{"'\u0301Hunter2x"}));
  EXPECT_TRUE(hasPasswordToken(text));
  EXPECT_FALSE(hasPasswordToken("nothing to see (here), or so."));
}

TEST(SecretWords, AreFoundInAnyCaseAndInsideWords) {
  for (const Row& row : rowsOf("classification/texts.tsv", "secret words"))
    EXPECT_EQ(mentionsSecret(row[1]), row[0] == "yes") << row;
}

TEST(Classify, TakesTheFirstTestThatDecides) {
  for (const Row& row : rowsOf("classification/texts.tsv", "categories")) {
    const std::string category(rawValue(classify(row[1])));
    const TextFacts facts = factsOf(row[1]);
    if (row[0].starts_with('-')) {
      EXPECT_NE("-" + category, row[0]) << row;
    } else {
      EXPECT_EQ(category, row[0]) << row;
    }
    EXPECT_EQ(rawValue(facts.category), category) << row;
    EXPECT_EQ(facts.language, detectLanguage(row[1]).value_or("")) << row;
    EXPECT_TRUE(row[2].empty() || facts.language.empty()) << row << " is " << facts.language;
  }
}

TEST(CodeLines, CountEveryKindAndHalfIsEnough) {
  for (const Row& row : rowsOf("classification/texts.tsv", "code lines"))
    EXPECT_EQ(isCodeLine(row[1]), row[0] == "yes") << row;
  const auto looksCode = [](std::string_view text) { return looksLikeCode(countLines(text)); };
  EXPECT_FALSE(looksCode("f(x)\ng(x)"));               // two lines
  EXPECT_FALSE(looksCode("f(x)\n \t\n\ng(x)\r\n"));    // blank ones do not count
  EXPECT_TRUE(looksCode("f(x)\rg(x)\r\n\nplain"));     // every line end does
  EXPECT_TRUE(looksCode("f(x)\ng(x)\nplain\nplain"));  // a half
  EXPECT_FALSE(looksCode("f(x)\nplain\nplain"));
}

TEST(Mask, KeepsTheEdgesOfLongSecretsOnly) {
  for (const Row& row : rowsOf("classification/texts.tsv", "masks")) {
    EXPECT_EQ(maskSecrets(row[0]), row[1]) << row;
    const std::string text = "\n " + row[0] + "\u00A0";
    EXPECT_EQ(masked(text, factsOf(text).secrets), "\n " + row[1] + "\u00A0") << row;
    EXPECT_EQ(maskedForDisplay(text), "\n " + row[1] + "\u00A0") << row;
  }
  // No token of it is a password, but with its bracket the whole text is.
  EXPECT_EQ(rawValue(classify("hunter22)")), "password");
  EXPECT_EQ(maskSecrets("hunter22)"), "hunter22)");
  EXPECT_EQ(maskedForDisplay("hunter22)\n"), "hu***2)\n");
  EXPECT_EQ(masked(" hunter22)", factsOf(" hunter22)").secrets), " hu***2)");
}

// How much more work eight times the text is. Linear steps give 8, quadratic ones 64.
double growth(std::string_view piece) {
  constexpr std::size_t textBytes = std::size_t{1} << 14;
  const auto work = [](const std::string& text) {
    const std::uint64_t before = workDone();
    classify(text);
    for (std::size_t i = 0; i < languageCount; ++i) carriesSignal(static_cast<Language>(i), text);
    return static_cast<double>(workDone() - before);
  };
  return work(repeated(piece, 8 * textBytes)) / work(repeated(piece, textBytes));
}

TEST(Classify, IsLinearWhateverTheText) {
  for (const Row& row : rowsOf("classification/texts.tsv", "pieces"))
    EXPECT_LT(growth(row[0]), 16) << row;
}

}  // namespace
}  // namespace marbelot
