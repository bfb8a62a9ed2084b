// Decimal numbers as people write them in op strings, whatever the user's locale.
#pragma once

#include <optional>
#include <string_view>

namespace marbelot {

// The whole text as a number: "0.5", ".5", "-2", "1e3", "inf" and "nan" in any case of
// letters. One beyond all doubles is infinite. None when it is not one.
std::optional<double> decimalNumber(std::string_view text);

}  // namespace marbelot
