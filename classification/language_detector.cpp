// Names the language of a snippet: of those of which a signal stands in the text, the one that the
// clues speak for most, when they say enough.
#include "classification/language_detector.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "classification/classifier.h"
#include "classification/language_clues.h"
#include "classification/language_signals.h"
#include "classification/line_reader.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::array<std::string_view, languageCount> kNames = {
    "PHP", "C++",  "C",    "Swift", "Python", "TypeScript", "JavaScript", "C#", "Java",
    "Go",  "Rust", "Ruby", "JSON",  "Shell",  "HTML",       "CSS",        "SQL"};

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

// The language of the program that a script names to run it: "#!/usr/bin/env python3".
std::optional<Language> interpreted(std::string_view script) {
  constexpr struct {
    std::string_view program;
    Language language;
  } kPrograms[] = {{"python", Language::python},
                   {"node", Language::javaScript},
                   {"ruby", Language::ruby},
                   {"php", Language::php}};
  std::string_view line = text::trimmedBlanks(LineReader(script).next()->substr(2));
  constexpr std::string_view kEnv = "/usr/bin/env ";
  line = line.starts_with(kEnv) ? line.substr(kEnv.size()) : line.substr(0, line.find(' '));
  line = line.substr(line.rfind('/') + 1);
  for (const auto& [program, language] : kPrograms) {
    if (line.starts_with(program)) return language;
  }
  return std::nullopt;
}

}  // namespace

std::string_view leadingLines(std::string_view text) {
  // A language shows early; of longer texts this many bytes are looked at, to the end of a line.
  constexpr std::size_t kLookAt = std::size_t{64} << 10;
  if (text.size() <= kLookAt) return text;
  const std::size_t lineEnd = text.rfind('\n', kLookAt);
  return text.substr(0, lineEnd == text.npos ? kLookAt : lineEnd);
}

std::optional<std::string_view> languageOf(std::string_view trimmed, const LineCounts& headLines) {
  const auto named = [](Language language) { return kNames[static_cast<std::size_t>(language)]; };
  if (carriesSignal(Language::shell, trimmed)) return named(Language::shell);
  const std::string_view head = leadingLines(trimmed);
  if (trimmed.starts_with("#!/")) {
    const auto language = interpreted(head);
    return language && carriesSignal(*language, head) ? std::optional(named(*language))
                                                      : std::nullopt;
  }
  if (!trimmed.starts_with("<?php") && showsSession(headLines)) return std::nullopt;
  if (isJson(trimmed)) return named(Language::json);

  const ClueScores scores = weighClues(head);
  const auto ranking = ranked(scores);
  const int best = scores.of(ranking.front());
  for (const Language language : ranking) {
    const int points = scores.of(language);
    // A close second is named when the first lacks its signal: they share most of their syntax.
    if (points < neededPoints(scores, language) || points * 4 < best * 3) break;
    const bool whole = language == Language::json;
    if (carriesSignal(language, whole ? trimmed : head)) return named(language);
  }
  return std::nullopt;
}

std::optional<std::string_view> detectLanguage(std::string_view text) {
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(text);
  return languageOf(trimmed, countLines(leadingLines(trimmed)));
}

}  // namespace marbelot
