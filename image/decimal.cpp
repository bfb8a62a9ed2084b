#include "image/decimal.h"

#include <cstddef>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace marbelot {
namespace {

// Takes digits off the front and says how many there were.
std::size_t takeDigits(std::string_view& text) {
  const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
  text.remove_prefix(count);
  return count;
}

bool take(std::string_view& text, std::string_view any) {
  if (text.empty() || any.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

bool isDecimal(std::string_view text) {
  take(text, "+-");
  std::size_t digits = takeDigits(text);
  if (take(text, ".")) digits += takeDigits(text);
  if (digits == 0) return false;
  if (take(text, "eE")) {
    take(text, "+-");
    if (takeDigits(text) == 0) return false;
  }
  return text.empty();
}

}  // namespace

std::optional<double> decimalNumber(std::string_view text) {
  const std::string_view unsignedText = text.substr(text.starts_with('-') || text.starts_with('+'));
  if (unsignedText == "nan") return std::numeric_limits<double>::quiet_NaN();
  if (unsignedText == "inf" || unsignedText == "infinity") {
    return (text.starts_with('-') ? -1 : 1) * std::numeric_limits<double>::infinity();
  }
  if (!isDecimal(text)) return std::nullopt;
  // Libraries differ in what they call an error when a number is out of range, not in the number.
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double number = 0;
  stream >> number;
  return number;
}

}  // namespace marbelot
