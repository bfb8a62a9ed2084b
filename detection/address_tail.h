// The part of an address after the street: unit, town, state, postcode, country.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace marbelot::detection {

// How the code that ends an address tells a real one.
enum class AddressCode {
  state,     // a US state without a ZIP code
  postcode,  // a British or Canadian postcode, or an American or Australian state with its code
  town,      // five (or four) digits and a town, as on the Continent
};

struct AddressTail {
  std::size_t end = 0;
  AddressCode code = AddressCode::state;
  std::size_t separators = 0;  // commas and line ends before the code
  bool short_code = false;     // a town with four digits
};

// Reads on from `at`, behind the house number or the street, over capitalised words, units, commas
// and single line ends to the code that ends an address. Nothing when there is none near.
std::optional<AddressTail> readAddressTail(std::string_view text, std::size_t at);

// The end of "10115 Berlin" when it is the next thing at `at`, a comma or a line end skipped.
std::optional<AddressTail> readTown(std::string_view text, std::size_t at);

// Past a country's name behind the address, or `at`.
std::size_t afterCountry(std::string_view text, std::size_t at);

}  // namespace marbelot::detection
