// The collection of copies: its pieces, how they are joined, and how many characters that makes.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace marbelot {

struct SeparatorDef {
  std::string_view title;
  std::string_view key;  // what the settings hold
  std::string_view joinsWith;
};

inline constexpr std::array<SeparatorDef, 4> separatorDefs{{
    {"Newline", "newline", "\n"},
    {"Blank line", "blank", "\n\n"},
    {"Space", "space", " "},
    {"Comma", "comma", ", "},
}};

// The text that joins pieces under `key`; LF for an unknown key.
std::string_view joiningText(std::string_view key);

class Collection {
 public:
  Collection() = default;
  explicit Collection(std::vector<SharedText> pieces);

  // Appends the text as it was copied. False, and nothing is added, when it holds only blanks and
  // line breaks or repeats the last piece.
  bool append(SharedText text);
  // False when there is nothing to remove.
  bool removeLast();
  void clear();

  const std::vector<SharedText>& pieces() const { return pieces_; }
  bool empty() const { return pieces_.empty(); }
  std::size_t size() const { return pieces_.size(); }

  std::string joined(std::string_view separatorKey) const;
  std::size_t joinedBytes(std::string_view separatorKey) const;
  // Characters of joined(separatorKey). Each piece is counted once in its life and the joined text
  // is not built, so a menu may ask at every opening.
  std::size_t characterCount(std::string_view separatorKey) const;
  // Bytes of the pieces that the next characterCount has to count.
  std::size_t uncountedBytes() const;
  // Takes over what a copy of this collection has counted since.
  void adoptCounts(const Collection& copy);

 private:
  std::vector<SharedText> pieces_;
  mutable std::vector<std::size_t> counts_;  // characters of the first pieces; the rest on demand
  mutable std::string_view totalsFor_;       // the joining text that `totals_` are for
  mutable std::vector<std::size_t> totals_;  // characters of the first 1, 2, … pieces joined
};

// "Collect copies", with the number of pieces when there are any.
std::string collectionTitle(std::size_t pieces);
// "2 pieces · 7 characters"; "…" for a number that is not known yet.
std::string collectionSummary(std::size_t pieces, std::optional<std::size_t> characters);

}  // namespace marbelot
