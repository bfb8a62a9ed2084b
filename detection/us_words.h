// The vocabulary of addresses in the United States, as the Postal Service's Publication 28 has it:
// units (appendix C2), states (B). All words are looked up in lower case.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot::detection {

bool isLeadingStreetType(const std::string& word);  // "broadway", before the name or without one
bool isRoadNumbered(const std::string& word);       // "highway", what a road's number follows

// What stands for a part of a building: "Apt 4", "Rear".
enum class UnitWord {
  none,
  numbered,  // a number follows
  place,     // nothing need follow: "Penthouse"
  everyday,  // a word of its own too, unless a number follows: "Key", "Lot", "Front"
};
UnitWord usUnit(const std::string& word);

struct State {
  std::size_t end = 0;  // bytes from the start of the text; 0: none
  bool code = false;    // two capitals: "IL"
  bool full = false;    // the name
};
// The state at `at`, blanks skipped: "IL", "Ill.", "D.C.", "North Carolina".
State readState(std::string_view text, std::size_t at);

// The end of a ZIP code (with four more digits or not) at `at`, blanks, a comma and a line end
// skipped; 0: none.
std::size_t readZip(std::string_view text, std::size_t at);

}  // namespace marbelot::detection
