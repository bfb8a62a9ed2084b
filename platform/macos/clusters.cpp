// Characters as a user counts them.
#include "platform/macos/clusters.h"

#include <algorithm>

#include "platform/macos/character_properties.h"
#include "platform/macos/utf16.h"
#include "platform/text.h"

namespace marbelot::text {
namespace {

bool isAscii(char32_t c) { return c < 0x80; }

bool isControl(char32_t c) {
  if (isAscii(c)) return c < 0x20 || c == 0x7F;
  return hasProperty(c, kControl);
}

bool isBase(char32_t c) { return isAscii(c) ? !isControl(c) : hasProperty(c, kBase); }

// True when the two scalars alone show that a character ends between them. That settles nearly all
// text; only what joins (accents, emoji, flags, Indic scripts) is left to the system.
bool surelyBreaks(char32_t a, char32_t b) {
  if (a == '\r' && b == '\n') return false;
  if (isControl(a) || isControl(b)) return true;
  return isBase(a) && isBase(b);
}

// A stretch between two sure breaks.
struct Segment {
  std::string_view text;
  bool single;  // one character for certain
};

Segment firstSegment(std::string_view text) {
  Scalar last = scalarAt(text, 0);
  std::size_t end = last.bytes;
  bool single = true;
  while (end < text.size()) {
    const Scalar next = scalarAt(text, end);
    if (surelyBreaks(last.value, next.value)) break;
    last = next;
    end += next.bytes;
    single = false;
  }
  return {text.substr(0, end), single || text[0] == '\r'};
}

Segment lastSegment(std::string_view text) {
  Scalar first = scalarBefore(text, text.size());
  std::size_t start = text.size() - first.bytes;
  bool single = true;
  while (start > 0) {
    const Scalar previous = scalarBefore(text, start);
    if (surelyBreaks(previous.value, first.value)) break;
    first = previous;
    start -= previous.bytes;
    single = false;
  }
  return {text.substr(start), single || text[start] == '\r'};
}

bool isPlain(char byte) { return byte >= 0x20 && byte < 0x7F; }

// Steps over up to `limit` characters; `bytes` is what they take.
std::size_t advance(std::string_view text, std::size_t limit, std::size_t& bytes) {
  std::size_t count = 0;
  std::size_t at = 0;
  while (count < limit && at < text.size()) {
    if (isPlain(text[at]) && (at + 1 == text.size() || isPlain(text[at + 1]))) {
      ++at;
      ++count;
      continue;
    }
    const Segment segment = firstSegment(text.substr(at));
    if (segment.single) {
      ++count;
      at += segment.text.size();
      continue;
    }
    const std::vector<std::size_t> ends = composedEnds(segment.text);
    const std::size_t taken = std::min(limit - count, ends.size());
    count += taken;
    at += Utf16Offsets(segment.text).bytesAt(ends[taken - 1]);
  }
  bytes = at;
  return count;
}

}  // namespace

std::size_t characterCount(std::string_view text) {
  std::size_t bytes = 0;
  return advance(text, text.size(), bytes);
}

std::size_t prefixBytes(std::string_view text, std::size_t count) {
  std::size_t bytes = 0;
  advance(text, count, bytes);
  return bytes;
}

std::size_t suffixBytes(std::string_view text, std::size_t count) {
  std::string_view rest = text;
  while (count > 0 && !rest.empty()) {
    const Segment segment = lastSegment(rest);
    if (segment.single) {
      --count;
      rest.remove_suffix(segment.text.size());
      continue;
    }
    const std::vector<std::size_t> ends = composedEnds(segment.text);
    const std::size_t taken = std::min(count, ends.size());
    count -= taken;
    const std::size_t start = taken == ends.size() ? 0 : ends[ends.size() - taken - 1];
    rest.remove_suffix(segment.text.size() - Utf16Offsets(segment.text).bytesAt(start));
  }
  return text.size() - rest.size();
}

}  // namespace marbelot::text
