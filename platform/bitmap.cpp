#include "platform/bitmap.h"

#include <cstring>
#include <utility>

#include "platform/pixel_memory.h"

namespace marbelot {

Bitmap::Bitmap(std::int64_t width, std::int64_t height, std::size_t bytesPerRow,
               std::shared_ptr<std::uint8_t> memory)
    : width_(static_cast<int>(width)),
      height_(static_cast<int>(height)),
      bytesPerRow_(bytesPerRow),
      memory_(std::move(memory)) {}

std::optional<Bitmap> Bitmap::make(std::int64_t width, std::int64_t height) {
  if (!fits(width, height)) return std::nullopt;
  const auto bytesPerRow = static_cast<std::size_t>(width * pixelBytes);
  auto memory = pixelMemory(bytesPerRow * static_cast<std::size_t>(height));
  if (!memory) return std::nullopt;
  return Bitmap(width, height, bytesPerRow, std::move(memory));
}

std::optional<Bitmap> Bitmap::makeClear(std::int64_t width, std::int64_t height) {
  auto bitmap = make(width, height);
  if (bitmap)
    std::memset(bitmap->data(), 0, bitmap->bytesPerRow() * static_cast<std::size_t>(height));
  return bitmap;
}

std::optional<Bitmap> Bitmap::adopt(std::int64_t width, std::int64_t height,
                                    std::size_t bytesPerRow, std::shared_ptr<std::uint8_t> memory) {
  if (!memory || !fits(width, height)) return std::nullopt;
  if (bytesPerRow < static_cast<std::size_t>(width * pixelBytes)) return std::nullopt;
  return Bitmap(width, height, bytesPerRow, std::move(memory));
}

}  // namespace marbelot
