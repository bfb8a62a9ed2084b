// Boxes that stand for a street and its house: "PO Box 12", "RR 2, Box 88A", "Postfach 12 34".
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/text.h"

namespace marbelot::detection {

// The box whose number's first digit is at `digit`, with the words and numbers before it that
// belong to it, down to `floor`; empty when the number is none of a box.
Range boxAt(std::string_view text, std::size_t digit, std::size_t floor);

}  // namespace marbelot::detection
