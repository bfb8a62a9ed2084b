// The secret scanner beside the libraries that run the same ten expressions, over the same texts in
// the same run: RE2::Set (which expressions match), Hyperscan (likewise, and with all positions)
// and ICU's own regular expressions. Ends with a table of MB/s and of the ratios.
#include <benchmark/benchmark.h>
#include <hs/hs.h>
#include <re2/set.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "classification/classifier.h"
#include "classification/secret_scanner.h"
#include "tests/support/secret_expressions.h"

namespace {

using marbelot::secretExpressions;

constexpr std::size_t corpusBytes = 50'000'000;

// --- Texts ---------------------------------------------------------------------------------------

// Random sentences and statements. Words that hold what our filter looks for are about as rare as
// they are in books and in source trees.
class Writer {
 public:
  std::string word() {
    static const std::string_view common[] = {
        "the",     "of",      "and",     "to",      "a",        "in",       "is",      "that",
        "it",      "was",     "for",     "on",      "are",      "with",     "as",      "they",
        "be",      "at",      "one",     "have",    "this",     "from",     "or",      "had",
        "by",      "word",    "but",     "not",     "what",     "all",      "were",    "when",
        "your",    "can",     "said",    "there",   "use",      "each",     "which",   "she",
        "how",     "their",   "will",    "other",   "about",    "out",      "many",    "then",
        "these",   "some",    "would",   "make",    "like",     "into",     "time",    "has",
        "look",    "two",     "more",    "write",   "number",   "way",      "could",   "people",
        "through", "water",   "first",   "called",  "position", "after",    "back",    "little",
        "light",   "year",    "name",    "good",    "sentence", "great",    "think",   "help",
        "length",  "index",   "asking",  "checked", "request",  "response", "string",  "context",
        "library", "handler", "process", "buffer",  "callback", "element",  "visible", "parent"};
    static const std::string_view rare[] = {"risk",    "mask", "task",  "block", "exotic", "human",
                                            "initial", "data", "media", "ghost", "habit",  "work"};
    return std::string(below(100) == 0 ? rare[below(std::size(rare))]
                                       : common[below(std::size(common))]);
  }

  std::string sentence() {
    std::string text = word();
    text[0] = static_cast<char>(text[0] - 'a' + 'A');
    for (std::size_t i = 0, count = 4 + below(16); i < count; ++i) {
      switch (below(40)) {
        case 0:
          text += ",";
          break;
        case 1:
          text += " " + std::to_string(below(2100));
          break;
        case 2:
          text += " café";
          break;
        case 3:
          text += " \u201c" + word() + "\u201d";
          break;
        case 4:
          text += "-" + word();
          break;
        default:
          text += " " + word();
      }
    }
    return text + (below(6) == 0 ? ".\n\n" : ". ");
  }

  std::string name() {
    std::string text = word();
    switch (below(4)) {
      case 0:
        return text + "_" + word();
      case 1:
        return text + "_" + word() + "_" + word();
      case 2:
        text += word();
        text[text.size() / 2] = 'R';
        return text;
      default:
        return text;
    }
  }

  std::string statement() {
    const std::string indent(2 * below(5), ' ');
    switch (below(8)) {
      case 0:
        return indent + "if (" + name() + "->" + name() + "() != nullptr) {\n";
      case 1:
        return indent + "}\n\n";
      case 2:
        return indent + "// " + sentence() + "\n";
      case 3: {
        std::string constant = name();
        for (char& c : constant) c = static_cast<char>(std::toupper(c));
        return indent + "constexpr int " + constant + " = 0x" + hex(8) + ";\n";
      }
      case 4:
        return indent + "return " + name() + "[" + std::to_string(below(100)) + "];\n";
      case 5:
        return indent + "log(\"" + word() + ": %s\", " + name() + ".c_str());\n";
      default:
        return indent + "auto " + name() + " = std::move(" + name() + ")." + name() + "(" + name() +
               ", " + std::to_string(below(5000)) + ");\n";
    }
  }

  std::string secret() {
    switch (below(4)) {
      case 0:
        return std::string(" sk") + "-" + hex(32) + " ";
      case 1:
        return std::string(" gh") + "p_" + hex(36) + " ";
      case 2:
        return std::string(" ey") + "J" + hex(20) + "." + hex(90) + "." + hex(43) + " ";
      default:
        return " " + hex(40) + " ";
    }
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }

