// AppKit's images as the seam's.
#pragma once

#import <AppKit/AppKit.h>

#include <optional>

#include "platform/image.h"

namespace marbelot {

// What the image shows at its size, a pixel for each point; none when memory is short.
std::optional<Image> drawnImage(NSImage* image);

}  // namespace marbelot
