// The clues, found by what they begin with.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "classification/language_clues.h"

namespace marbelot {

// A clue taken apart: what it begins with finds it, the rest is compared.
struct CompiledClue {
  std::string_view rest;
  bool atLineStart;
  bool atLineEnd;
  bool isMark;  // begins with an operator, which is part of the rest
};

class ClueIndex {
 public:
  using Places = std::vector<std::size_t>;  // in the table

  static const ClueIndex& shared();

  const CompiledClue& operator[](std::size_t place) const { return clues_[place]; }
  std::size_t size() const { return clues_.size(); }

  // Those that begin with any name; anywhere, and at the start of a line only.
  const Places& anyName() const { return anyName_; }
  const Places& anyFirstName() const { return anyFirstName_; }
  const Places& mark(char c) const { return byMark_[static_cast<unsigned char>(c) & 0x7F]; }
  const Places& word(std::string_view word) const;

 private:
  ClueIndex();
  void add(std::string_view pattern);

  std::vector<CompiledClue> clues_;
  std::unordered_map<std::string_view, Places> byWord_;
  std::array<Places, 128> byMark_;
  Places anyName_, anyFirstName_, none_;
};

// Whether the clue's rest stands at `at` of the line, whose code ends at `codeEnd`.
bool matches(const CompiledClue& clue, std::string_view line, std::size_t at, std::size_t codeEnd);

}  // namespace marbelot
