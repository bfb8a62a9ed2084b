#include "classification/secret_scanner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <vector>

#include "classification/classifier.h"
#include "classification/secret_filter.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// Sets of ASCII characters, one bit each in characterSets.
enum CharacterSet : std::uint8_t {
  upperOrDigit = 1,      // [A-Z0-9]
  alphanumeric = 2,      // [A-Za-z0-9]
  alphanumericDash = 4,  // [A-Za-z0-9-]
  wordCharacter = 8,     // [A-Za-z0-9_]
  wordOrDash = 16,       // [A-Za-z0-9_-]
  hexDigit = 32,         // [0-9a-fA-F]
};

constexpr auto characterSets = [] {
  std::array<std::uint8_t, 256> sets{};
  const auto add = [&](int first, int last, int set) {
    for (int c = first; c <= last; ++c) sets[c] |= static_cast<std::uint8_t>(set);
  };
  constexpr int anyAlphanumeric = alphanumeric | alphanumericDash | wordCharacter | wordOrDash;
  add('A', 'Z', anyAlphanumeric | upperOrDigit);
  add('a', 'z', anyAlphanumeric);
  add('0', '9', anyAlphanumeric | upperOrDigit | hexDigit);
  add('A', 'F', hexDigit);
  add('a', 'f', hexDigit);
  add('_', '_', wordCharacter | wordOrDash);
  add('-', '-', alphanumericDash | wordOrDash);
  return sets;
}();

constexpr bool isIn(CharacterSet set, char c) {
  return characterSets[static_cast<unsigned char>(c)] & set;
}

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

class Prefixes {
 public:
  constexpr Prefixes(std::initializer_list<std::string_view> all) : count_(all.size()) {
    std::copy(all.begin(), all.end(), all_.begin());
  }
  constexpr const std::string_view* begin() const { return all_.data(); }
  constexpr const std::string_view* end() const { return all_.data() + count_; }

 private:
  std::array<std::string_view, 6> all_{};
  std::size_t count_;
};

// \b, one of the prefixes, then `least` to `most` characters of `body`. With `parts` above one,
// that many bodies with a full stop between them.
struct Pattern {
  Prefixes prefixes;
  std::size_t anchor;  // where in each prefix the filter finds it
  CharacterSet body;
  std::size_t least;
  std::size_t most = unlimited;
  bool endsAtWord = false;  // \b after the body as well
  std::size_t parts = 1;
};

// In order of precedence: where two overlap, the earlier one is kept.
constexpr Pattern patterns[] = {
    // JSON Web Token: \beyJ[A-Za-z0-9_-]{8,}\.[A-Za-z0-9_-]{8,}\.[A-Za-z0-9_-]{8,}
    {.prefixes = {"eyJ"}, .anchor = 1, .body = wordOrDash, .least = 8, .parts = 3},
    // \b(?:sk|pk|rk)-[A-Za-z0-9_-]{16,}
    {.prefixes = {"sk-", "pk-", "rk-"}, .anchor = 1, .body = wordOrDash, .least = 16},
    // \b(?:sk|pk|rk)_(?:live|test)_[A-Za-z0-9]{16,}
    {.prefixes = {"sk_live_", "sk_test_", "pk_live_", "pk_test_", "rk_live_", "rk_test_"},
     .anchor = 1,
     .body = alphanumeric,
     .least = 16},
    // \b(?:ghp|gho|ghu|ghs|ghr)_[A-Za-z0-9]{20,}
    {.prefixes = {"ghp_", "gho_", "ghu_", "ghs_", "ghr_"},
     .anchor = 1,
     .body = alphanumeric,
     .least = 20},
    // \bgithub_pat_[A-Za-z0-9_]{20,}
    {.prefixes = {"github_pat_"}, .anchor = 3, .body = wordCharacter, .least = 20},
    // \b(?:AKIA|ASIA)[A-Z0-9]{16}\b
    {.prefixes = {"AKIA", "ASIA"},
     .anchor = 2,
     .body = upperOrDigit,
     .least = 16,
     .most = 16,
     .endsAtWord = true},
    // \bAIza[A-Za-z0-9_-]{35}
    {.prefixes = {"AIza"}, .anchor = 1, .body = wordOrDash, .least = 35, .most = 35},
    // \bya29\.[A-Za-z0-9_-]{20,}
    {.prefixes = {"ya29."}, .anchor = 1, .body = wordOrDash, .least = 20},
    // \bxox[baprs]-[A-Za-z0-9-]{10,}
    {.prefixes = {"xoxb-", "xoxa-", "xoxp-", "xoxr-", "xoxs-"},
     .anchor = 0,
     .body = alphanumericDash,
     .least = 10},
};

