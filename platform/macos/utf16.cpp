#include "platform/macos/utf16.h"

#include "platform/text.h"

namespace marbelot {
namespace {

bool isLeadSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isTrailSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

void appendUtf16(std::u16string& to, char32_t scalar) {
  if (scalar >= 0x10000) {
    to += static_cast<char16_t>(0xD7C0 + (scalar >> 10));
    scalar = 0xDC00 | (scalar & 0x3FF);
  }
  to += static_cast<char16_t>(scalar);
}

std::u16string toUtf16(std::string_view text) {
  std::u16string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const text::Scalar scalar = text::scalarAt(text, at);
    appendUtf16(result, scalar.value);
    at += scalar.bytes;
  }
  return result;
}

std::string fromUtf16(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    char32_t scalar = text[at];
    if (isLeadSurrogate(text[at]) && at + 1 < text.size() && isTrailSurrogate(text[at + 1])) {
      scalar = 0x10000 + ((scalar & 0x3FF) << 10) + (text[at + 1] & 0x3FF);
      ++at;
    }
    text::appendScalar(result, scalar);
  }
  return result;
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
