// What speaks for and against each language in a snippet: a table of clues, and how much of them
// a text holds.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace marbelot {

enum class Language : std::uint8_t {
  php,
  cpp,
  c,
  swift,
  python,
  typeScript,
  javaScript,
  cSharp,
  java,
  go,
  rust,
  ruby,
  json,
  shell,
  html,
  css,
  sql,
};
inline constexpr std::size_t languageCount = 17;

struct ClueWeight {
  Language language;
  int points;  // negative: speaks against it
};

// A clue is looked for outside strings and comments. It begins with a word or an operator; after
// that, and in it, these characters have a meaning:
//   ^ (first)  at the start of the line's text     $ (last)  at its end
//   %          a name                              one space  one or more blanks
//   `          a name that may have dots           ~          no or some blanks
struct Clue {
  std::string_view pattern;
  std::array<ClueWeight, 6> weights;
};

// The clues, in three tables. Points: 1 a hint, 2 to 3 usual in a language and rare in most others,
// 4 and more found in hardly any other text. The signals of the languages are among them;
// the rest tell alike languages apart.
std::span<const Clue> compiledClues();
std::span<const Clue> scriptingClues();
std::span<const Clue> markupClues();

struct ClueScores {
  std::array<int, languageCount> points{};
  std::size_t lines = 0;         // that are neither blank nor comment
  std::size_t proseLines = 0;    // of these, running text
  std::size_t foreignLines = 0;  // of these, what a terminal prints, or a list or quotation
  std::size_t endedLines = 0;    // of these, what a semicolon or a brace ends
  std::size_t taggedLines = 0;   // of these, what a tag begins or ends
  std::size_t commentLines = 0;
  bool isTable = false;  // mostly lists of literals

  int of(Language language) const { return points[static_cast<std::size_t>(language)]; }
};

// Of a text that is mostly comment, the examples in it tell what it was copied from.
enum class Comments { readWhenMost, skip };

// Linear in the text.
ClueScores weighClues(std::string_view text, Comments comments = Comments::readWhenMost);

}  // namespace marbelot
