// Decoding, inline because it runs once per scalar of a text.
#pragma once

#include <unicode/utf8.h>

#include <cstddef>
#include <string_view>

namespace marbelot::text {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // ICU's macro mixes int and uint8_t
// Decodes the scalar at `at` and moves past it; negative when the sequence is invalid.
inline UChar32 decode(std::string_view text, std::size_t& at) {
  const char* const bytes = text.data();
  UChar32 c;
  U8_NEXT(bytes, at, text.size(), c);
  return c;
}
#pragma GCC diagnostic pop

}  // namespace marbelot::text
