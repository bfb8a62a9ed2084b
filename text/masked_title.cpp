#include "text/masked_title.h"

#include "clipboard/classifier.h"
#include "platform/text.h"
#include "text/flatten_trim.h"

namespace marbelot {
namespace {

constexpr std::size_t windowBytes = 16 * 1024;
constexpr std::string_view lineBreaksAndBlanks = " \t\n";

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

std::string_view titleWindow(std::string_view text) {
  if (text.size() <= windowBytes) return text;
  std::size_t end = text.substr(0, windowBytes).find_last_of(lineBreaksAndBlanks);
  // No secret is half a window long.
  if (end == text.npos || end < windowBytes / 2) end = windowBytes;
  while (end > 0 && isContinuation(text[end])) --end;
  if (text[end] == '\n' && text[end - 1] == '\r') --end;
  return text.substr(0, end);
}

std::string maskedPreview(std::string_view text, std::size_t limit) {
  const std::string_view window = titleWindow(text);
  std::string masked = maskSecrets(window);
  // Something follows, also when masking has made the window shorter than the title.
  if (window.size() < text.size() && text::prefixBytes(masked, limit) == masked.size()) {
    masked += "…";
    return quotedPreview(masked, limit + 1);
  }
  return quotedPreview(masked, limit);
}

}  // namespace marbelot
