#include "classification/classifier.h"

#include <gtest/gtest.h>
#include <unicode/regex.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "classification/code_lines.h"
#include "classification/language_signals.h"
#include "classification/line_counts.h"
#include "classification/password_tokens.h"
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
  const struct {
    std::string token;
    bool secret;
    const char* why;
  } cases[] = {
      {"Hunter2!", true, "eight characters of four classes"},
      {"Hunter2", false, "seven characters"},
      {"hunter22", false, "two classes, too short for a random string"},
      {"Aa1Aa1Aa1Aa1", false, "three distinct characters"},
      {"Aa1aA1Aa", false, "three distinct, and shorter than ten"},
      {"Abc1Abc1", false, "exactly five distinct characters is not more than five"},
      {"Abcd1Abcd1", true, "six distinct"},
      {"correcthorse", false, "letters only"},
      {"rhythmsxyz1a", true, "a run without vowels"},
      {"abcdefghi1", false, "no run of four, no letter behind the number"},
      {"abicudofe1a", true, "a letter behind a number"},
      {"rhythm-oooooooo", false, "distinct characters are fewer than half"},
      {"rhythms-etc", true, "a symbol stands in for a number"},
      {"RHYTHMICALLY", false, "letters only, whatever the case"},
      {"1234567890", false, "no letter"},
      {"12:34:56-78", false, "no letter"},
      {"Xk9#mQ2$ vL", false, "a space"},
      {"Xk9#mQ2$\tvL", false, "a tab"},
      {"Xk9#mQ2$\nvL", false, "a line feed"},
      {"Xk9#mQ2$vL\n", false, "a line feed at the end, too"},
      {"Xk9#mQ2$vL\xC2\xA0", true, "other white space is trimmed"},
      {"ftp://Xk9#mQ2$vL", false, "a scheme"},
      {"ann@Xk9#mQ2$vL", false, "an at sign"},
      {"1.2.3", false, "a version"},
      {"v10.4.1-beta2", false, "a version with a suffix"},
      {"V2_0-rc1", false, "a version with other separators"},
      {"v10.4.1-beta2\r", false, "a version before a line end"},
      {"v10.4.1-beta-2", true, "no version: the suffix goes on"},
      {"v10-Betatest", true, "no version: a single number group"},
      {"v\u0661\u0662.\u0663\u0664-Betab", false, "digits of any script make a version"},
      {repeated("aB3$xY9z", 128), true, "128 characters"},
      {repeated("aB3$xY9z", 128) + "x", false, "129 characters"},
      {repeated("\u00E9\u00C9\u0663$", 112), false, "too few distinct characters"},
      {"\u00E9\u00C9\u0663$\u00F1abc", true, "classes of any script, eight characters"},
      {"\u00E9\u00C9\u0663$\u00F1ab", false, "bytes are not characters"},
      {"e\u0301E\u03013$nab", false, "a letter and its mark are one character"},
      {"e\u0301E\u03013$nabc", true, "eight of them"},
      {"\u0431\u0432\u0433\u0434\u0436\u0437\u043A\u043B-\u043C", true,
       "letters of any script are no vowels"},
      {"", false, "nothing"},
      {"\xFF\xFE\xFD", false, "no text"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(looksLikeSecretToken(test.token), test.secret) << test.why;
  }
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
  for (const char* text :
       {"PassWord", "my passwd", "passphrase", "PWD=", "secrets", "tokenise", "ApiKey", "api key",
        "api-key", "Credentials", "access KEY", "private key", "opinion", "to\u212Aen"}) {
    EXPECT_TRUE(mentionsSecret(text)) << text;
  }
  for (const char* text : {"", "pi", "pass word", "tokn", "api  key", "p\u0131n", "acces key"}) {
    EXPECT_FALSE(mentionsSecret(text)) << text;
  }
}

