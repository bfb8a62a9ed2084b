#include <algorithm>

#include "image/card.h"
#include "image/pixel_operations.h"

namespace marbelot {

Result makeEmblem(const Bitmap& picture, EmblemShape shape, EmblemStyle style) {
  const std::int64_t side = std::min(picture.width(), picture.height());
  const double length = static_cast<double>(side);
  const double roundness = shape == EmblemShape::circle ? 0.5 : 0.22;  // radius by side
  std::int64_t margin = 0;
  double inset = 0;
  if (style != EmblemStyle::clear) {
    margin = side <= 47 ? 4 : side / 12;
    inset = 0.05 * length;
  }

  Card card;
  card.width = card.height = side + 2 * margin;
  card.opening.width = card.opening.height = length - 2 * inset;
  card.opening.radius = roundness * card.opening.width;
  card.scale = card.opening.width / length;
  if (style != EmblemStyle::clear) {
    constexpr PixelColor dark{28, 28, 28};  // 0.11 of white's level
    const auto reach = static_cast<double>(margin);
    // The blur radius of the platform's drawing is two standard deviations.
    card.badge = {{length, length, roundness * length},
                  style == EmblemStyle::dark ? dark : colors::white,
                  {0.9 * reach / 2, reach / 3, 0.4}};
  }
  return drawCard(picture, card);
}

}  // namespace marbelot