// The last of all: \b[0-9a-fA-F]{40,}\b. It has no prefix and is found by samples instead.
constexpr std::size_t hexPattern = std::size(patterns);
constexpr std::size_t hexLeast = 40;
constexpr std::size_t patternCount = hexPattern + 1;

constexpr bool filterKnowsEveryPrefix() {
  for (const Pattern& pattern : patterns) {
    for (const std::string_view prefix : pattern.prefixes) {
      const auto at = [&](std::size_t i) { return i < prefix.size() ? prefix[i] : '\0'; };
      const std::size_t i = pattern.anchor;
      if (!secret_filter::isAnchor(at(i), at(i + 1), at(i + 2))) return false;
    }
  }
  return true;
}
static_assert(filterKnowsEveryPrefix());
// However a run lies, a sample lies wholly inside it.
static_assert(hexLeast + 1 >= secret_filter::hexStride + secret_filter::hexSampleBytes);

// Bit i of an entry: patterns[i] has a prefix with this byte at its anchor.
constexpr auto patternsByAnchor = [] {
  std::array<std::uint16_t, 256> table{};
  for (std::size_t i = 0; i < std::size(patterns); ++i) {
    for (const std::string_view prefix : patterns[i].prefixes) {
      table[static_cast<unsigned char>(prefix[patterns[i].anchor])] |= std::uint16_t(1U << i);
    }
  }
  return table;
}();

struct Match {
  std::size_t pattern;
  Range range;
};

// Decides whether there is a match where the filter found something. Each pattern is matched by
// itself: its matches come in text order and do not overlap, those of different patterns may.
class Scan {
 public:
  explicit Scan(std::string_view text) : text_(text) {}

  // Both are to be called for places in rising order.
  std::optional<Match> matchAtAnchor(std::size_t anchor);
  std::optional<Match> hexMatchAround(std::size_t sample);

 private:
  std::size_t prefixEnd(const Pattern& pattern, std::size_t start) const;
  std::size_t bodyEnd(const Pattern& pattern, std::size_t start);
  std::size_t runEnd(CharacterSet set, std::size_t start, std::size_t most = unlimited) const;
  bool wordBegins(std::size_t at) const;
  bool wordEnds(std::size_t at) const;

  std::string_view text_;
  std::array<std::size_t, std::size(patterns)> matchedTo_{};  // the end of each one's last match
  std::size_t hexScannedTo_ = 0;
  // Where the run ends that the last body of several parts began in, and where its last part does;
  // both hold for every later body that begins in this run. Many prefixes may share one run, and
  // reading it anew for each would be quadratic.
  std::size_t firstPartEnd_ = 0;
  std::size_t lastPartEnd_ = none;

  static constexpr std::size_t none = std::string_view::npos;
};

std::optional<Match> Scan::matchAtAnchor(std::size_t anchor) {
  unsigned candidates = patternsByAnchor[static_cast<unsigned char>(text_[anchor])];
  for (; candidates != 0; candidates &= candidates - 1) {
    const auto i = static_cast<std::size_t>(std::countr_zero(candidates));
    const Pattern& pattern = patterns[i];
    if (anchor < matchedTo_[i] + pattern.anchor) continue;
    const std::size_t start = anchor - pattern.anchor;
    const std::size_t bodyStart = prefixEnd(pattern, start);
    if (bodyStart == none || !wordBegins(start)) continue;
    const std::size_t end = bodyEnd(pattern, bodyStart);
    if (end == none || (pattern.endsAtWord && !wordEnds(end))) continue;
    matchedTo_[i] = end;
    return Match{i, {start, end - start}};
  }
  return std::nullopt;
}

std::optional<Match> Scan::hexMatchAround(std::size_t sample) {
  if (sample < hexScannedTo_) return std::nullopt;
  std::size_t start = sample;
  while (start > hexScannedTo_ && isIn(hexDigit, text_[start - 1])) --start;
  const std::size_t end = hexScannedTo_ = runEnd(hexDigit, sample);
  // Only the whole run can match: there is no word boundary inside it.
  if (end - start < hexLeast || !wordBegins(start) || !wordEnds(end)) return std::nullopt;
  return Match{hexPattern, {start, end - start}};
}

std::size_t Scan::prefixEnd(const Pattern& pattern, std::size_t start) const {
  // Byte by byte: most prefixes fail at the first or second, too soon for a call to pay off.
  const auto begins = [](std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size()) return false;
    std::size_t i = 0;
    while (i < prefix.size() && text[i] == prefix[i]) ++i;
    return i == prefix.size();
  };
  for (const std::string_view prefix : pattern.prefixes) {
    if (begins(text_.substr(start), prefix)) return start + prefix.size();
  }
  return none;
}

