// Colours of the operations.
#pragma once

#include <cstdint>

namespace marbelot {

// sRGB, opaque.
struct Color {
  std::uint8_t red = 0, green = 0, blue = 0;

  friend bool operator==(const Color&, const Color&) = default;
};

namespace colors {

inline constexpr Color white{255, 255, 255};
inline constexpr Color black{0, 0, 0};
inline constexpr Color gray{128, 128, 128};  // half of white's level
// The system colours in the light appearance, from the table "System colors" in the chapter "Color"
// of Apple's Human Interface Guidelines (2022 to 2024).
inline constexpr Color red{255, 59, 48};
inline constexpr Color green{52, 199, 89};
inline constexpr Color blue{0, 122, 255};

}  // namespace colors
}  // namespace marbelot
