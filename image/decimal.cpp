#include "image/decimal.h"

#include <algorithm>
#include <cmath>
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

// `word` is in lower case.
bool isWord(std::string_view text, std::string_view word) {
  return std::equal(
      text.begin(), text.end(), word.begin(), word.end(), [](char letter, char lower) {
        return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
      });
}

}  // namespace

std::optional<double> decimalNumber(std::string_view text) {
  const std::string_view unsignedText = text.substr(text.starts_with('-') || text.starts_with('+'));
  using Limits = std::numeric_limits<double>;
  if (isWord(unsignedText, "nan")) return Limits::quiet_NaN();
  if (isWord(unsignedText, "inf") || isWord(unsignedText, "infinity"))
    return text.starts_with('-') ? -Limits::infinity() : Limits::infinity();
  if (!isDecimal(text)) return std::nullopt;
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double number = 0;
  stream >> number;
  // Of a number beyond all doubles some libraries make the largest one; one that is too small is no
  // error to all of them.
  if (stream.fail() && std::abs(number) >= Limits::max())
    return std::copysign(Limits::infinity(), number);
  return number;
}

}  // namespace marbelot
