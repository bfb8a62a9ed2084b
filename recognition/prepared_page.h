// Makes what is on a screen look like scanned pages: dark text of a good size on white paper,
// whatever its colours were. Recognisers are trained on such pages.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/bitmap.h"
#include "recognition/areas.h"

namespace marbelot {

struct Page {
  int width = 0;                   // pixels
  int height = 0;                  // pixels
  double scale = 1;                // page pixels to one of the picture
  std::vector<std::uint8_t> gray;  // rows top first without gaps; 255 is paper
};

// A picture, on as many pages from the top down as it takes to have letters of a good size on them.
// Each page is inside what recognisers can take, and made when it is asked for.
class Pages {
 public:
  explicit Pages(const Bitmap& picture);
  // 0 when the picture is too small for a letter, or holds nothing that differs from its
  // background.
  std::size_t count() const { return cuts_.empty() ? 0 : cuts_.size() - 1; }
  Page at(std::size_t page) const;

 private:
  Plane<std::uint8_t> gray_;
  double scale_ = 1;
  std::vector<int> cuts_;  // rows, the first and the last one included
};

}  // namespace marbelot
