// Built with clang when MARBELOT_FUZZ is on: image_operations_fuzz [CORPUS…]
//
// Two bytes of width, two of height, one of what fills the picture; the rest is an op string.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "image/operations.h"
#include "platform/fast_path.h"

namespace {

using marbelot::Bitmap;

// Up to 512 pixels on a side, and at times a thin picture of any length.
int side(std::uint8_t high, std::uint8_t low, bool other) {
  const int number = high << 8 | low;
  return 1 + (other ? number % 512 : number % 32768);
}

bool sameBytes(const Bitmap& a, const Bitmap& b) {
  return a.width() == b.width() && a.height() == b.height() &&
         std::memcmp(a.data(), b.data(), a.bytesPerRow() * static_cast<std::size_t>(a.height())) ==
             0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 5) return 0;
  const bool thin = data[4] % 16 == 0;
  const int width = side(data[0], data[1], !thin);
  const int height = thin ? 1 + data[3] % 4 : side(data[2], data[3], true);
  auto picture = Bitmap::make(width, height);
  if (!picture) return 0;
  // Not premultiplied: a damaged picture may hold anything.
  std::uint32_t state = data[4];
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < 4 * width; ++x) {
      state = state * 1664525 + 1013904223;
      picture->row(y)[x] = data[4] % 3 == 0 ? 255 : static_cast<std::uint8_t>(state >> 24);
    }
  }

  const std::string_view op(reinterpret_cast<const char*>(data + 5), size - 5);
  const auto named = marbelot::namedEdit(op);
  if (!named) return 0;
  const auto result = named->edit.apply(*picture);
  if (!result) return 0;
  if (!Bitmap::fits(result->width(), result->height()) || named->edit.message.empty()) std::abort();
  if (std::int64_t{result->width()} * result->height() > 1 << 20) return 0;
  const marbelot::PlainPathOnly plainOnly;
  if (!sameBytes(*result, *named->edit.apply(*picture))) std::abort();
  return 0;
}
