// Whether a piece of text looks like a phone number at all. libphonenumber takes 30 to 200 µs to
// answer, so it is asked only about stretches whose shape leaves few doubts.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot::detection {

// A run of digit groups with the separators people put into phone numbers between them.
struct Stretch {
  struct Group {
    std::size_t start = 0;
    std::size_t length = 0;
    char separator = '\0';  // before the group: one of " -./(", '\0' before the first
  };
  static constexpr std::size_t mostGroups = 8;
  static constexpr std::size_t mostDigits = 17;  // E.164 has 15, behind "00" or "011" as dialled

  std::size_t start = 0;  // with the "+" or the bracket before the first digit
  bool plus = false;
  std::array<Group, mostGroups> groups;
  std::size_t count = 0;
  std::size_t digits = 0;

  std::size_t end() const { return groups[count - 1].start + groups[count - 1].length; }
};

// The stretch whose first digit is at `digit`, looking back no further than `floor`. It ends before
// the group that would make it too long.
Stretch readStretch(std::string_view text, std::size_t digit, std::size_t floor);

// Where the digits that might belong together end when they are less than seven, else 0: a quick
// look that spares most numbers all others.
std::size_t fewDigitsEnd(std::string_view text, std::size_t digit);

// Whether nothing in the shape of the stretch or in the text around it says that it is something
// else: a date, an address of the network, a version, money, the number of an order or a book.
bool isPlausible(std::string_view text, const Stretch& stretch);

// The last of the three or more short groups that the stretch begins with, which only columns of
// figures do; 0 when it does not. Short are single digits, and pairs where no number is in pairs.
std::size_t lastOfColumn(const Stretch& stretch, bool northAmerican);

// Where to look for the next number when this stretch is none: at its next group that could be the
// first of a number, as in "03.05.2026 030 901820", or behind it.
std::size_t resumption(std::string_view text, const Stretch& stretch);

// Whether the stretch is written as national numbers are and as little else is, with brackets and
// dashes: "(555) 123-4567", "(01234) 567890". Such a one is believed even if nobody has it.
bool isNationalFormat(std::string_view text, const Stretch& stretch, bool northAmerican);

// Whether the region belongs to the North American Numbering Plan.
bool isNorthAmerican(const std::string& region);
// Cuts the stretch to the one number of that plan that it starts with; false when there is none.
bool cutToNorthAmerican(std::string_view text, Stretch& stretch);
// Cuts a stretch that is too long for a national number to the groups before a blank that are not;
// false when there is nothing to cut.
bool cutToNational(Stretch& stretch);

}  // namespace marbelot::detection