TEST(Classify, TakesTheFirstTestThatDecides) {
  const std::string hash = repeated("0123456789abcdef", 40).substr(0, 40);
  const struct {
    std::string text;
    ClipCategory category;
  } cases[] = {
      {"", ClipCategory::text},
      {" \t\r\n\u2028\u00A0", ClipCategory::text},
      {hash, ClipCategory::apiKey},
      {"https://example.org/?t=" + hash, ClipCategory::apiKey},
      {"A long paragraph, and in it " + hash + ", which is all that counts.", ClipCategory::apiKey},
      {"  Hunter2!\n", ClipCategory::password},
      {"a1b2c3d4e5f6", ClipCategory::password},
      {"login: Xk9#mQ2$vL", ClipCategory::password},
      {"my password is Xk9#mQ2$vL", ClipCategory::password},
      {"see Xk9#mQ2$vL now for the report", ClipCategory::text},
      {"see Xk9#mQ2$vL now for my opinion", ClipCategory::password},
      {"the password is the usual one", ClipCategory::text},
      {"1.2.3", ClipCategory::number},
      {"12,50 (3)", ClipCategory::number},
      {"(12)", ClipCategory::text},
      {"12 apples", ClipCategory::text},
      {"https://example.org", ClipCategory::url},
      {"mailto:ann@example.org", ClipCategory::email},
      {"write to ann@example.org", ClipCategory::email},
      {"correcthorse", ClipCategory::text},
      {"$ ls -la\ntotal 0", ClipCategory::terminal},
      {"if (a) {\n  run(b);\n}", ClipCategory::code},
      {"def f(x):\n    return x", ClipCategory::code},
      {"Let us meet at the station.", ClipCategory::text},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(rawValue(classify(test.text)), rawValue(test.category)) << test.text;
    const TextFacts facts = factsOf(test.text);
    EXPECT_EQ(rawValue(facts.category), rawValue(test.category)) << test.text;
    EXPECT_EQ(facts.language, detectLanguage(test.text).value_or("")) << test.text;
  }
}

// Quotes, comments and headings begin their lines with the marks that shells prompt with.
TEST(Terminal, TellsPromptsFromQuotesAndComments) {
  for (const char* text :
       {"$ make\nok",
        "# apt-get install foo",
        "> npm install -g x",
        "% ls -la",
        "% make test",
        "ann@web:~$ date",
        "PS C:\\> date",
        "# make -j4 install",
        "> cat notes.txt | sort",
        "> git status",
        "$ cat <<END\n> read this\n> more of it\n> END",
        "# find . -name '*.o'",
        "# reboot",
        "# date\nFri Nov 21 20:15:02 UTC 2025",
        "# systemctl restart nginx",
        "# rm old.txt\n# ls\n# a comment in a file",
        "> echo $HOME",
        "# service cron stop",
        "# docker run -it --rm ubuntu bash",
        "# kill 4711",
        "> ssh ann@web",
        "# loginctl",
        "# apt-get install foo\nReading package lists... Done\nNeed to get 12 kB of archives.\n"
        "After this operation, 50 kB of additional disk space will be used."}) {
    EXPECT_EQ(rawValue(classify(text)), "terminal") << text;
  }
  for (const char* text :
       {"Hi,\n\n> make sure\n> it works\n\nThanks", "> can you\n> find out\n> which one it was",
        "On Friday Bob wrote:\n> cut\n> paste\nok", "> time flies", "> quoted mail\n> more",
        "> swift reply\n> good", "> run npm install\n> npm install\nand it failed", "% make sure",
        "# find me\n\nSome prose here about it.", "# cargo\n\nIt downloads what a package needs.",
        "# nginx settings\nport 80", "# Reboot", "Shopping:\n# date\n# sort\n# cut",
        "# the port\nport 80\n# rm -rf this line\nuser web", "# more at https://example.org/a/b",
        "> read he/she and/or they", "> set this to /etc/x", "> li.note {\n  margin: 0;"}) {
    EXPECT_NE(rawValue(classify(text)), "terminal") << text;
  }
}

TEST(Terminal, KnowsCommandsAndToolsByTheirOperators) {
  for (const char* text :
       {"./configure --prefix=/usr", "/usr/bin/env FOO=1 ./a", "~/bin/run|less /tmp/x",
        "for f in *.txt; do mv \"$f\" /tmp; done",
        "src/a.c:3:11: warning: unused variable\n    3 |   int x = 1;\n      |       ^",
        "error[E0308]: mismatched types\n --> src/main.rs:2:16\n  |\n"
        "2 |     let x: u32 = \"a\";\n  |            ---   ^^^ expected `u32`"}) {
    EXPECT_EQ(rawValue(classify(text)), "terminal") << text;
  }
  for (const char* text :
       {"/home/me", "/home/me/report.pdf", "/usr/share/doc/", "./a/b.c", "~/notes.txt",
        "/home/me/a\\ report.pdf", "./src/a.h\n./src/a.c", "type A =\n  | 'a'\n  | 'b';",
        "a.c:3:11: warning: unused variable", "localhost:80 and example.org/a:80"}) {
    EXPECT_NE(rawValue(classify(text)), "terminal") << text;
  }
}

