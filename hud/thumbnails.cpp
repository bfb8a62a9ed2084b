#include "hud/thumbnails.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "image/pixel_operations.h"
#include "platform/image_codec.h"

namespace marbelot {

Rect fittedFrame(int width, int height, const Rect& room) {
  constexpr double iconSide = 48, largestEnlargement = 8;
  const double enlargement =
      std::clamp(iconSide / std::max(width, height), 1.0, largestEnlargement);
  const double scale = std::min({room.width / width, room.height / height, enlargement});
  const double w = std::max(width * scale, 1.0), h = std::max(height * scale, 1.0);
  return {room.midX() - w / 2, room.midY() - h / 2, w, h};
}

std::optional<Image> thumbnail(const Image& image, int width, int height) {
  return thumbnail(decode(image), width, height);
}

std::optional<Image> thumbnail(const SharedBitmap& pixels, int width, int height) {
  if (!pixels) return std::nullopt;
  width = std::max(width, 1);
  height = std::max(height, 1);
  if (width >= pixels->width() && height >= pixels->height()) return Image::fromPixels(pixels);
  Result made = resizeTo(*pixels, width, height);
  if (!made) return std::nullopt;
  return Image::fromPixels(std::make_shared<const Bitmap>(std::move(*made)));
}

void Thumbnails::make(const Image& image, int width, int height, Then then) {
  wanted_ = Request{image, width, height, std::move(then), ++lastNumber_};
  if (!busy_) startNext();
}

void Thumbnails::startNext() {
  if (!wanted_) return;
  busy_ = true;
  working_ =
      queue_.inBackground([image = wanted_->image, width = wanted_->width,
                           height = wanted_->height] { return thumbnail(image, width, height); },
                          [this, number = wanted_->number](const std::optional<Image>& made) {
                            busy_ = false;
                            if (wanted_ && wanted_->number == number) {
                              const Then then = std::exchange(wanted_, std::nullopt)->then;
                              then(made);
                            } else {
                              startNext();
                            }
                          });
}

}  // namespace marbelot
