#include <cmath>
#include <cstring>

#include "image/exact_math.h"
#include "image/mirror.h"
#include "image/pixel_operations.h"
#include "image/transpose.h"
#include "platform/fast_path.h"

namespace marbelot {
namespace {

// To the left, row r becomes column r and the last column the first row; to the right, row r
// becomes the column that is r from the last, and the first column the first row.
void turnQuarter(bool left, const Bitmap& picture, Bitmap& result) {
  const auto step = static_cast<std::ptrdiff_t>(picture.bytesPerRow());
  const auto resultStep = static_cast<std::ptrdiff_t>(result.bytesPerRow());
  if (left) {
    transposePixels({picture.data(), step}, picture.height(), picture.width(),
                    {result.row(result.height() - 1), -resultStep});
  } else {
    transposePixels({picture.row(picture.height() - 1), -step}, picture.height(), picture.width(),
                    {result.data(), resultStep});
  }
}

void turnAround(const Bitmap& picture, Bitmap& result) {
  for (int y = 0; y < result.height(); ++y) {
    mirrorPixels(picture.row(picture.height() - 1 - y), result.row(y), result.width());
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
    const std::uint8_t* above[] = {at(column, row), at(column + 1, row)};
    const std::uint8_t* below[] = {at(column, row + 1), at(column + 1, row + 1)};
    for (int channel = 0; channel < 4; ++channel) {
      const std::uint32_t sum =
          toAbove * (toLeft * above[0][channel] + toRight * above[1][channel]) +
          toBelow * (toLeft * below[0][channel] + toRight * below[1][channel]);
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

  const std::uint8_t* at(std::int64_t column, std::int64_t row) const {
    static constexpr std::uint8_t nothing[4] = {};
    if (column < 0 || row < 0 || column >= picture_.width() || row >= picture_.height())
      return nothing;
    return picture_.row(static_cast<int>(row)) + 4 * column;
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
    turnQuarter(degrees > 0, picture, *result);
  } else if (angle == 180) {
    turnAround(picture, *result);
  } else {
    turnBy(angle, picture, *result);
  }
  finishStreaming();
  return result;
}

}  // namespace marbelot