// The sets hold no full stop, so a body can end, and the next one begin, in one place only.
std::size_t Scan::bodyEnd(const Pattern& pattern, std::size_t start) {
  const auto partEnd = [&](std::size_t from) {
    const std::size_t end = runEnd(pattern.body, from, pattern.most);
    return end - from >= pattern.least ? end : none;
  };
  if (pattern.parts == 1) return partEnd(start);

  if (start >= firstPartEnd_) {
    firstPartEnd_ = lastPartEnd_ = runEnd(pattern.body, start);
    for (std::size_t part = 1; part < pattern.parts && lastPartEnd_ != none; ++part) {
      const bool goesOn = lastPartEnd_ < text_.size() && text_[lastPartEnd_] == '.';
      lastPartEnd_ = goesOn ? partEnd(lastPartEnd_ + 1) : none;
    }
  }
  const bool longEnough = firstPartEnd_ >= start + pattern.least;
  return longEnough ? lastPartEnd_ : none;
}

std::size_t Scan::runEnd(CharacterSet set, std::size_t start, std::size_t most) const {
  const std::size_t limit = std::min(text_.size() - start, most) + start;
  std::size_t end = start;
  while (end < limit && isIn(set, text_[end])) ++end;
  return end;
}

// \b before a word character: what stands before it, seen past combining marks, is none.
bool Scan::wordBegins(std::size_t at) const {
  while (at > 0) {
    const char last = text_[at - 1];
    if (static_cast<unsigned char>(last) < 0x80) return !isIn(wordCharacter, last);
    const text::Scalar scalar = text::scalarBefore(text_, at);
    const text::WordRole role = text::wordRole(scalar.value);
    if (role != text::WordRole::extender) return role == text::WordRole::separator;
    at -= scalar.bytes;
  }
  return true;
}

// \b after a word character. A combining mark is never at a boundary.
bool Scan::wordEnds(std::size_t at) const {
  if (at == text_.size()) return true;
  if (static_cast<unsigned char>(text_[at]) < 0x80) return !isIn(wordCharacter, text_[at]);
  return text::wordRole(text::scalarAt(text_, at).value) == text::WordRole::separator;
}

template <typename Visit>
void forEachBit(std::uint64_t bits, Visit visit) {
  for (; bits != 0; bits &= bits - 1) visit(static_cast<std::size_t>(std::countr_zero(bits)));
}

// All matches from the step that the filter found first; or only the first match that is met.
std::vector<Match> findMatches(std::string_view text, secret_filter::Step step, bool onlyOne) {
  using namespace secret_filter;
  std::vector<Match> found;
  Scan scan(text);
  const auto add = [&](const std::optional<Match>& match) {
    if (match) found.push_back(*match);
  };
  while (step.at < text.size() && !(onlyOne && !found.empty())) {
    forEachBit(step.anchors, [&](std::size_t i) { add(scan.matchAtAnchor(step.at + i)); });
    forEachBit(step.hexSamples,
               [&](std::size_t i) { add(scan.hexMatchAround(step.at + i * hexStride)); });
    step = nextStep(text, step.at + stepBytes);
  }
  return found;
}

// Adds the ranges that overlap none of `kept`. Both are sorted by start and free of overlaps.
std::vector<Range> merged(const std::vector<Range>& kept, const std::vector<Range>& later) {
  std::vector<Range> all;
  all.reserve(kept.size() + later.size());
  auto next = kept.begin();
  for (const Range& range : later) {
    while (next != kept.end() && next->end() <= range.start) all.push_back(*next++);
    if (next == kept.end() || next->start >= range.end()) all.push_back(range);
  }
  all.insert(all.end(), next, kept.end());
  return all;
}

}  // namespace

// Most texts hold nothing that stops the filter, and are done when it is.
std::vector<Range> secretRanges(std::string_view text) {
  const secret_filter::Step first = secret_filter::nextStep(text, 0);
  if (first.at == text.size()) return {};

  std::array<std::vector<Range>, patternCount> byPattern;
  for (const Match& match : findMatches(text, first, false)) {
    byPattern[match.pattern].push_back(match.range);
  }
  std::vector<Range> kept;
  for (const std::vector<Range>& ranges : byPattern) {
    if (!ranges.empty()) kept = merged(kept, ranges);
  }
  return kept;
}

bool containsSecret(std::string_view text) {
  const secret_filter::Step first = secret_filter::nextStep(text, 0);
  return first.at < text.size() && !findMatches(text, first, true).empty();
}

}  // namespace marbelot
