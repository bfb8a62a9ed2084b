// Image codecs behind a process boundary: a codec that crashes or hangs on a hostile picture takes
// its helper process with it and nothing else.
#pragma once

#include "platform/image.h"

namespace marbelot {

// The image encoded as `format` by the helper process; its own bytes when that is its format. Takes
// up to 30 seconds: not for the main thread. Null when the image is damaged, when there is no
// helper, and as soon as `cancel` (a descriptor, or -1) becomes readable.
SharedBytes convertedBytes(const Image& image, ImageFormat format, int cancel = -1);

}  // namespace marbelot
