#include "clipboard/stored_date.h"

#include <array>
#include <charconv>
#include <cmath>

namespace marbelot {

std::string storedDate(double seconds) {
  std::array<char, 400> digits{};  // the largest double has 309 of them before the point
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), seconds, std::chars_format::fixed)
          .ptr;
  std::string text(digits.data(), end);
  if (text.find('.') == std::string::npos) text += ".0";
  return text;
}

std::optional<double> parsedDate(std::string_view text) {
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(seconds))
    return std::nullopt;
  return seconds;
}

}  // namespace marbelot
