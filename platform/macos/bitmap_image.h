// A bitmap as CoreGraphics has it.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <memory>

#include "platform/bitmap.h"

namespace marbelot {

// CoreGraphics' objects are not ARC's.
using ColorSpace = std::unique_ptr<CGColorSpace, decltype(&CGColorSpaceRelease)>;
using CodedPicture = std::unique_ptr<struct CGImage, decltype(&CGImageRelease)>;

ColorSpace sRgb();
// Shows the bitmap's own memory, which must stay. Null when memory is short.
CodedPicture pictureOf(const Bitmap& bitmap);

}  // namespace marbelot
