// The rows of a picture as a PNG file holds them, in the smallest of the forms that keep it as it
// is: a palette, three or four bytes a pixel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/bitmap.h"

namespace marbelot {

// The numbers that PNG gives those of its filters that are worth their time.
enum class PngFilter : std::uint8_t { none = 0, sub = 1, up = 2, average = 3, paeth = 4 };

// Up to 256 colours, all opaque, in the order of their first pixel.
class PngPalette {
 public:
  // None when the picture has more colours, or one that is not opaque.
  static std::optional<PngPalette> of(const Bitmap& bitmap);

  // Bits of a pixel: 1, 2, 4 or 8.
  int bits() const;
  // Three bytes a colour.
  std::string colours() const;
  // Writes the pixels' numbers, the first in the highest bits of its byte.
  void pack(const std::uint8_t* row, int pixels, std::uint8_t* to) const;

 private:
  // At most a quarter of the places are taken, so that a search is short.
  static constexpr std::size_t places = 1024;
  struct Place {
    std::uint32_t colour = 0;
    int index = -1;
  };
  std::size_t placeOf(std::uint32_t colour) const;

  std::vector<Place> table_ = std::vector<Place>(places);
  std::vector<std::uint32_t> colours_;  // pixels as they are in memory
};

class PngRows {
 public:
  // `bitmap` outlives the rows.
  explicit PngRows(const Bitmap& bitmap);

  // For the header: bits of a sample, and the number of the colour type.
  int bits() const { return palette_ ? palette_->bits() : 8; }
  int colourType() const { return palette_ ? 3 : opaque_ ? 2 : 6; }
  const std::optional<PngPalette>& palette() const { return palette_; }
  // Bytes of a row, its filter's number included.
  std::size_t rowBytes() const { return 1 + bytes_; }

  // Writes row `y` behind its filter's number. Cheapest in order. `to` has room for one byte more
  // than the row has.
  void write(int y, PngFilter filter, std::uint8_t* to);

 private:
  using Row = std::vector<std::uint8_t>;
  void sample(int y, std::uint8_t* to) const;

  const Bitmap& bitmap_;
  std::optional<PngPalette> palette_;
  bool opaque_;
  std::size_t pixel_;  // bytes of one, at least 1
  std::size_t bytes_;
  Row row_;  // behind a pixel of zeros, which is the one to the left of the first
  Row above_;
  int sampled_ = -1;  // which row is in row_
};

}  // namespace marbelot
