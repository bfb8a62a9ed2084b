#include "platform/image.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

#include "platform/descriptor.h"
#include "platform/image_codec.h"
#include "platform/image_header.h"

namespace marbelot {
std::string_view mimeType(ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return "image/png";
    case ImageFormat::jpeg:
      return "image/jpeg";
    case ImageFormat::tiff:
      return "image/tiff";
    case ImageFormat::heic:
      return "image/heic";
    case ImageFormat::gif:
      return "image/gif";
    case ImageFormat::bmp:
      return "image/bmp";
    case ImageFormat::webp:
      return "image/webp";
  }
  return {};
}

class Image::File {
 public:
  explicit File(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

  // The size now, in bytes; 0 for whatever is no regular file.
  std::uint64_t size() const {
    struct stat status {};
    const bool regular = ::fstat(descriptor_.get(), &status) == 0 && S_ISREG(status.st_mode);
    return regular ? static_cast<std::uint64_t>(status.st_size) : 0;
  }
  bool read(std::uint64_t offset, char* to, std::size_t count) const {
    return readFully(descriptor_.get(), to, count, offset);
  }

 private:
  const Descriptor descriptor_;
};

// Reads in small windows, so that a walk over many tiny chunks needs few system calls.
class Image::FileSource final : public ByteSource {
 public:
  explicit FileSource(const File& file) : file_(file), size_(file.size()) {}
  std::uint64_t size() const override { return size_; }
  bool read(std::uint64_t offset, char* to, std::size_t count) const override {
    if (offset > size_ || count > size_ - offset || count > window_.size()) return false;
    if (offset < start_ || offset + count > start_ + filled_) {
      const auto wanted = std::min<std::uint64_t>(window_.size(), size_ - offset);
      filled_ = 0;
      if (!file_.read(offset, window_.data(), wanted)) return false;
      start_ = offset;
      filled_ = wanted;
    }
    std::memcpy(to, window_.data() + (offset - start_), count);
    return true;
  }

 private:
  const File& file_;
  std::uint64_t size_;
  mutable std::array<char, 4096> window_{};
  mutable std::uint64_t start_ = 0;
  mutable std::uint64_t filled_ = 0;
};

// Pixels, and once somebody has asked for them, their bytes instead. Any thread.
class Image::Pixels {
 public:
  explicit Pixels(SharedBitmap pixels) : pixels_(std::move(pixels)) {}

  SharedBytes bytes() {
    // Whoever asks while another thread is encoding waits for what that one makes.
    const std::lock_guard encoding(encoding_);
    const SharedBitmap pixels = this->pixels();
    if (!pixels) return bytes_;
    SharedBytes bytes = encodePng(*pixels);
    const std::lock_guard lock(mutex_);
    if (bytes) pixels_.reset();  // else memory was short: it may not be the next time
    bytes_ = std::move(bytes);
    return bytes_;
  }
  SharedBitmap pixels() {
    const std::lock_guard lock(mutex_);
    return pixels_;
  }

 private:
  std::mutex encoding_;
  std::mutex mutex_;
  SharedBitmap pixels_;
  SharedBytes bytes_;  // null while there are pixels
};

std::optional<Image> Image::fromBytes(SharedBytes bytes) {
  const auto header = bytes ? imageHeader(std::string_view(*bytes)) : std::nullopt;
  if (!header) return std::nullopt;
  Image image;
  image.header_ = *header;
  image.bytes_ = std::move(bytes);
  return image;
}

std::optional<Image> Image::fromFile(const std::string& path) {
  // Non-blocking: opening a named pipe must not wait for its writer.
  Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!descriptor) return std::nullopt;
  auto file = std::make_shared<const File>(std::move(descriptor));
  const auto header = imageHeader(FileSource(*file));
  if (!header) return std::nullopt;
  Image image;
  image.header_ = *header;
  image.file_ = std::move(file);
  return image;
}

Image Image::fromPixels(SharedBitmap pixels) {
  Image image;
  image.header_ = {ImageFormat::png, pixels->width(), pixels->height()};
  image.pixels_ = std::make_shared<Pixels>(std::move(pixels));
  return image;
}

bool Image::isEncoded() const { return !pixels(); }

SharedBitmap Image::pixels() const { return pixels_ ? pixels_->pixels() : nullptr; }

SharedBytes Image::bytes() const {
  if (pixels_) return pixels_->bytes();
  if (!file_) return bytes_;
  std::string bytes(file_->size(), '\0');
  if (!file_->read(0, bytes.data(), bytes.size())) return nullptr;
  // Somebody may have written over the file since; then it is another image, or none.
  if (imageHeader(std::string_view(bytes)) != header_) return nullptr;
  return share(std::move(bytes));
}

bool Image::isReadable() const { return !file_ || imageHeader(FileSource(*file_)) == header_; }

}  // namespace marbelot
