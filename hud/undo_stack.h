// The pictures before each edit. Without a limit to their number, but with one to their memory.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <utility>

#include "platform/image.h"

namespace marbelot {

class UndoStack {
 public:
  static constexpr std::int64_t memoryLimit = std::int64_t{512} << 20;  // bytes of pixels

  // The oldest ones go where there is no room for all.
  void push(Image image) {
    bytes_ += bytesOf(image);
    images_.push_back(std::move(image));
    while (bytes_ > memoryLimit) {
      bytes_ -= bytesOf(images_.front());
      images_.pop_front();
    }
  }
  std::optional<Image> pop() {
    if (images_.empty()) return std::nullopt;
    Image newest = std::move(images_.back());
    images_.pop_back();
    bytes_ -= bytesOf(newest);
    return newest;
  }
  void clear() {
    images_.clear();
    bytes_ = 0;
  }
  std::size_t size() const { return images_.size(); }

 private:
  static std::int64_t bytesOf(const Image& image) {
    return std::int64_t{image.width()} * image.height() * Bitmap::pixelBytes;
  }
  std::deque<Image> images_;
  std::int64_t bytes_ = 0;
};

}  // namespace marbelot
