// The lines of tables, frames and underlined links, which recognisers take for letters.
#pragma once

#include <cstdint>

#include "recognition/areas.h"

namespace marbelot {

// Erases straight thin lines that are longer than a stroke of a letter.
void eraseRules(Plane<std::uint8_t>& ink);

}  // namespace marbelot
