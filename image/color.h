// Colours of the operations.
#pragma once

#include <cstdint>

namespace marbelot {

// sRGB, opaque.
struct PixelColor {
  std::uint8_t red = 0, green = 0, blue = 0;

  friend bool operator==(const PixelColor&, const PixelColor&) = default;
};

namespace colors {

inline constexpr PixelColor white{255, 255, 255};
inline constexpr PixelColor black{0, 0, 0};
inline constexpr PixelColor gray{128, 128, 128};  // half of white's level
// The system colours in the light appearance, from the table "System colors" in the chapter "Color"
// of Apple's Human Interface Guidelines (2022 to 2024).
inline constexpr PixelColor red{255, 59, 48};
inline constexpr PixelColor green{52, 199, 89};
inline constexpr PixelColor blue{0, 122, 255};

}  // namespace colors
}  // namespace marbelot
