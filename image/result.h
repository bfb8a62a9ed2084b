// What comes of an operation on a picture.
#pragma once

#include <optional>
#include <utility>

#include "platform/bitmap.h"

namespace marbelot {

// A new picture, or none. None because the picture would be too large for a bitmap or the memory,
// or because the arguments make no sense, is a refusal; any other is the operation's own affair.
class Result {
 public:
  Result(Bitmap bitmap) : bitmap_(std::move(bitmap)) {}
  static Result none() { return Result(false); }
  static Result refusal() { return Result(true); }
  // An empty canvas of this size in pixels, which are undefined.
  static Result canvas(std::int64_t width, std::int64_t height) {
    return from(Bitmap::make(width, height));
  }

  explicit operator bool() const { return bitmap_.has_value(); }
  bool refused() const { return refused_; }
  Bitmap& operator*() { return *bitmap_; }
  const Bitmap& operator*() const { return *bitmap_; }
  Bitmap* operator->() { return &*bitmap_; }
  const Bitmap* operator->() const { return &*bitmap_; }

 private:
  explicit Result(bool refused) : refused_(refused) {}
  static Result from(std::optional<Bitmap> bitmap) {
    if (bitmap) return *std::move(bitmap);
    return refusal();
  }

  std::optional<Bitmap> bitmap_;
  bool refused_ = false;
};

}  // namespace marbelot
