// Unicode properties of scalars, as the system's own Unicode library has them. Any thread.
#pragma once

#include <cstdint>

namespace marbelot {

enum CharacterProperty : std::uint8_t {
  kAlphabetic = 1,
  kNumeric = 2,  // Numeric_Type other than None
  kLowercase = 4,
  kUppercase = 8,
  // Grapheme_Cluster_Break, UAX #29: controls stand apart from both neighbours (CR LF excepted);
  // bases from each other.
  kControl = 16,
  kBase = 32,
};

bool hasProperty(char32_t scalar, CharacterProperty property);

}  // namespace marbelot
