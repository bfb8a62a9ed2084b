// Pixels: what every image operation takes and gives, and what codecs read and write.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace marbelot {

// Four bytes a pixel – red, green, blue, alpha, in this order – of 8 bits each, premultiplied with
// alpha, in sRGB. Rows top first. At least one pixel; it may be moved but not copied.
class Bitmap {
 public:
  static constexpr std::int64_t maximumSide = 32768;                   // pixels
  static constexpr std::int64_t maximumBytes = std::int64_t{1} << 30;  // of all rows
  static constexpr std::int64_t pixelBytes = 4;

  // Whether there can be a bitmap of this size in pixels. Any number may be asked about.
  static constexpr bool fits(std::int64_t width, std::int64_t height) {
    return width >= 1 && height >= 1 && width <= maximumSide && height <= maximumSide &&
           width * height * pixelBytes <= maximumBytes;
  }

  // Rows without gaps, their pixels undefined; none when it does not fit or memory is short. The
  // memory is reused: see pixel_memory.h.
  static std::optional<Bitmap> make(std::int64_t width, std::int64_t height);
  // The same, fully transparent.
  static std::optional<Bitmap> makeClear(std::int64_t width, std::int64_t height);
  // Pixels that are somewhere already, such as in memory shared with another process; they stay
  // there until the bitmap and its `memory` are gone. `bytesPerRow` and the address are multiples
  // of 4; `memory` holds `height` rows. None when it does not fit, or rows are too short.
  static std::optional<Bitmap> adopt(std::int64_t width, std::int64_t height,
                                     std::size_t bytesPerRow, std::shared_ptr<std::uint8_t> memory);

  Bitmap(Bitmap&&) = default;
  Bitmap& operator=(Bitmap&&) = default;

  int width() const { return width_; }    // pixels
  int height() const { return height_; }  // pixels
  std::size_t bytesPerRow() const { return bytesPerRow_; }

  std::uint8_t* data() { return memory_.get(); }
  const std::uint8_t* data() const { return memory_.get(); }
  std::uint8_t* row(int y) { return data() + bytesPerRow_ * static_cast<std::size_t>(y); }
  const std::uint8_t* row(int y) const {
    return data() + bytesPerRow_ * static_cast<std::size_t>(y);
  }

 private:
  Bitmap(std::int64_t width, std::int64_t height, std::size_t bytesPerRow,
         std::shared_ptr<std::uint8_t> memory);

  int width_;
  int height_;
  std::size_t bytesPerRow_;
  std::shared_ptr<std::uint8_t> memory_;
};

// Pixels that several own and nobody changes any more.
using SharedBitmap = std::shared_ptr<const Bitmap>;

}  // namespace marbelot
