// What encoded images say of themselves, read from memory or, piece by piece, from a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/image.h"

namespace marbelot {

class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual std::uint64_t size() const = 0;
  // Copies `count` bytes from `offset`; false when they are not all there.
  virtual bool read(std::uint64_t offset, char* to, std::size_t count) const = 0;
};

std::optional<ImageHeader> imageHeader(const ByteSource& source);

// The same with the largest width and the largest height of all pages, where a format has several.
std::optional<ImageHeader> largestPage(std::string_view bytes);

}  // namespace marbelot
