// What speaks for and against each language in a snippet: a table of clues, and how much of them
// a text holds.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

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
using ClueWeights = std::array<ClueWeight, 12>;

// A clue is looked for outside strings and comments. It begins with a word or an operator; after
// that, and in it, these characters have a meaning:
//   ^ (first)  at the start of the line's text     $ (last)  at its end
//   %          a name                              one space  one or more blanks
//   `          a name that may have dots           ~          no or some blanks
struct Clue {
  std::string_view pattern;
  ClueWeights weights;
};

// What no pattern can say of a line.
enum class Shape : std::uint8_t {
  bareStatement,  // an assignment or a call with nothing to end it
  colonBlock,     // indented behind "if …:" and the like
  fourDeepBlock,  // the same, by multiples of four
  selector,       // opens a rule of a style sheet
  pascalCall,     // Something.DoIt(
};
inline constexpr std::size_t shapeCount = 5;

struct ShapeClue {
  Shape shape;
  ClueWeights weights;
};

// Points: 1 a hint, 2 to 3 usual in a language and rare in most others, 4 and more found in hardly
// any other text. bench/clue_worth tells what each clue is worth on a folder of snippets.
std::span<const Clue> languageClues();
std::span<const ShapeClue> shapeClues();

// How often a text holds each clue, as far as it counts: more of the same says little more.
struct ClueCounts {
  std::vector<std::uint8_t> clues;  // in the order of the table
  std::array<std::uint8_t, shapeCount> shapes{};
  std::size_t lines = 0;         // that are neither blank nor comment
  std::size_t proseLines = 0;    // of these, running text
  std::size_t foreignLines = 0;  // of these, lists, quotations and fences
  std::size_t taggedLines = 0;   // of these, what a tag begins or ends
  std::size_t commentLines = 0;
};

// Linear in the text. Of a text that is mostly comment the examples in it count, too: they tell
// what it was copied from.
ClueCounts countClues(std::string_view text);

using ClueScores = std::array<int, languageCount>;

inline constexpr std::size_t noClue = static_cast<std::size_t>(-1);

// The points of each language; as if the clue at `without` of the table were not there.
ClueScores weighClues(const ClueCounts& counts, std::size_t without = noClue);

}  // namespace marbelot
