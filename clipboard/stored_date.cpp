#include "clipboard/stored_date.h"

#include <locale.h>
#include <stdlib.h>

#include <array>
#include <charconv>
#include <cmath>

#ifdef __APPLE__
#include <xlocale.h>
#endif

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

// Apple's library has no std::from_chars for doubles, and strtod goes by the user's language.
std::optional<double> parsedDate(std::string_view text) {
  static const locale_t plain = newlocale(LC_NUMERIC_MASK, "C", nullptr);
  const bool decimal = text.find_first_not_of("0123456789.-+eE") == std::string_view::npos;
  if (!decimal || text.empty() || text.front() == '+') return std::nullopt;
  const std::string digits(text);
  char* end = nullptr;
  const double seconds = strtod_l(digits.c_str(), &end, plain);
  if (end != digits.c_str() + digits.size() || !std::isfinite(seconds)) return std::nullopt;
  return seconds;
}

}  // namespace marbelot
