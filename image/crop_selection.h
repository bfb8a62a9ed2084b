// What a rectangle that is drawn over a shown picture means in the picture's pixels. Pure geometry.
#pragma once

#include <optional>

#include "image/result.h"
#include "platform/geometry.h"

namespace marbelot {

// The height of the bar of buttons below the view, in points.
inline constexpr double cropBarHeight = 44;

// The size of the view in which a picture of so many pixels is cropped on a screen.
Size cropViewSize(int width, int height, const Rect& visibleFrame);

// Where the picture is shown: the largest rectangle of its proportions in the middle of `bounds`.
Rect cropImageRectangle(int width, int height, Size bounds);

// The rectangle that two points span.
Rect spanned(Point a, Point b);

// Rows counted from the top.
struct PixelRect {
  int x = 0, y = 0, width = 0, height = 0;
  bool operator==(const PixelRect&) const = default;
};

// The pixels that a selection touches of a picture shown in `shown`. None unless what it has in
// common with the picture is both wider and taller than 4 points.
std::optional<PixelRect> selectedPixels(const Rect& selection, const Rect& shown, int width,
                                        int height);

// That part of the picture, within which it lies.
Result cut(const Bitmap& picture, const PixelRect& part);

}  // namespace marbelot
