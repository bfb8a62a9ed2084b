// The interface of marbelot-phone, the loadable module that alone links libphonenumber: the
// library and what it needs take longer to load than the program itself and are rarely wanted.
#pragma once

#include <cstddef>

extern "C" {

struct MarbelotPhone {
  std::size_t start;   // bytes from the start of the stretch
  std::size_t length;  // bytes
  char e164[24];       // "+" and digits, terminated by a zero
};

// Finds the first phone number in `stretch`, a short piece of text in UTF-8: a valid one, or with
// `possible` not zero any of a length that the country's numbers have; national numbers
// are read as those of `region` (ISO 3166, terminated by a zero). Returns 1 and fills `found`, or
// returns 0. Safe to call from any thread.
int marbelotPhoneFind(const char* stretch, std::size_t length, const char* region, int possible,
                      MarbelotPhone* found);

}  // extern "C"

namespace marbelot::detection {

#ifdef __APPLE__
constexpr const char* phoneModule = "@rpath/libmarbelot-phone.so";
#else
constexpr const char* phoneModule = "libmarbelot-phone.so";
#endif
constexpr const char* phoneFunctionName = "marbelotPhoneFind";
using PhoneFunction = decltype(&marbelotPhoneFind);

}  // namespace marbelot::detection
