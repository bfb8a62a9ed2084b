// Names the language of a snippet: the clues in it are weighed, and the language they speak for
// most is named when the text carries one of its signals and reads as code at all.
#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "clipboard/classifier.h"
#include "clipboard/language_clues.h"
#include "clipboard/language_pieces.h"
#include "clipboard/language_signals.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::array<std::string_view, languageCount> kNames = {
    "PHP", "C++",  "C",    "Swift", "Python", "TypeScript", "JavaScript", "C#", "Java",
    "Go",  "Rust", "Ruby", "JSON",  "Shell",  "HTML",       "CSS",        "SQL"};

// A language shows early; of longer texts this many bytes are looked at, to the end of a line.
constexpr std::size_t kLookAt = std::size_t{64} << 10;

std::string_view leadingLines(std::string_view text) {
  if (text.size() <= kLookAt) return text;
  const std::size_t lineEnd = text.rfind('\n', kLookAt);
  return text.substr(0, lineEnd == text.npos ? kLookAt : lineEnd);
}

// What it takes to be named: more for longer texts, which hold more chance clues, and more when
// much of the text is running text or looks like a terminal.
int neededPoints(const ClueScores& scores) {
  constexpr int kLeast = 4, kMost = 11;
  const auto perLines = static_cast<int>(std::min<std::size_t>(scores.lines / 4, kMost - kLeast));
  int needed = kLeast + perLines;
  const std::size_t plain = scores.proseLines + scores.foreignLines;
  if (plain * 3 > scores.lines) needed *= 2;
  if (plain * 3 > scores.lines * 2) needed *= 2;
  return needed;
}

// Whether the clues say enough without a signal: a piece out of the middle of a source seldom
// holds one.
bool standsAlone(Language language, const ClueScores& scores, std::string_view text) {
  constexpr std::size_t kFewestLines = 2;
  if (scores.lines < kFewestLines || scores.points[static_cast<std::size_t>(language)] <
                                         neededPoints(scores) * 3 / 2 + 2) {
    return false;
  }
  if (language == Language::shell) return !holdsPrompt(text);
  if (language == Language::html) return holdsPageTag(text);
  return scores.proseLines * 4 <= scores.lines;
}

}  // namespace

std::optional<std::string_view> detectLanguage(std::string_view text) {
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(text);
  const auto named = [](Language language) { return kNames[static_cast<std::size_t>(language)]; };
  if (isJson(trimmed)) return named(Language::json);
  if (carriesSignal(Language::shell, trimmed)) return named(Language::shell);

  const std::string_view head = leadingLines(trimmed);
  const ClueScores scores = weighClues(head);
  std::array<Language, languageCount> ranking{};
  for (std::size_t i = 0; i < languageCount; ++i) ranking[i] = static_cast<Language>(i);
  std::sort(ranking.begin(), ranking.end(), [&](Language a, Language b) {
    if (scores.of(a) != scores.of(b)) return scores.of(a) > scores.of(b);
    // Without a type to be seen, the two are the same language; most know it by the older name.
    if (a == Language::javaScript || b == Language::javaScript) return a == Language::javaScript;
    return a < b;
  });
  const int best = scores.of(ranking.front());
  for (const Language language : ranking) {
    const int points = scores.of(language);
    // A close second is named when the first lacks its signal: they share most of their syntax.
    if (points < neededPoints(scores) || points * 4 < best * 3) break;
    if (carriesSignal(language, head)) return named(language);
  }
  if (isJsonPiece(head)) return named(Language::json);
  if (standsAlone(ranking.front(), scores, head)) return named(ranking.front());
  return std::nullopt;
}

}  // namespace marbelot