  std::string hex(std::size_t digits) {
    std::string text;
    while (text.size() < digits) text += "0123456789abcdef"[below(16)];
    return text;
  }

  std::mt19937_64 random_{20240607};
};

std::string corpus(const std::function<std::string(Writer&)>& piece, bool withSecrets) {
  Writer writer;
  std::string text;
  text.reserve(corpusBytes + 1000);
  for (std::size_t nextSecret = 50'000; text.size() < corpusBytes;) {
    text += piece(writer);
    if (withSecrets && text.size() > nextSecret) {
      text += writer.secret();
      nextSecret += 50'000;
    }
  }
  return text;
}

std::string repeated(const std::string& piece) {
  std::string text;
  text.reserve(corpusBytes + piece.size());
  while (text.size() < corpusBytes) text += piece;
  return text;
}

// --- Scanners; each returns a number that keeps the work from being optimised away ---------------

std::size_t scanOurs(const std::string& text) { return marbelot::secretRanges(text).size(); }

std::size_t scanRe2(const std::string& text) {
  static const auto set = [] {
    auto made = std::make_unique<re2::RE2::Set>(re2::RE2::Options(), re2::RE2::UNANCHORED);
    for (const char* expression : secretExpressions) made->Add(expression, nullptr);
    if (!made->Compile()) std::abort();
    return made;
  }();
  std::vector<int> matched;
  set->Match(text, &matched);
  return matched.size();
}

class Hyperscan {
 public:
  explicit Hyperscan(unsigned flags) {
    const std::vector<unsigned> allFlags(std::size(secretExpressions), flags);
    std::vector<unsigned> ids;
    for (unsigned i = 0; i < std::size(secretExpressions); ++i) ids.push_back(i);
    hs_compile_error_t* error = nullptr;
    if (hs_compile_multi(secretExpressions, allFlags.data(), ids.data(),
                         std::size(secretExpressions), HS_MODE_BLOCK, nullptr, &database_,
                         &error) != HS_SUCCESS ||
        hs_alloc_scratch(database_, &scratch_) != HS_SUCCESS) {
      std::fprintf(stderr, "Hyperscan: %s\n", error ? error->message : "no scratch");
      std::abort();
    }
  }

  std::size_t scan(const std::string& text) {
    std::size_t count = 0;
    const auto onMatch = [](unsigned, unsigned long long, unsigned long long, unsigned,
                            void* context) {
      ++*static_cast<std::size_t*>(context);
      return 0;
    };
    hs_scan(database_, text.data(), static_cast<unsigned>(text.size()), 0, scratch_, onMatch,
            &count);
    return count;
  }

