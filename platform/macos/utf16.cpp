#include "platform/macos/utf16.h"

#include <unicode/ustring.h>

#include <cstdint>

#include "platform/text.h"

namespace marbelot {
namespace {

constexpr UChar32 replacement = 0xFFFD;

}  // namespace

std::u16string toUtf16(std::string_view text) {
  std::u16string units(text.size(), u'\0');  // never more than bytes
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8WithSub(units.data(), static_cast<std::int32_t>(units.size()), &length, text.data(),
                       static_cast<std::int32_t>(text.size()), replacement, nullptr, &error);
  units.resize(static_cast<std::size_t>(length));
  return units;
}

std::string fromUtf16(std::u16string_view text) {
  const auto size = static_cast<std::int32_t>(text.size());
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strToUTF8WithSub(nullptr, 0, &length, text.data(), size, replacement, nullptr, &error);
  std::string bytes(static_cast<std::size_t>(length), '\0');
  error = U_ZERO_ERROR;
  u_strToUTF8WithSub(bytes.data(), length, nullptr, text.data(), size, replacement, nullptr,
                     &error);
  return bytes;
}

std::size_t Utf16Offsets::bytesAt(std::size_t unit) {
  if (unit < unit_) *this = Utf16Offsets(text_);
  while (unit_ < unit && byte_ < text_.size()) {
    const text::Scalar scalar = text::scalarAt(text_, byte_);
    byte_ += scalar.bytes;
    unit_ += scalar.value >= 0x10000 ? 2 : 1;
  }
  return byte_;
}

}  // namespace marbelot
