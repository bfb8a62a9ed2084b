// Colours of an image that are not in sRGB, for the codecs' process.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace marbelot {

// From an image's colour space to sRGB. Pixels are not premultiplied.
class ColorTransform {
 public:
  // Of the ICC profile in the image. Null when the profile makes no visible difference, is damaged,
  // or is of something else than `gray` or else RGB.
  static std::unique_ptr<ColorTransform> fromProfile(std::string_view icc, bool gray);
  // Of the numbers that PNG gives: the file's gamma, and `xy`, of white, red, green and blue, or
  // null for those of sRGB. Null as above.
  static std::unique_ptr<ColorTransform> fromGamma(double gamma, const double* xy);

  ~ColorTransform();

  // Red, green, blue and alpha, in place. A transform of gray looks at red only.
  void apply(std::uint8_t* pixels, int count) const;
  // The same from 16 bits in the machine's order.
  void apply(const std::uint16_t* from, std::uint8_t* to, int count) const;

 private:
  struct Handles;
  explicit ColorTransform(std::unique_ptr<Handles> handles);
  static std::unique_ptr<ColorTransform> make(void* profile, bool gray);
  bool isVisible() const;

  std::unique_ptr<Handles> handles_;
};

}  // namespace marbelot
