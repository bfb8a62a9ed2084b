// A picture on a card: what the rounded shadow and the emblem are made of.
#pragma once

#include <cstdint>
#include <optional>

#include "image/color.h"
#include "image/result.h"
#include "image/rounded_rect.h"
#include "image/soft_shadow.h"

namespace marbelot {

// Everything is centred on the canvas, from bottom to top: the badge's shadow, the badge, and the
// picture, of which the opening shows what is inside of it.
struct Card {
  struct Badge {
    RoundedRect shape;
    PixelColor color;
    Shadow shadow;
  };
  std::int64_t width = 0, height = 0;  // of the canvas, pixels
  std::optional<Badge> badge;
  RoundedRect opening;
  double scale = 1;  // of the picture, which covers the opening
};

Result drawCard(const Bitmap& picture, const Card& card);

}  // namespace marbelot
