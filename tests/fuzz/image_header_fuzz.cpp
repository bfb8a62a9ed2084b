// Built with clang when MARBELOT_FUZZ is on: image_header_fuzz [CORPUS…]
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/image.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto header =
      marbelot::imageHeader(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!header) return 0;
  const std::int64_t pixels = std::int64_t{header->width} * header->height;
  if (header->width <= 0 || pixels <= 0 || pixels > marbelot::maximumImagePixels) std::abort();
  return 0;
}
