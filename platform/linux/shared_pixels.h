// How pixels cross between processes: in a memory file, a header and then the rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/bitmap.h"

namespace marbelot {

struct SharedPixels {
  std::uint32_t width = 0;   // pixels
  std::uint32_t height = 0;  // pixels
  std::uint64_t bytesPerRow = 0;
};

// Where the rows begin: on a page of their own.
inline constexpr std::size_t sharedPixelsOffset = 4096;

// The pixels stay where the other process put them, until the bitmap is gone. None when the file is
// not laid out like that.
std::optional<Bitmap> mappedPixels(int file);

}  // namespace marbelot
