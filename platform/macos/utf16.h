// Between the seam's UTF-8 and the system's UTF-16. Total functions: what is invalid becomes
// U+FFFD, so that no text, whatever it holds, is lost on the way.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot {

std::u16string toUtf16(std::string_view text);
std::string fromUtf16(std::u16string_view text);

// Finds the byte that a UTF-16 unit of toUtf16(text) came from. Asked in ascending order, all
// questions together cost one pass.
class Utf16Offsets {
 public:
  explicit Utf16Offsets(std::string_view text) : text_(text) {}

  // A unit inside a surrogate pair gives the end of the pair; one beyond the text the size.
  std::size_t bytesAt(std::size_t unit);

 private:
  std::string_view text_;
  std::size_t byte_ = 0;
  std::size_t unit_ = 0;
};

}  // namespace marbelot