// A session may show source, and stand in prose; a source may hold what tools say.
TEST(Terminal, OutweighsWhatASessionShows) {
  for (const char* text :
       {"$ cat a.py\nimport os\n\ndef f(x):\n    return os.path.join(x, 'a')",
        "$ git diff\n-const a = 1;\n+const a = () => { return 2; };",
        "ann@web:~$ cat a.c\n#include <stdio.h>\nint main(void) {\n  return 0;\n}",
        "PS C:\\> type a.py\nimport os\nprint(os.name)",
        "Traceback (most recent call last):\n  File \"a.py\", line 3, in <module>\n"
        "    import nothing\nModuleNotFoundError: No module named 'nothing'",
        "TypeError: x is not a function\n    at f (/src/a.js:1:2)\n    const a = () => f();",
        "bash: import: command not found\nimport os\nprint(os.name)",
        "# cat a.py\nimport os\nprint(os.name)",
        "Some prose that speaks of it.\n\n> npm install\n\nThen go on reading this page.",
        "First of all, open a window.\nThen you type this:\n$ make\nAnd wait for it to end.\n"
        "It may take a while, and more.\nThe end of it is what you see then."}) {
    EXPECT_EQ(rawValue(classify(text)), "terminal") << text;
    EXPECT_FALSE(detectLanguage(text)) << text;
  }
  for (const char* text :
       {"# pip install requests\nimport requests\nprint(requests.get(url).text)",
        "#!/bin/sh\n$ make\necho 'command not found'", "<?php\n$ x = 1;\necho 'fatal:';",
        "void f() {\n  go();\nerror:\n  free(p);\n}", "f(\n  a);\nerror: free(p);\ng(x);",
        "def f():\n    \"\"\"\n    Traceback (most recent call last):\n    \"\"\"\n    print(1)",
        "import os\nprint(\"ls: No such file or directory\")\nprint(os.name)"}) {
    EXPECT_EQ(rawValue(classify(text)), "code") << text;
  }
}

TEST(CodeLines, CountEveryKindAndHalfIsEnough) {
  for (const char* line :
       {"x = 1;", "if x {", "}", "// note", "* note", "a => b", "a::b", "f(x)", "f (x)", "a) g()",
        "\u00E9 (x)", "return", "else:", "const x", "package main", "for i in x"}) {
    EXPECT_TRUE(isCodeLine(line)) << line;
  }
  for (const char* line :
       {"", "a word", "returned", "ifx", "(x)", "+ (x)", "f(x", "f) (", "/ note", "caf\u00E9: x"}) {
    EXPECT_FALSE(isCodeLine(line)) << line;
  }
  const auto looksCode = [](std::string_view text) { return looksLikeCode(countLines(text)); };
  EXPECT_FALSE(looksCode("f(x)\ng(x)"));               // two lines
  EXPECT_FALSE(looksCode("f(x)\n \t\n\ng(x)\r\n"));    // blank ones do not count
  EXPECT_TRUE(looksCode("f(x)\rg(x)\r\n\nplain"));     // every line end does
  EXPECT_TRUE(looksCode("f(x)\ng(x)\nplain\nplain"));  // a half
  EXPECT_FALSE(looksCode("f(x)\nplain\nplain"));
}

