#include "platform/linux/shared_pixels.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>

namespace marbelot {

std::optional<Bitmap> mappedPixels(int file) {
  struct stat status {};
  if (::fstat(file, &status) != 0 || status.st_size <= static_cast<off_t>(sharedPixelsOffset))
    return std::nullopt;
  const auto size = static_cast<std::size_t>(status.st_size);
  // Populated: thousands of single page faults would take longer than the pixels' operations.
  void* const mapped =
      ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, file, 0);
  if (mapped == MAP_FAILED) return std::nullopt;
  auto* const start = static_cast<std::uint8_t*>(mapped);
  std::shared_ptr<std::uint8_t> rows(start + sharedPixelsOffset,
                                     [start, size](std::uint8_t*) { ::munmap(start, size); });
  SharedPixels shape;
  std::memcpy(&shape, start, sizeof shape);
  if (!Bitmap::fits(shape.width, shape.height) || shape.bytesPerRow > size ||
      shape.bytesPerRow * shape.height > size - sharedPixelsOffset)
    return std::nullopt;
  return Bitmap::adopt(shape.width, shape.height, shape.bytesPerRow, std::move(rows));
}

}  // namespace marbelot
