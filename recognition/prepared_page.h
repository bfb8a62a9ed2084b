// Makes what is on a screen look like a scanned page: dark text of a good size on white paper,
// whatever its colours were. Recognisers are trained on such pages.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/bitmap.h"

namespace marbelot {

struct Page {
  int width = 0;                   // pixels
  int height = 0;                  // pixels
  double scale = 1;                // page pixels to one of the picture
  std::vector<std::uint8_t> gray;  // rows top first without gaps; 255 is paper
};

// Inside what recognisers can take, whatever the picture's size. None when the picture is too small
// for a letter, or holds nothing that differs from its background.
std::optional<Page> preparedPage(const Bitmap& picture);

}  // namespace marbelot
