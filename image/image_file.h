// Writing an image to a file of its own. No state; any thread.
#pragma once

#include <optional>
#include <string>

#include "platform/image.h"

namespace marbelot {

// The name for the attempt, from 1: "BASE.png", "BASE (2).png", "BASE (3).png" …
std::string numberedPngName(const std::string& base, int attempt);

// The file's image with its bytes held in memory, for the clipboard: the file may be edited in
// place meanwhile. None when it cannot be read whole or is no image.
std::optional<Image> imageInMemory(const std::string& path);

struct ImageFile {
  std::string path;
  Image image;  // as it is in the file, no longer in memory
};

// Writes the image as PNG, the very bytes when it came as PNG, under the first free name. None when
// it cannot be converted or written.
std::optional<ImageFile> writeImageFile(const std::string& folder, const std::string& base,
                                        const Image& image);

}  // namespace marbelot