 private:
  hs_database_t* database_ = nullptr;
  hs_scratch_t* scratch_ = nullptr;
};

std::size_t scanHyperscan(const std::string& text) {
  static Hyperscan hyperscan(0);
  return hyperscan.scan(text);
}

std::size_t scanHyperscanPositions(const std::string& text) {
  static Hyperscan hyperscan(HS_FLAG_SOM_LEFTMOST);
  return hyperscan.scan(text);
}

std::size_t scanIcu(const std::string& text) {
  static const auto matchers = [] {
    std::vector<std::unique_ptr<icu::RegexMatcher>> made;
    for (const char* expression : secretExpressions) {
      UErrorCode status = U_ZERO_ERROR;
      made.push_back(std::make_unique<icu::RegexMatcher>(expression, 0, status));
    }
    return made;
  }();
  const auto utf16 = icu::UnicodeString::fromUTF8(text);
  std::size_t count = 0;
  for (const auto& matcher : matchers) {
    UErrorCode status = U_ZERO_ERROR;
    for (matcher->reset(utf16); matcher->find(status);) ++count;
  }
  return count;
}

struct Scanner {
  const char* name;
  std::size_t (*scan)(const std::string&);
};
constexpr Scanner scanners[] = {{"ours", scanOurs},
                                {"RE2::Set", scanRe2},
                                {"Hyperscan", scanHyperscan},
                                {"Hyperscan+positions", scanHyperscanPositions},
                                {"ICU", scanIcu}};

// --- Report --------------------------------------------------------------------------------------

// The usual report, and in the end one line per text with the scanners side by side, each at the
// best of its repetitions: what else the machine does can only slow it down.
class SideBySide : public benchmark::ConsoleReporter {
 public:
  SideBySide() : ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Aggregate) continue;
      const std::string& name = run.run_name.function_name;
      const std::size_t slash = name.find('/');
      const auto speed = run.counters.find("bytes_per_second");
      if (slash == std::string::npos || speed == run.counters.end()) continue;
      double& best = speeds_[name.substr(0, slash)][name.substr(slash + 1)];
      best = std::max(best, speed->second / 1e6);
    }
  }

  void Finalize() override {
    std::printf("\n%-24s %8s", "MB/s", "ours");
    for (const Scanner& other : others()) std::printf(" %22s", other.name);
    for (auto& [text, speed] : speeds_) {
      std::printf("\n%-24s %8.0f", text.c_str(), speed["ours"]);
      for (const Scanner& other : others()) {
        if (speed.count(other.name) == 0) continue;
        std::printf(" %9.0f (ours %5.1fx)", speed[other.name], speed["ours"] / speed[other.name]);
      }
    }
    std::printf("\n");
  }

 private:
  static std::vector<Scanner> others() { return {std::begin(scanners) + 1, std::end(scanners)}; }
  std::map<std::string, std::map<std::string, double>> speeds_;
};

void add(const std::string& text, const Scanner& scanner, std::function<std::string()> make) {
  // Each text is made when it is first asked for; only the last one is kept.
  static std::string kept, keptName;
  benchmark::RegisterBenchmark((text + "/" + scanner.name).c_str(), [text, scanner,
                                                                     make = std::move(make)](
                                                                        benchmark::State& state) {
    if (keptName != text) kept = make(), keptName = text;
    for (auto _ : state) benchmark::DoNotOptimize(scanner.scan(kept));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kept.size()));
  })->Unit(benchmark::microsecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const auto prose = [](Writer& writer) { return writer.sentence(); };
  const auto source = [](Writer& writer) { return writer.statement(); };
  const std::pair<const char*, std::function<std::string()>> texts[] = {
      {"prose", [=] { return corpus(prose, false); }},
      {"source", [=] { return corpus(source, false); }},
      {"prose, few secrets", [=] { return corpus(prose, true); }},
      {"source, few secrets", [=] { return corpus(source, true); }},
      {"60 bytes", [] { return "Shall we meet at the station at 10:30 and walk there? Anna x"; }},
  };
  for (const auto& [name, make] : texts) {
    for (const Scanner& scanner : scanners) add(name, scanner, make);
  }
  const std::string hex(40, 'a');
  const std::pair<const char*, std::string> hostile[] = {
      {"a", "a"},
      {"0", "0"},
      {"(", "("},
      {"space", " "},
      {"eyJ", std::string("ey") + "J"},
      {"-eyJ", std::string("-ey") + "J"},
      {"eyJaaaaaaaa.", std::string("ey") + "Jaaaaaaaa."},
      {"sk-", "sk-"},
      {".sk-", ".sk-"},
      {"AKIA", std::string("AK") + "IA"},
      {"AKIA.", std::string("AK") + "IA."},
      {"xoxb-", "xoxb-"},
      {".sk_live_", ".sk_live_"},
      {".github_pat_", ".github_pat_"},
      {"40 hex, e acute", hex + "é"},
      {"40 hex, space", hex + " "},
      {"combining marks", "\u0301"},
      {"marks, sk-", "\u0301\u0301sk-"},
  };
  for (const auto& [name, piece] : hostile) {
    add(std::string("hostile: ") + name, scanners[0], [piece = piece] { return repeated(piece); });
  }
  for (int i = 1; i < argc; ++i) {  // texts of the user's own
    const auto read = [path = argv[i]] {
      std::ifstream file(path);
      return std::string(std::istreambuf_iterator<char>(file), {}).substr(0, corpusBytes);
    };
    for (const Scanner& scanner : scanners) add("file " + std::to_string(i), scanner, read);
  }
  SideBySide reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
}
