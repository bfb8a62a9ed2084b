#include <algorithm>

#include "image/card.h"
#include "image/pixel_operations.h"

namespace marbelot {

Result addRoundedShadow(const Bitmap& picture, ShadowCanvas canvas, double marginShare) {
  const std::int64_t width = picture.width(), height = picture.height();
  const auto share =
      static_cast<std::int64_t>(marginShare * static_cast<double>(std::min(width, height)));
  const std::int64_t margin = std::max<std::int64_t>(12, share);

  Card card;
  if (canvas == ShadowCanvas::grown) {
    card.width = width + 2 * margin;
    card.height = height + 2 * margin;
  } else {
    card.width = width;
    card.height = height;
    const std::int64_t roomAcross = width - 2 * margin, roomDown = height - 2 * margin;
    if (roomAcross < 1 || roomDown < 1) return Result::none();
    card.scale = std::min(static_cast<double>(roomAcross) / static_cast<double>(width),
                          static_cast<double>(roomDown) / static_cast<double>(height));
  }
  card.opening.width = card.scale * static_cast<double>(width);
  card.opening.height = card.scale * static_cast<double>(height);
  card.opening.radius = 0.04 * std::min(card.opening.width, card.opening.height);

  const auto reach = static_cast<double>(margin);
  // The blur radius of the platform's drawing is two standard deviations.
  card.badge = {card.opening, colors::white, {0.8 * reach / 2, reach / 3, 0.45}};
  return drawCard(picture, card);
}

}  // namespace marbelot
