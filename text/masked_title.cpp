#include "text/masked_title.h"

#include "platform/text.h"
#include "text/flatten_trim.h"

namespace marbelot {
namespace {

constexpr std::string_view lineBreaksAndBlanks = " \t\n";

}  // namespace

std::string_view titleWindow(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  std::size_t end = text.substr(0, bytes).find_last_of(lineBreaksAndBlanks);
  if (end == text.npos || end < bytes / 2) end = bytes;
  while (end > 0 && text::isContinuation(text[end])) --end;
  if (text[end] == '\n' && text[end - 1] == '\r') --end;
  return text.substr(0, end);
}

std::string maskedWindow(std::string_view text, Mask mask, std::size_t bytes) {
  // All tokens that are longer than half a window are made of these.
  const auto inToken = [](char c) { return c > ' ' && c < 0x7F; };
  std::string_view window = titleWindow(text, bytes);
  if (window.size() == text.size() || !inToken(text[window.size()])) return mask(window);
  const std::size_t whole = window.size();
  while (!window.empty() && inToken(window.back())) window.remove_suffix(1);
  std::string masked = mask(window);
  if (window.size() < whole) masked += "***";
  return masked;
}

std::string maskedPreview(std::string_view text, std::size_t limit, Mask mask) {
  const std::string_view window = titleWindow(text);
  std::string masked = maskedWindow(text, mask);
  // Something follows, also when masking has made the window shorter than the title.
  if (window.size() < text.size() && text::prefixBytes(masked, limit) == masked.size()) {
    masked += "…";
    return quotedPreview(masked, limit + 1);
  }
  return quotedPreview(masked, limit);
}

}  // namespace marbelot
