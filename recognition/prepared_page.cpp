#include "recognition/prepared_page.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "recognition/areas.h"
#include "recognition/backgrounds.h"
#include "recognition/magnify.h"
#include "recognition/rules.h"

namespace marbelot {
namespace {

// A letter of fewer pixels cannot be told from another one.
constexpr int smallestSide = 5;
constexpr int margin = 20;                          // of the page
constexpr double longestSide = 32000 - 2 * margin;  // of the page, inside that
constexpr double highestPage = 8000;  // recognisers take the longer for a line the more there are
constexpr double mostPixels = 100 << 20;            // of the page
constexpr double mostPixelsInAll = 4 * mostPixels;  // which take a minute
// Ink below is the noise of photos and compressed pictures.
constexpr std::uint8_t faintest = 24;

// Faint text becomes as dark as any, by the darkest ink around it.
void strengthen(Plane<std::uint8_t>& ink) {
  constexpr int cell = 32;  // pixels
  Plane<std::uint8_t> darkest{(ink.width + cell - 1) / cell, (ink.height + cell - 1) / cell, {}};
  darkest.values.resize(darkest.at(0, darkest.height));
  for (int y = 0; y < ink.height; ++y) {
    for (int x = 0; x < ink.width; ++x) {
      std::uint8_t& most = darkest.values[darkest.at(x / cell, y / cell)];
      most = std::max(most, ink.values[ink.at(x, y)]);
    }
  }
  const auto around = [&darkest](int column, int row) {
    int most = faintest;
    for (int y = std::max(row - 1, 0); y <= std::min(row + 1, darkest.height - 1); ++y) {
      for (int x = std::max(column - 1, 0); x <= std::min(column + 1, darkest.width - 1); ++x)
        most = std::max<int>(most, darkest.values[darkest.at(x, y)]);
    }
    return most;
  };
  for (int top = 0; top < ink.height; top += cell) {
    for (int left = 0; left < ink.width; left += cell) {
      const int most = around(left / cell, top / cell);
      for (int y = top; y < std::min(top + cell, ink.height); ++y) {
        for (int x = left; x < std::min(left + cell, ink.width); ++x) {
          std::uint8_t& value = ink.values[ink.at(x, y)];
          value = static_cast<std::uint8_t>(std::min(value * 255 / most, 255));
        }
      }
    }
  }
}

// How high the smaller letters are in pixels, most of which have no ascender; 0 where there are
// none.
int letterHeight(const Plane<std::uint8_t>& ink) {
  constexpr std::uint8_t isInk = 128;
  constexpr int lowest = 4, highest = 120;  // pixels
  constexpr std::size_t fewest = 4;
  Plane<std::uint32_t> mask{ink.width, ink.height, {}};
  mask.values.reserve(ink.values.size());
  for (const std::uint8_t value : ink.values) mask.values.push_back(value >= isInk);
  const Areas areas(mask, 1, 0);
  std::vector<bool> isShape(areas.areas().size());
  for (const Run& run : areas.runs())
    isShape[run.area] = mask.values[mask.at(run.start, run.y)] != 0;
  std::vector<int> heights;
  for (std::size_t i = 0; i < isShape.size(); ++i) {
    const Area& area = areas.areas()[i];
    if (isShape[i] && area.height() >= lowest && area.height() <= highest &&
        area.width() <= 3 * area.height())
      heights.push_back(area.height());
  }
  if (heights.size() < fewest) return 0;
  const auto lower = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 4);
  std::nth_element(heights.begin(), lower, heights.end());
  return *lower;
}

// Recognisers like letters of this height best.
double scaleFor(const Plane<std::uint8_t>& ink) {
  constexpr double wantedHeight = 20;  // pixels
  constexpr double usual = 3, largest = 4;
  const int height = letterHeight(ink);
  const double wanted = height == 0 ? usual : std::clamp(wantedHeight / height, 1.0, largest);
  const double pixels = static_cast<double>(ink.values.size());
  return std::min({wanted, longestSide / ink.width, std::sqrt(mostPixelsInAll / pixels)});
}

// Where to begin new pages so that none is too large, rather between two lines than in one.
std::vector<int> cutsOf(const Plane<std::uint8_t>& ink, double scale) {
  const double most = std::min(highestPage / scale, mostPixels / (scale * scale * ink.width));
  const int rows = std::max(static_cast<int>(most), 1);
  const auto inkIn = [&ink](int row) {
    const auto start = ink.values.begin() + static_cast<std::ptrdiff_t>(ink.at(0, row));
    return std::accumulate(start, start + ink.width, std::int64_t{0});
  };
  std::vector<int> cuts{0};
  while (ink.height - cuts.back() > rows) {
    const int latest = cuts.back() + rows;
    int best = latest;
    std::int64_t least = inkIn(latest);
    for (int row = latest - 1; row > latest - rows / 4 && least > 0; --row) {
      if (const std::int64_t here = inkIn(row); here < least) {
        least = here;
        best = row;
      }
    }
    cuts.push_back(best);
  }
  cuts.push_back(ink.height);
  return cuts;
}

}  // namespace

Pages::Pages(const Bitmap& picture) {
  if (picture.width() < smallestSide || picture.height() < smallestSide) return;
  gray_ = inkOf(picture);
  strengthen(gray_);
  eraseRules(gray_);
  if (*std::max_element(gray_.values.begin(), gray_.values.end()) < faintest) return;
  scale_ = scaleFor(gray_);
  cuts_ = cutsOf(gray_, scale_);
  for (std::uint8_t& value : gray_.values) value = static_cast<std::uint8_t>(255 - value);
}

Page Pages::at(std::size_t page) const {
  return magnified(gray_, {cuts_[page], cuts_[page + 1]}, scale_, margin);
}

}  // namespace marbelot
