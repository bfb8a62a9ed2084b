#include "text/percent_encoding.h"

#include <cctype>

#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::size_t escapeBytes = 3;

bool mayStand(char c) {
  return isAlnum(c) || std::string_view("-._~!$&'()*+,;=:@/?").find(c) != std::string_view::npos;
}

// The last place up to `at`, which is between two scalars, that is between two characters.
std::size_t characterBoundary(std::string_view text, std::size_t at) {
  if (at >= text.size()) return text.size();
  const std::size_t next = text::scalarAt(text, at).bytes;
  const std::string_view beyond = text.substr(0, at + next);
  const std::size_t last = text::suffixBytes(beyond, 1);
  return last > next ? beyond.size() - last : at;
}

}  // namespace

EncodedText percentEncoded(std::string_view text, std::size_t maximumBytes) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::size_t length = 0;  // when encoded
  std::size_t end = 0;
  while (end < text.size()) {
    const std::size_t bytes = text::scalarAt(text, end).bytes;
    const std::size_t more = mayStand(text[end]) ? 1 : escapeBytes * bytes;
    if (length + more > maximumBytes) break;
    length += more;
    end += bytes;
  }
  EncodedText encoded;
  encoded.whole = end == text.size();
  if (!encoded.whole) end = characterBoundary(text, end);
  encoded.text.reserve(length);
  for (const char c : text.substr(0, end)) {
    if (mayStand(c)) {
      encoded.text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded.text += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return encoded;
}

std::string withWholeEscapes(std::string_view url) {
  const auto isDigit = [&](std::size_t at) {
    return at < url.size() && std::isxdigit(static_cast<unsigned char>(url[at]));
  };
  std::string whole;
  whole.reserve(url.size());
  for (std::size_t at = 0; at < url.size(); ++at) {
    whole += url[at];
    if (url[at] == '%' && !(isDigit(at + 1) && isDigit(at + 2))) whole += "25";
  }
  return whole;
}

}  // namespace marbelot
