// A file descriptor that closes itself, and whole reads and writes on one.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string_view>
#include <utility>

namespace marbelot {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

 private:
  int descriptor_ = -1;
};

// Reads from that byte of a file, and leaves its position alone.
inline bool readFully(int descriptor, char* to, std::size_t bytes, std::uint64_t offset) {
  while (bytes > 0) {
    const ssize_t got = ::pread(descriptor, to, bytes, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    to += got;
    offset += static_cast<std::uint64_t>(got);
    bytes -= static_cast<std::size_t>(got);
  }
  return true;
}

inline bool readFully(int descriptor, char* to, std::size_t bytes) {
  while (bytes > 0) {
    const ssize_t got = ::read(descriptor, to, bytes);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    to += got;
    bytes -= static_cast<std::size_t>(got);
  }
  return true;
}

inline bool writeFully(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t put = ::write(descriptor, bytes.data(), bytes.size());
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
  return true;
}

}  // namespace marbelot
