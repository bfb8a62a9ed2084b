// The filters of PNG's rows, and undoing them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace marbelot {

// Whichever of the three is closest to left + above - corner.
inline int paethPredictor(int left, int above, int corner) {
  const int toLeft = std::abs(above - corner);
  const int toAbove = std::abs(left - corner);
  const int toCorner = std::abs(left + above - 2 * corner);
  const int other = toAbove <= toCorner ? above : corner;
  return toLeft <= toAbove && toLeft <= toCorner ? left : other;
}

inline constexpr std::size_t unfilterOverrun = 8;

// Turns the filtered `row` into what it was; `above` is the row above it, of zeros for the first.
// `pixel`: bytes of one pixel, at least 1. False when there is no such filter. As many bytes behind
// each row as unfilterOverrun may be read.
bool unfilter(int filter, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
              std::size_t pixel);

// The same for two rows, of which the second stands below the first, where that is quicker than one
// after the other: else false, and the rows are as they were.
bool unfilterTwo(int filter, int filterBelow, std::uint8_t* row, std::uint8_t* below,
                 const std::uint8_t* above, std::size_t bytes, std::size_t pixel);

// One row, byte by byte.
bool unfilterSimply(int filter, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                    std::size_t pixel);

}  // namespace marbelot
