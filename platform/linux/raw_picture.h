// The pictures that capture tools write without compressing them.
#pragma once

#include <optional>
#include <string_view>

#include "platform/bitmap.h"

namespace marbelot {

// A BMP of 24 or 32 bits a pixel, uncompressed, or a binary PPM, as tools write them; opaque. None
// for anything else and for one that breaks off. Any thread.
std::optional<Bitmap> rawPicture(std::string_view bytes);

}  // namespace marbelot