TEST(Mask, KeepsTheEdgesOfLongSecretsOnly) {
  const std::string key = std::string("gh") + "p_abcdefghijklmnopqrstuv";
  const std::string joined = repeated("0123456789abcdef", 48);
  const struct {
    std::string text, masked;
  } cases[] = {
      {"nothing here", "nothing here"},
      {"", ""},
      {"Abc123!x", "Ab***!x"},
      {key, "ghp_***stuv"},
      {"(" + key + ")", "(ghp_***stuv)"},
      {"use " + key + " or Abc123!x!", "use ghp_***stuv or Ab***x!"},
      // The token holds the key: one mask for both.
      {"Zz9!" + joined.substr(0, 40) + " on", "Zz9!***4567 on"},
      {"key=" + joined, "key=***cdef"},
      // Characters, not bytes, and none is cut.
      {"e\u0301E\u03013$nabc", "e\u0301E\u0301***bc"},
      {"\u00E9\u00C9\u0663$\u00F1abcdefg", "\u00E9\u00C9\u0663$***defg"},
      {"\u00E9\u00C9\u0663$\u00F1abcdef", "\u00E9\u00C9***ef"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(maskSecrets(test.text), test.masked);
    const std::string text = "\n " + std::string(test.text) + "\u00A0";
    EXPECT_EQ(masked(text, factsOf(text).secrets), "\n " + std::string(test.masked) + "\u00A0");
  }
}

// The fixed signals, each with the text that just has it and one that just has not.
TEST(LanguageSignals, MatchWhatTheirExpressionsMatch) {
  const struct {
    Language language;
    const char* with;
    const char* without;
  } cases[] = {
      {Language::php, "<?= $x", "<? x"},
      {Language::php, "$_a", "$1"},
      {Language::php, "a->b", "a>b"},
      {Language::php, "a;", "a,"},
      {Language::c, "#include  <sys/types.h>", "#include \"stdio.h\""},
      {Language::c, "#include\n<a>", "#include <a b>"},
      {Language::cpp, "a::b", "a:b"},
      {Language::swift, "func  f (a\n,b) -> X", "func f (a\n,b) X"},
      {Language::swift, "func f(){", "funcf(){"},
      {Language::python, "print(1)", "print 1"},
      {Language::python, "\n from a.b import c", "(from a.b import c)"},
      {Language::python, "x\n\n  import os", "x import os"},
      {Language::javaScript, "x; export  default y", "x; exports.default y"},
      {Language::cSharp, "namespace\nX", "namespace {"},
      {Language::java, "private  static  void f", "private static f"},
      {Language::java, "public String s", "public Strings s"},
      {Language::java, "import   java.util.X", "import javax.X"},
      {Language::go, "fmt.Print", "fmt"},
      {Language::rust, "let mut x", "let  mut x"},
      {Language::ruby, "def  x", "de x"},
      {Language::json, "{\"a-b.c\" : 1}", "{\"a b\": 1}"},
      {Language::json, "[{\"a\":1}]", "[{\"a\":1}}"},
      {Language::shell, "#!/bin/sh", "# !/bin/sh"},
      {Language::html, "<!DOCTYPE html>", "<!doctype html>"},
      {Language::html, "<span>", "<spanner>"},
      {Language::css, "a\n{b:c\n;", "a {b;c:}"},
      {Language::css, ".x-y { z }; q{a:b;}", "{a:b;}"},
      {Language::css, "a{b:{c:d;", "a{b:c} ;"},
      {Language::sql, "SELECT 1 FROM x", "select 1 from x"},
      {Language::sql, "INSERT\n INTO x", "INSERTED INTOX"},
      {Language::sql, "UPDATE x SET y", "UPDATED x SET y"},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(carriesSignal(test.language, test.with)) << test.with;
    EXPECT_FALSE(carriesSignal(test.language, test.without)) << test.without;
  }
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
  for (const char* piece : {"a",
                            " ",
                            "\n",
                            "a\r",
                            "0",
                            "(",
                            "func(",
                            "def f(",
                            "{",
                            "{:",
                            "\"",
                            "'",
                            "\\'",
                            "eyJ",
                            "$",
                            "# ",
                            "a@b:",
                            "PS C:\\",
                            "/*",
                            "\"\"\"\n",
                            "import ",
                            "from ",
                            "<",
                            "a (",
                            "\u0301",
                            "\u4E2D",
                            "\xFF",
                            "Error",
                            "public static ",
                            "aB3$x_kk ",
                            "passwor",
                            "\u00A0",
                            "INSERT ",
                            "\"a",
                            "\"a\":1,\n",
                            "<x",
                            "x */\n",
                            "fi\n",
                            "1 ",
                            "\u00E91 ",
                            "1\n",
                            "1-2 ",
                            "1.",
                            "12 ",
                            "3.5 ",
                            "1 Ab ",
                            "> a\n",
                            "# make it\n",
                            "(555) 123-4567x "}) {
    EXPECT_LT(growth(piece), 16) << piece;
  }
}

}  // namespace
}  // namespace marbelot
