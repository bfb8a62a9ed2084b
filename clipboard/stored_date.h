// Dates of the stored history: seconds as the shortest decimal that reads back as the same double.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace marbelot {

// Always with a fractional part, e.g. "1732183267.25" or "1732183267.0". `seconds` is finite.
std::string storedDate(double seconds);

// None when the text is not a finite decimal number from end to end.
std::optional<double> parsedDate(std::string_view text);

}  // namespace marbelot
