// How pixels cross from the codecs' process: in a memory file, a header and then the rows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace marbelot {

struct SharedPixels {
  std::uint32_t width = 0;   // pixels
  std::uint32_t height = 0;  // pixels
  std::uint64_t bytesPerRow = 0;
};

// Where the rows begin: on a page of their own.
inline constexpr std::size_t sharedPixelsOffset = 4096;

}  // namespace marbelot
