// Pixels to encoded images and back: the system's codecs. Stateless, any thread; all of it takes
// time, so none of it is for the main thread.
#pragma once

#include "platform/bitmap.h"
#include "platform/image.h"

namespace marbelot {

// The pixels as people expect to see them: in sRGB whatever colours the image is in, turned upright
// where the camera noted how it was held, the first picture of an animation. Null when the image is
// damaged, or larger than a bitmap can be.
SharedBitmap decode(const Image& image);

// As PNG, fit for pasting at once: quick to make rather than as small as can be. Null when memory
// is short.
SharedBytes encodePng(const Bitmap& bitmap);

}  // namespace marbelot
