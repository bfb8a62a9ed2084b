#include "image/card.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "image/blend.h"
#include "image/resampler.h"

namespace marbelot {
namespace {

// `over` on top of what is at `to`; both premultiplied.
void drawOver(const std::uint8_t* over, std::uint8_t* to) {
  const unsigned showing = 255u - over[3];
  for (int channel = 0; channel < 4; ++channel) {
    to[channel] = static_cast<std::uint8_t>(over[channel] + scaled(to[channel], showing));
  }
}

void drawOver(const std::uint8_t* over, unsigned coverage, std::uint8_t* to) {
  std::uint8_t covering[4];
  for (int channel = 0; channel < 4; ++channel) covering[channel] = scaled(over[channel], coverage);
  drawOver(covering, to);
}

// The new pixels that the window touches along one axis, and where they lie on the picture.
struct WindowAxis {
  int first;
  SampledAxis axis;

  WindowAxis(int canvas, double window, int side, double scale) {
    first = std::max(0, static_cast<int>(std::floor((canvas - window) / 2)));
    axis.count = canvas - 2 * first;
    axis.step = 1 / scale;
    axis.start = side / 2.0 - axis.count * axis.step / 2;
  }
};

}  // namespace

Result drawCard(const Bitmap& picture, const Card& card) {
  Result result = Result::clearCanvas(card.width, card.height);
  if (!result) return result;
  const int width = result->width(), height = result->height();

  if (card.badge) {
    const Card::Badge& badge = *card.badge;
    const std::uint8_t color[] = {badge.color.red, badge.color.green, badge.color.blue, 255};
    SoftShadow shadow(badge.shape, badge.shadow, width, height);
    Coverage coverage(badge.shape, width, height);
    for (int y = 0; y < height; ++y) {
      std::uint8_t* to = result->row(y);
      const auto& shadowRow = shadow.row(y);
      const auto& coverageRow = coverage.row(y);
      for (int x = 0; x < width; ++x, to += 4) {
        const auto column = static_cast<std::size_t>(std::min(x, width - 1 - x));
        to[3] = shadowRow[std::min(column, shadowRow.size() - 1)];
        drawOver(color, coverageRow.at(x, width), to);
      }
    }
  }

  const WindowAxis across(width, card.window.width, picture.width(), card.scale);
  const WindowAxis down(height, card.window.height, picture.height(), card.scale);
  Resampler resampler(picture, across.axis, down.axis);
  Coverage coverage(card.window, width, height);
  std::vector<std::uint8_t> line(static_cast<std::size_t>(across.axis.count) * 4);
  for (int y = 0; y < down.axis.count; ++y) {
    resampler.row(y, line.data());
    const auto& coverageRow = coverage.row(down.first + y);
    for (int x = 0; x < across.axis.count; ++x) {
      const int column = across.first + x;
      drawOver(line.data() + 4 * x, coverageRow.at(column, width),
               result->row(down.first + y) + 4 * column);
    }
  }
  return result;
}

}  // namespace marbelot
