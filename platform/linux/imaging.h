// Image codecs behind a process boundary: a codec that crashes or hangs on a hostile picture takes
// its helper process with it and nothing else.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/image.h"

namespace marbelot {

// What the helper process writes, by the names that MIME types give it after "image/".
inline constexpr std::array<std::string_view, 14> encodings{"png", "bmp", "jpeg", "tiff", "webp",
                                                            "ico", "cur", "icns", "ppm",  "pgm",
                                                            "pbm", "xpm", "xbm",  "wbmp"};

// Asks it for the pixels instead.
inline constexpr std::string_view pixelsTask = "pixels";

// The first page of a PDF, its background transparent, at two pixels a point. None when it is
// damaged, and as for convertedBytes.
inline constexpr std::string_view pdfTask = "pdf";
std::optional<Image> pdfImage(const std::string& pdf, int cancel);

// The image in one of the encodings, made by the helper process; its own bytes when that is its
// format. Takes up to 30 seconds: not for the main thread. Null when the image is damaged, when
// there is no helper, and as soon as `cancel` (a descriptor, or -1) becomes readable.
SharedBytes convertedBytes(const Image& image, std::string_view encoding, int cancel = -1);

}  // namespace marbelot
