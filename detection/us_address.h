// Reads what follows the number of a house, or of a box, in an address of the United States:
// street, units, town, state and ZIP code, in capitals or not, with commas, line ends or only
// blanks between.
#pragma once

#include <cstddef>
#include <string_view>

namespace marbelot::detection {

// How sure it is that an address begins here, before its street is read.
enum class UsStart {
  number,   // digits, which may count anything
  spelled,  // "One": only a whole address is believed
  box,      // "PO Box 12", "RR 2 Box 5": no street follows
};

// Whether five digits follow soon, without which words in lower case make no address.
bool hasZipNear(std::string_view text, std::size_t at);

struct UsAddress {
  std::size_t whole = 0;   // its end with the town, the state or the code; 0: none
  std::size_t street = 0;  // its end if the street and at most a town are all there is; 0: none
};

// What follows a number that starts at `start` and ends at `at`.
UsAddress readUsAddress(std::string_view text, std::size_t start, std::size_t at, UsStart kind);

}  // namespace marbelot::detection
