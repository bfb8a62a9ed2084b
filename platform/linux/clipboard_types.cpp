#include "platform/linux/clipboard_types.h"

#include "platform/text.h"

namespace marbelot {
namespace {

std::string fromLatin1(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char byte : bytes) text::appendScalar(text, static_cast<unsigned char>(byte));
  return text;
}

// The type without a character set: nearly always UTF-8 today, Latin-1 by its old definition.
std::string fromPlain(const std::string& bytes) {
  std::string text = text::sanitized(bytes);
  return text == bytes ? text : fromLatin1(bytes);
}

}  // namespace

SharedText decodedText(std::string_view requested, std::string_view answered, std::string bytes) {
  // Some owners that list nothing answer whatever they are asked for with the image that they have.
  if (contains(readImageTypes, answered) || answered == "COMPOUND_TEXT") return nullptr;
  if (answered == "STRING") return share(fromLatin1(bytes));
  if (requested == "text/plain" || answered == "text/plain") return share(fromPlain(bytes));
  return share(text::sanitized(std::move(bytes)));
}

std::string toLatin1(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const auto scalar = text::scalarAt(text, at);
    bytes.push_back(scalar.value < 256 ? static_cast<char>(scalar.value) : '?');
    at += scalar.bytes;
  }
  return bytes;
}

}  // namespace marbelot
