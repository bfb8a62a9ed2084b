// The part of an address after the street: unit, town, state, postcode, country.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace marbelot::detection {

struct AddressTail {
  std::size_t end = 0;
  // A British or Canadian postcode, or an Australian state with its code; else five (or four)
  // digits and a town, as on the Continent.
  bool postcode = false;
  std::size_t separators = 0;  // commas and line ends before the code
  bool shortCode = false;      // a town with four digits
};

// Reads on from `at`, behind the house number or the street, over capitalised words, units, commas
// and single line ends to the code that ends an address. Nothing when there is none near.
std::optional<AddressTail> readAddressTail(std::string_view text, std::size_t at);

// The end of "10115 Berlin" when it is the next thing at `at`, a comma or a line end skipped.
std::optional<AddressTail> readTown(std::string_view text, std::size_t at);

// Past a country's name behind the address, or `at`.
std::size_t afterCountry(std::string_view text, std::size_t at);

}  // namespace marbelot::detection
