// Where the system sees composed characters.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace marbelot {

// The end of each character in UTF-16 units. For texts without controls and line breaks, which
// Foundation does not treat as UAX #29 does.
std::vector<std::size_t> composedEnds(std::string_view text);

}  // namespace marbelot
