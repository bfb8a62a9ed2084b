#pragma once

#include <cstddef>
#include <cstdint>

namespace marbelot {

// A picture's rows, first to last; in memory each is `step` bytes after the one before, or before
// it when the step is negative.
template <typename Byte>
struct Rows {
  Byte* first;
  std::ptrdiff_t step;
};

// Exchanges rows and columns: pixel c of row r goes to pixel r of row c.
void transposePixels(Rows<const std::uint8_t> from, std::int64_t rows, std::int64_t columns,
                     Rows<std::uint8_t> to);

}  // namespace marbelot
