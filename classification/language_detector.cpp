// Names the language of a snippet: of those of which a signal stands in the text, the one that the
// clues speak for most, when they say enough.
#include "classification/language_detector.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "classification/classifier.h"
#include "classification/language_signals.h"
#include "classification/line_reader.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::array<std::string_view, languageCount> names = {
    "PHP", "C++",  "C",    "Swift", "Python", "TypeScript", "JavaScript", "C#", "Java",
    "Go",  "Rust", "Ruby", "JSON",  "Shell",  "HTML",       "CSS",        "SQL"};

// A page: running text between tags, which mark at least a few of the lines.
bool isPage(const ClueCounts& counts) {
  return counts.foreignLines == 0 && counts.commentLines < counts.lines &&
         counts.taggedLines >= 2 && counts.taggedLines * 8 >= counts.lines;
}

// What it takes to be named: more for longer texts, which hold more chance clues, and more when
// much of the text is running text or looks like a list.
int neededPoints(const ClueCounts& counts, Language language) {
  constexpr int least = 4, most = 11;
  const auto perLines = static_cast<int>(std::min<std::size_t>(counts.lines / 4, most - least));
  int needed = least + perLines;
  if (language == Language::html && isPage(counts)) return needed;
  const std::size_t plain = counts.proseLines + counts.foreignLines;
  if (plain * 3 > counts.lines) needed *= 2;
  if (plain * 3 > counts.lines * 2) needed *= 2;
  return needed;
}

int pointsOf(Language language, const ClueScores& scores) {
  return scores[static_cast<std::size_t>(language)];
}

// The languages, the one that the clues speak for most first.
std::array<Language, languageCount> ranked(const ClueScores& scores) {
  std::array<Language, languageCount> ranking{};
  for (std::size_t i = 0; i < languageCount; ++i) ranking[i] = static_cast<Language>(i);
  std::sort(ranking.begin(), ranking.end(), [&](Language a, Language b) {
    if (pointsOf(a, scores) != pointsOf(b, scores))
      return pointsOf(a, scores) > pointsOf(b, scores);
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
  } programs[] = {{"python", Language::python},
                  {"node", Language::javaScript},
                  {"ruby", Language::ruby},
                  {"php", Language::php}};
  std::string_view line = text::trimmedBlanks(LineReader(script).next()->substr(2));
  constexpr std::string_view env = "/usr/bin/env ";
  line = line.starts_with(env) ? line.substr(env.size()) : line.substr(0, line.find(' '));
  line = line.substr(line.rfind('/') + 1);
  for (const auto& [program, language] : programs) {
    if (line.starts_with(program)) return language;
  }
  return std::nullopt;
}

}  // namespace

std::string_view languageName(Language language) {
  return names[static_cast<std::size_t>(language)];
}

std::string_view leadingLines(std::string_view text) {
  // A language shows early; of longer texts this many bytes are looked at, to the end of a line.
  constexpr std::size_t lookAt = std::size_t{64} << 10;
  if (text.size() <= lookAt) return text;
  const std::size_t lineEnd = text.rfind('\n', lookAt);
  return text.substr(0, lineEnd == text.npos ? lookAt : lineEnd);
}

std::optional<std::string_view> languageOf(std::string_view trimmed, const LineCounts& headLines) {
  if (carriesSignal(Language::shell, trimmed)) return languageName(Language::shell);
  const std::string_view head = leadingLines(trimmed);
  if (trimmed.starts_with("#!/") || trimmed.starts_with("#! /")) {
    const auto language = interpreted(head);
    return language && carriesSignal(*language, head) ? std::optional(languageName(*language))
                                                      : std::nullopt;
  }
  if (!trimmed.starts_with("<?php") && showsSession(headLines)) return std::nullopt;
  if (isJson(trimmed)) return languageName(Language::json);

  const ClueCounts counts = countClues(head);
  const auto language = likeliest(counts, weighClues(counts), trimmed);
  return language ? std::optional(languageName(*language)) : std::nullopt;
}

std::optional<Language> likeliest(const ClueCounts& counts, const ClueScores& scores,
                                  std::string_view trimmed) {
  const std::string_view head = leadingLines(trimmed);
  const auto ranking = ranked(scores);
  const int best = pointsOf(ranking.front(), scores);
  for (const Language language : ranking) {
    const int points = pointsOf(language, scores);
    // A close second is named when the first lacks its signal: they share most of their syntax.
    if (points < neededPoints(counts, language) || points * 4 < best * 3) break;
    const bool isWhole = language == Language::json;
    if (carriesSignal(language, isWhole ? trimmed : head)) return language;
  }
  return std::nullopt;
}

std::optional<std::string_view> detectLanguage(std::string_view text) {
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(text);
  return languageOf(trimmed, countLines(leadingLines(trimmed)));
}

}  // namespace marbelot
