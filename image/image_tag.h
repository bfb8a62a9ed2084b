// A picture as an HTML tag that holds it whole.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/image.h"

namespace marbelot {

// <img src="data:image/png;base64,…" width="…" height="…" alt="">, on one line; lengths in pixels.
std::string imageTag(std::string_view png, int width, int height);

// The same of any image, a PNG's bytes as they are. None when it is damaged. Takes time: not for
// the main thread.
std::optional<std::string> imageTag(const Image& image);

// Standard alphabet, padded, no line breaks.
std::string base64(std::string_view bytes);

}  // namespace marbelot
