// The operations on pixels, one file each. Every one is a pure function to a new bitmap, gives the
// same bytes on every system, and may be called on any thread.
#pragma once

#include <cstdint>

#include "image/color.h"
#include "image/result.h"

namespace marbelot {

// A frame of one colour around the picture, 6 pixels wide, and wider for pictures from 240 pixels
// on. The colour also fills what is transparent in the picture.
Result addBorder(const Bitmap& picture, PixelColor color);

enum class ShadowCanvas { grown, sameSize };
// A white card with rounded corners, its shadow, and the picture on it. The margin for the shadow
// is `marginShare` of the shorter side. On a canvas of the same size the picture shrinks; none when
// there is no room for it.
Result addRoundedShadow(const Bitmap& picture, ShadowCanvas canvas, double marginShare);

enum class Background { white, black, corner };
// Clears every pixel whose premultiplied channels are all near the background's, wherever it is;
// `corner` is the colour of the first pixel.
Result makeTransparent(const Bitmap& picture, Background background);

enum class EmblemShape { circle, squircle };
enum class EmblemStyle { clear, white, dark };  // dark and white: on a badge with a shadow
// The picture's central square, cut to the shape.
Result makeEmblem(const Bitmap& picture, EmblemShape shape, EmblemStyle style);

// Counter-clockwise about the centre, by any number of degrees. A quarter turn, and nothing else,
// swaps width and height; what a canvas of the picture's size has no room for is cut off.
Result rotate(const Bitmap& picture, std::int64_t degrees);

enum class FlipAxis { leftRight, topBottom };
Result flip(const Bitmap& picture, FlipAxis axis);

// To the factor's share of each side, cut to whole pixels, but at least one. Refused when the
// factor is not finite or the sizes cannot be told in 64 bits.
Result resize(const Bitmap& picture, double factor);
// To a size in pixels.
Result resizeTo(const Bitmap& picture, std::int64_t width, std::int64_t height);

}  // namespace marbelot
