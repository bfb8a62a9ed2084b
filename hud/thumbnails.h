// Pictures at the size in which they are shown.
#pragma once

#include <functional>
#include <optional>

#include "platform/geometry.h"
#include "platform/image.h"
#include "platform/main_queue.h"

namespace marbelot {

// The largest frame of the picture's own proportions in the middle of `room`, at most a point for
// each pixel; icons of a few pixels are enlarged so that they can be recognised. Neither side is
// below a point.
Rect fittedFrame(int width, int height, const Rect& room);

// The picture at `width` × `height` pixels; as it is where that is not smaller. None when it cannot
// be decoded. Takes time: for a background thread.
std::optional<Image> thumbnail(const Image& image, int width, int height);
std::optional<Image> thumbnail(const SharedBitmap& pixels, int width, int height);

// Makes one thumbnail at a time in the background: what is asked for while it is busy replaces what
// was asked for before. Main thread only; the queue outlives it.
class Thumbnails {
 public:
  explicit Thumbnails(MainQueue& queue) : queue_(queue) {}

  // `then` gets the thumbnail, or none when the image cannot be decoded; it is not called when
  // another one is asked for in the meantime.
  using Then = std::function<void(const std::optional<Image>& thumbnail)>;
  void make(const Image& image, int width, int height, Then then);
  void cancel() { wanted_.reset(); }

 private:
  struct Request {
    Image image;
    int width, height;
    Then then;
    std::uint64_t number;
  };
  void startNext();

  MainQueue& queue_;
  std::optional<Request> wanted_;
  std::uint64_t lastNumber_ = 0;
  bool busy_ = false;
  Task working_;
};

}  // namespace marbelot
