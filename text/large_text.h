// Where a text becomes too large to be worked on while the user waits.
#pragma once

#include <cstddef>

namespace marbelot {

// Bytes that any of the text operations gets through well within one frame.
inline constexpr std::size_t largeTextBytes = 1 << 20;

}  // namespace marbelot
