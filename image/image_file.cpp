#include "image/image_file.h"

#include "platform/files.h"

namespace marbelot {
namespace {

// No screenshot is larger, and nothing larger belongs on the clipboard.
constexpr std::size_t largestFile = std::size_t{512} << 20;

}  // namespace

std::string numberedPngName(const std::string& base, int attempt) {
  return base + (attempt > 1 ? " (" + std::to_string(attempt) + ")" : "") + ".png";
}

std::optional<Image> imageInMemory(const std::string& path) {
  return Image::fromBytes(files::read(path, largestFile));
}

std::optional<ImageFile> writeImageFile(const std::string& folder, const std::string& base,
                                        const Image& image) {
  const SharedBytes bytes = pngBytes(image);
  if (!bytes) return std::nullopt;
  for (int attempt = 1;; ++attempt) {
    const std::string path = files::join(folder, numberedPngName(base, attempt));
    if (files::isTaken(path)) continue;
    if (files::create(path, *bytes)) {
      auto inFile = Image::fromFile(path);
      return ImageFile{path, inFile ? *inFile : image};
    }
    // Refused although the name was free: another save took it meanwhile, or it cannot be written.
    if (!files::isTaken(path)) return std::nullopt;
  }
}

}  // namespace marbelot
