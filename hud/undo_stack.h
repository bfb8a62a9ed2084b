// The picture before each edit. Without a limit to their number, but with one to their memory.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <utility>

#include "platform/image.h"

namespace marbelot {

// A picture and what has been made of it, which is not made again when it comes back.
struct EditedPicture {
  Image image;
  SharedBitmap pixels;             // null until it is decoded, or when it cannot be
  std::optional<Image> thumbnail;  // as it is shown
};

class UndoStack {
 public:
  static constexpr std::int64_t memoryLimit = std::int64_t{512} << 20;  // bytes of pixels

  // The oldest ones go where there is no room for all; the last edit can always be undone.
  void push(EditedPicture picture) {
    bytes_ += bytesOf(picture);
    pictures_.push_back(std::move(picture));
    while (bytes_ > memoryLimit && size() > 1) {
      bytes_ -= bytesOf(pictures_.front());
      pictures_.pop_front();
    }
  }
  std::optional<EditedPicture> pop() {
    if (pictures_.empty()) return std::nullopt;
    EditedPicture newest = std::move(pictures_.back());
    pictures_.pop_back();
    bytes_ -= bytesOf(newest);
    return newest;
  }
  void clear() {
    pictures_.clear();
    bytes_ = 0;
  }
  std::size_t size() const { return pictures_.size(); }

 private:
  static std::int64_t bytesOf(const EditedPicture& picture) {
    return bytesOf(picture.image) + (picture.thumbnail ? bytesOf(*picture.thumbnail) : 0);
  }
  static std::int64_t bytesOf(const Image& image) {
    return std::int64_t{image.width()} * image.height() * Bitmap::pixelBytes;
  }
  std::deque<EditedPicture> pictures_;
  std::int64_t bytes_ = 0;
};

}  // namespace marbelot
