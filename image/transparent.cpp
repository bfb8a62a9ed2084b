#include <cstdlib>
#include <cstring>

#include "image/pixel_operations.h"

namespace marbelot {
namespace {

constexpr int tolerance = 40;

void clearNear(const std::uint8_t* from, std::uint8_t* to, int width,
               const std::uint8_t* reference) {
  for (int x = 0; x < width; ++x, from += 4, to += 4) {
    const bool near = std::abs(from[0] - reference[0]) <= tolerance &&
                      std::abs(from[1] - reference[1]) <= tolerance &&
                      std::abs(from[2] - reference[2]) <= tolerance;
    if (near) {
      std::memset(to, 0, 4);
    } else {
      std::memcpy(to, from, 4);
    }
  }
}

}  // namespace

Result makeTransparent(const Bitmap& picture, Background background) {
  static constexpr std::uint8_t white[] = {255, 255, 255}, black[] = {0, 0, 0};
  const std::uint8_t* reference = background == Background::white   ? white
                                  : background == Background::black ? black
                                                                    : picture.data();
  Result result = Result::canvas(picture.width(), picture.height());
  if (!result) return result;
  for (int y = 0; y < picture.height(); ++y) {
    clearNear(picture.row(y), result->row(y), picture.width(), reference);
  }
  return result;
}

}  // namespace marbelot
