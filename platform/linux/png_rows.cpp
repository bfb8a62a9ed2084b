#include "platform/linux/png_rows.h"

#include <array>
#include <cstring>

#include "platform/linux/pixel_rows.h"
#include "platform/linux/png_filters.h"

namespace marbelot {
namespace {

constexpr std::size_t maximumColours = 256;

std::uint32_t pixelAt(const std::uint8_t* row, int x) {
  std::uint32_t pixel = 0;
  std::memcpy(&pixel, row + 4 * static_cast<std::size_t>(x), sizeof pixel);
  return pixel;
}

std::array<std::uint8_t, 4> bytesOf(std::uint32_t pixel) {
  std::array<std::uint8_t, 4> bytes{};
  std::memcpy(bytes.data(), &pixel, sizeof pixel);
  return bytes;
}

bool isOpaque(const Bitmap& bitmap) {
  for (int y = 0; y < bitmap.height(); ++y) {
    const std::uint8_t* row = bitmap.row(y);
    std::uint32_t all = ~std::uint32_t{0};
    for (int x = 0; x < bitmap.width(); ++x) all &= pixelAt(row, x);
    if (bytesOf(all)[3] != 255) return false;
  }
  return true;
}

void subtract(const std::uint8_t* row, const std::uint8_t* guess, std::uint8_t* to,
              std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) to[i] = static_cast<std::uint8_t>(row[i] - guess[i]);
}

void subtractAverage(const std::uint8_t* row, const std::uint8_t* left, const std::uint8_t* above,
                     std::uint8_t* to, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i)
    to[i] = static_cast<std::uint8_t>(row[i] - (left[i] + above[i]) / 2);
}

void subtractPaeth(const std::uint8_t* row, const std::uint8_t* left, const std::uint8_t* above,
                   const std::uint8_t* corner, std::uint8_t* to, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i)
    to[i] = static_cast<std::uint8_t>(row[i] - paethPredictor(left[i], above[i], corner[i]));
}

}  // namespace

std::size_t PngPalette::placeOf(std::uint32_t colour) const {
  std::size_t place = (colour * 0x9E3779B1U) >> 22;  // Fibonacci hashing to ten bits
  while (table_[place].index >= 0 && table_[place].colour != colour) place = (place + 1) % places;
  return place;
}

std::optional<PngPalette> PngPalette::of(const Bitmap& bitmap) {
  PngPalette palette;
  std::uint32_t last = ~pixelAt(bitmap.row(0), 0);
  for (int y = 0; y < bitmap.height(); ++y) {
    const std::uint8_t* row = bitmap.row(y);
    for (int x = 0; x < bitmap.width(); ++x) {
      const std::uint32_t pixel = pixelAt(row, x);
      if (pixel == last) continue;
      last = pixel;
      Place& place = palette.table_[palette.placeOf(pixel)];
      if (place.index >= 0) continue;
      if (palette.colours_.size() == maximumColours || bytesOf(pixel)[3] != 255)
        return std::nullopt;
      place = {pixel, static_cast<int>(palette.colours_.size())};
      palette.colours_.push_back(pixel);
    }
  }
  return palette;
}

int PngPalette::bits() const {
  const std::size_t count = colours_.size();
  return count <= 2 ? 1 : count <= 4 ? 2 : count <= 16 ? 4 : 8;
}

std::string PngPalette::colours() const {
  std::string bytes;
  for (const std::uint32_t colour : colours_) {
    const auto parts = bytesOf(colour);
    bytes.append(
        {static_cast<char>(parts[0]), static_cast<char>(parts[1]), static_cast<char>(parts[2])});
  }
  return bytes;
}

void PngPalette::pack(const std::uint8_t* row, int pixels, std::uint8_t* to) const {
  const auto indexOf = [this, row](int x) {
    return static_cast<unsigned>(table_[placeOf(pixelAt(row, x))].index);
  };
  const int bits = this->bits();
  if (bits == 8) {
    for (int x = 0; x < pixels; ++x) to[x] = static_cast<std::uint8_t>(indexOf(x));
    return;
  }
  const int together = 8 / bits;  // pixels of a byte
  for (int x = 0; x < pixels; x += together) {
    unsigned byte = 0;
    for (int i = 0; i < together; ++i) byte = byte << bits | (x + i < pixels ? indexOf(x + i) : 0);
    *to++ = static_cast<std::uint8_t>(byte);
  }
}

PngRows::PngRows(const Bitmap& bitmap)
    : bitmap_(bitmap),
      palette_(PngPalette::of(bitmap)),
      opaque_(palette_ || isOpaque(bitmap)),
      pixel_(palette_  ? 1
             : opaque_ ? 3
                       : 4),
      bytes_(palette_ ? (static_cast<std::size_t>(bitmap.width()) *
                             static_cast<std::size_t>(palette_->bits()) +
                         7) /
                            8
                      : static_cast<std::size_t>(bitmap.width()) * pixel_),
      row_(pixel_ + bytes_ + 1),
      above_(row_.size()) {}

void PngRows::sample(int y, std::uint8_t* to) const {
  const std::uint8_t* row = bitmap_.row(y);
  if (palette_) {
    palette_->pack(row, bitmap_.width(), to);
  } else if (opaque_) {
    dropAlpha(row, to, bitmap_.width());
  } else {
    unpremultiply(row, to, bitmap_.width());
  }
}

void PngRows::write(int y, PngFilter filter, std::uint8_t* to) {
  *to++ = static_cast<std::uint8_t>(filter);
  if (filter == PngFilter::none) return sample(y, to);
  if (sampled_ == y - 1 && y > 0) {
    std::swap(row_, above_);
  } else if (y > 0) {
    sample(y - 1, above_.data() + pixel_);
  } else {
    above_.assign(above_.size(), 0);
  }
  const std::uint8_t* const left = row_.data();
  std::uint8_t* const row = row_.data() + pixel_;
  const std::uint8_t* const above = above_.data() + pixel_;
  sample(y, row);
  sampled_ = y;
  if (filter == PngFilter::paeth) return subtractPaeth(row, left, above, above_.data(), to, bytes_);
  if (filter == PngFilter::average) return subtractAverage(row, left, above, to, bytes_);
  subtract(row, filter == PngFilter::sub ? left : above, to, bytes_);
}

}  // namespace marbelot
