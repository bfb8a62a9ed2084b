// Words and numbers of natural text, read one at a time from wherever a finder stands.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>

#include "platform/text.h"

namespace marbelot::detection {

struct Token {
  enum class Kind {
    end,      // of the text, or a word or number too long to matter
    word,     // letters, with apostrophes between them
    number,   // ASCII digits
    newline,  // one line end and the blanks around it
    symbol,   // any other single scalar
  };

  Kind kind = Kind::end;
  Range range;
  bool spaced = false;   // blanks before it
  bool capital = false;  // a word that starts with an upper-case letter
  std::string lower;     // the word in lower case, or the digits
  char32_t symbol = 0;

  bool isWord() const { return kind == Kind::word; }
  bool isNumber() const { return kind == Kind::number; }
  bool is(char32_t c) const { return kind == Kind::symbol && symbol == c; }
  std::size_t end() const { return range.end(); }
};

enum class Hyphens { separate, join };  // whether "Karl-Marx-Allee" is one word

// The token at or after `at`, blanks skipped (64 at most, so that a look ahead stays cheap).
Token tokenAt(std::string_view text, std::size_t at, Hyphens hyphens = Hyphens::separate);

// Where the word that ends at `end` starts, not before `floor`; `end` itself when there is none.
// Hyphens and apostrophes join.
std::size_t wordStart(std::string_view text, std::size_t end, std::size_t floor);

// The bytes of the blank at `at`, or of the one that ends at `end`, be it a space, a tab or a
// no-break or ideographic one; 0 where none stands.
std::size_t blankAt(std::string_view text, std::size_t at);
std::size_t blankBefore(std::string_view text, std::size_t end);

// A fixed set of lower-case words.
class WordSet {
 public:
  explicit WordSet(std::string_view words);  // separated by blanks
  bool has(const std::string& word) const { return words_.count(word) != 0; }

 private:
  std::unordered_set<std::string> words_;
};

// The value of up to nine digits.
int numberOf(std::string_view digits);
// Two digits at `at` up to `most`, not followed by a third; -1 for none.
int twoDigits(std::string_view text, std::size_t at, int most);

}  // namespace marbelot::detection
