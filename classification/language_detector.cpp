// Names the language of a snippet: the clues in it are weighed, and the language they speak for
// most is named when the text carries one of its signals and reads as code at all, or without a
// signal when the clues speak for it beyond doubt.
#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "classification/classifier.h"
#include "classification/language_clues.h"
#include "classification/language_pieces.h"
#include "classification/language_signals.h"
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

// A page: running text between tags, which mark at least a few of the lines.
bool isPage(const ClueScores& scores) {
  return scores.foreignLines == 0 && scores.commentLines < scores.lines &&
         scores.taggedLines >= 2 && scores.taggedLines * 8 >= scores.lines;
}

// What it takes to be named: more for longer texts, which hold more chance clues, and more when
// much of the text is running text or looks like a terminal.
int neededPoints(const ClueScores& scores, Language language) {
  constexpr int kLeast = 4, kMost = 11;
  const auto perLines = static_cast<int>(std::min<std::size_t>(scores.lines / 4, kMost - kLeast));
  int needed = kLeast + perLines;
  if (language == Language::html && isPage(scores)) return needed;
  const std::size_t plain = scores.proseLines + scores.foreignLines;
  if (plain * 3 > scores.lines) needed *= 2;
  if (plain * 3 > scores.lines * 2) needed *= 2;
  return needed;
}

// The languages, the one that the clues speak for most first.
std::array<Language, languageCount> ranked(const ClueScores& scores) {
  std::array<Language, languageCount> ranking{};
  for (std::size_t i = 0; i < languageCount; ++i) ranking[i] = static_cast<Language>(i);
  std::sort(ranking.begin(), ranking.end(), [&](Language a, Language b) {
    if (scores.of(a) != scores.of(b)) return scores.of(a) > scores.of(b);
    // Without a type to be seen, the two are the same language; most know it by the older name.
    if (a == Language::javaScript || b == Language::javaScript) return a == Language::javaScript;
    return a < b;
  });
  return ranking;
}

// Whether the clues say enough without a signal, which a piece out of the middle of a source
// seldom holds. What other texts have in common with a language does not count alone.
bool standsAlone(Language language, const ClueScores& scores, std::string_view text) {
  if (scores.lines == 0 || scores.lines + scores.commentLines < 2) return false;
  if (scores.of(language) < neededPoints(scores, language) * 3 / 2 + 2) return false;
  switch (language) {
    case Language::shell:
      return scores.foreignLines * 3 <= scores.lines && !holdsPrompt(text);
    case Language::html:
      return holdsPageTag(text);
    case Language::cpp:  // a list of files tells the language of the files
      if (scores.endedLines == 0 && text.find('#') == text.npos) return false;
      break;
    case Language::cSharp:
    case Language::css:
    case Language::java:
    case Language::php:
    case Language::rust:
      if (scores.endedLines == 0) return false;
      break;
    default:
      break;
  }
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
  if (scores.isTable && isJsonPiece(head)) return named(Language::json);
  const auto ranking = ranked(scores);
  const int best = scores.of(ranking.front());
  for (const Language language : ranking) {
    const int points = scores.of(language);
    // A close second is named when the first lacks its signal: they share most of their syntax.
    if (points < neededPoints(scores, language) || points * 4 < best * 3) break;
    if (carriesSignal(language, head)) return named(language);
  }
  if (const auto language = interpreted(head)) return named(*language);
  if (isJsonPiece(head)) return named(Language::json);
  const ClueScores code = scores.commentLines == 0 ? scores : weighClues(head, Comments::skip);
  const Language first = ranked(code).front();
  if (standsAlone(first, code, head)) return named(first);
  return std::nullopt;
}

}  // namespace marbelot
