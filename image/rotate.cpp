#include <cmath>
#include <cstring>

#include "image/exact_math.h"
#include "image/pixel_operations.h"

namespace marbelot {
namespace {

// Pixels are moved whole.
void copyPixel(const std::uint8_t* from, std::uint8_t* to) { std::memcpy(to, from, 4); }

void turnLeft(const Bitmap& picture, Bitmap& result) {
  for (int y = 0; y < result.height(); ++y) {
    const int column = picture.width() - 1 - y;
    for (int x = 0; x < result.width(); ++x) {
      copyPixel(picture.row(x) + 4 * column, result.row(y) + 4 * x);
    }
  }
}

void turnRight(const Bitmap& picture, Bitmap& result) {
  for (int y = 0; y < result.height(); ++y) {
    for (int x = 0; x < result.width(); ++x) {
      copyPixel(picture.row(picture.height() - 1 - x) + 4 * y, result.row(y) + 4 * x);
    }
  }
}

void turnAround(const Bitmap& picture, Bitmap& result) {
  for (int y = 0; y < result.height(); ++y) {
    const std::uint8_t* from = picture.row(picture.height() - 1 - y);
    std::uint8_t* to = result.row(y) + 4 * (result.width() - 1);
    for (int x = 0; x < result.width(); ++x) copyPixel(from + 4 * x, to - 4 * x);
  }
}

// Any angle, bilinear. What is outside the picture is transparent, so that its edges are smooth.
class Turned {
 public:
  Turned(const Bitmap& picture, std::int64_t degrees)
      : picture_(picture),
        cos_(fixed(cosPi(static_cast<double>(degrees) / 180))),
        sin_(fixed(sinPi(static_cast<double>(degrees) / 180))) {}

  // The pixel of the turned picture at this distance from its centre, in half pixels.
  void pixel(std::int64_t right, std::int64_t down, std::uint8_t* to) const {
    // Turning back clockwise finds where it comes from; from there to the middles of pixels.
    const std::int64_t x = (right * cos_ - down * sin_ + (picture_.width() - 1) * one) >> 1;
    const std::int64_t y = (right * sin_ + down * cos_ + (picture_.height() - 1) * one) >> 1;
    const std::int64_t column = x >> fractionBits, row = y >> fractionBits;
    if (column < -1 || row < -1 || column >= picture_.width() || row >= picture_.height()) {
      std::memset(to, 0, 4);
      return;
    }
    const auto toRight = static_cast<std::uint32_t>((x & (one - 1)) >> (fractionBits - weightBits));
    const auto toBelow = static_cast<std::uint32_t>((y & (one - 1)) >> (fractionBits - weightBits));
    const std::uint32_t toLeft = whole - toRight, toAbove = whole - toBelow;
    for (int channel = 0; channel < 4; ++channel) {
      const std::uint32_t sum = toAbove * toLeft * at(column, row, channel) +
                                toAbove * toRight * at(column + 1, row, channel) +
                                toBelow * toLeft * at(column, row + 1, channel) +
                                toBelow * toRight * at(column + 1, row + 1, channel);
      to[channel] = static_cast<std::uint8_t>((sum + whole * whole / 2) / (whole * whole));
    }
  }

 private:
  static constexpr int fractionBits = 32;
  static constexpr std::int64_t one = std::int64_t{1} << fractionBits;
  static constexpr int weightBits = 11;
  static constexpr std::uint32_t whole = 1 << weightBits;

  static std::int64_t fixed(double value) {
    return static_cast<std::int64_t>(std::floor(value * one + 0.5));
  }

  std::uint32_t at(std::int64_t column, std::int64_t row, int channel) const {
    if (column < 0 || row < 0 || column >= picture_.width() || row >= picture_.height()) return 0;
    return picture_.row(static_cast<int>(row))[4 * column + channel];
  }

  const Bitmap& picture_;
  std::int64_t cos_, sin_;
};

void turnBy(std::int64_t degrees, const Bitmap& picture, Bitmap& result) {
  const Turned turned(picture, degrees);
  for (int y = 0; y < result.height(); ++y) {
    for (int x = 0; x < result.width(); ++x) {
      turned.pixel(2 * x + 1 - result.width(), 2 * y + 1 - result.height(), result.row(y) + 4 * x);
    }
  }
}

}  // namespace

Result rotate(const Bitmap& picture, std::int64_t degrees) {
  const bool quarter = degrees == 90 || degrees == -90;
  Result result = quarter ? Result::canvas(picture.height(), picture.width())
                          : Result::canvas(picture.width(), picture.height());
  if (!result) return result;
  const std::int64_t angle = (degrees % 360 + 360) % 360;
  if (quarter) {
    (degrees > 0 ? turnLeft : turnRight)(picture, *result);
  } else if (angle == 180) {
    turnAround(picture, *result);
  } else {
    turnBy(angle, picture, *result);
  }
  return result;
}

}  // namespace marbelot
