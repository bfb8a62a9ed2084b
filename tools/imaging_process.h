// What the codecs' programs share: their limits, and the files that are their input and output.
#pragma once

#include <optional>
#include <string_view>

#include "platform/bitmap.h"

namespace marbelot {

// So that a hostile image can neither fill the memory nor run for ever.
void limitResources();

// Standard input, empty when it is no file. It stays in memory as long as the process runs.
std::string_view standardInput();

// Standard output as a bitmap of that size, laid out as shared_pixels.h has it; none when it is no
// file.
std::optional<Bitmap> outputBitmap(int width, int height);

}  // namespace marbelot
