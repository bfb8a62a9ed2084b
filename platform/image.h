// An image: immutable, shared, kept as the encoded bytes it came in, or as the pixels it was made
// of until somebody asks for its bytes. Nothing here decodes pixels.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/bitmap.h"
#include "platform/value.h"

namespace marbelot {

enum class ImageFormat { png, jpeg, tiff, heic, gif, bmp, webp };

// MIME type, e.g. "image/png".
std::string_view mimeType(ImageFormat format);

struct ImageHeader {
  ImageFormat format = ImageFormat::png;
  int width = 0;   // pixels
  int height = 0;  // pixels
  bool operator==(const ImageHeader&) const = default;
};

// More pixels than any screen or camera makes; larger claims are taken for damage or malice.
inline constexpr std::int64_t maximumImagePixels = std::int64_t{1} << 28;

// Reads what the bytes say of themselves. None for unknown formats, sizes of zero or above the
// maximum, and PNG data that breaks off before its last chunk. Reads only within `bytes`.
std::optional<ImageHeader> imageHeader(std::string_view bytes);

class Image {
 public:
  // None when `bytes` do not hold an image.
  static std::optional<Image> fromBytes(SharedBytes bytes);
  // Opens the file and keeps it open instead of its bytes in memory: the image stays readable when
  // the file is deleted or replaced. None when it is not a readable image.
  static std::optional<Image> fromFile(const std::string& path);
  // A PNG that is still to be encoded. `pixels` is not null.
  static Image fromPixels(SharedBitmap pixels);

  ImageFormat format() const { return header_.format; }
  int width() const { return header_.width; }
  int height() const { return header_.height; }

  // The encoded bytes as they came; null when the file can no longer be read. Pixels are encoded by
  // the first call and let go of then: not for the main thread while isEncoded() is false.
  SharedBytes bytes() const;
  bool isEncoded() const;
  // What it was made of, while that is still here; else null.
  SharedBitmap pixels() const;
  // Whether `other` is a copy of this one. Two images that merely look alike are not the same.
  bool isSame(const Image& other) const {
    return bytes_ == other.bytes_ && file_ == other.file_ && pixels_ == other.pixels_;
  }
  // Whether the file still holds this image, without reading all of it.
  bool isReadable() const;

 private:
  class File;
  class FileSource;
  class Pixels;
  ImageHeader header_;
  // One of these is not null.
  SharedBytes bytes_;
  std::shared_ptr<const File> file_;
  std::shared_ptr<Pixels> pixels_;
};

// The image as PNG: the very bytes when it came as PNG, else converted, which takes time: call it
// on a background thread. Null when the image is damaged.
SharedBytes pngBytes(const Image& image);

}  // namespace marbelot
