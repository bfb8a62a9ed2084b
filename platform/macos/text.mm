// Text services from Foundation: characters as a user counts them, case, collation, local time.
#include "platform/text.h"

#import <Foundation/Foundation.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/macos/character_properties.h"
#include "platform/macos/conversions.h"
#include "platform/macos/utf16.h"

namespace marbelot::text {
namespace {

bool isAscii(char32_t c) { return c < 0x80; }

bool isControl(char32_t c) {
  if (isAscii(c)) return c < 0x20 || c == 0x7F;
  return hasProperty(c, kControl);
}

bool isBase(char32_t c) { return isAscii(c) ? !isControl(c) : hasProperty(c, kBase); }

// True when it takes no more than the two scalars to know that a character ends between them. That
// settles nearly all text; only what joins (accents, emoji, flags, Indic scripts) goes to
// Foundation, which does not see CR LF as one character either.
bool surelyBreaks(char32_t a, char32_t b) {
  if (a == '\r' && b == '\n') return false;
  if (isControl(a) || isControl(b)) return true;
  return isBase(a) && isBase(b);
}

// A stretch between two sure breaks.
struct Segment {
  std::string_view text;
  bool single = true;  // one character for certain
};

Segment firstSegment(std::string_view text) {
  Scalar last = scalarAt(text, 0);
  std::size_t end = last.bytes;
  std::size_t scalars = 1;
  while (end < text.size()) {
    const Scalar next = scalarAt(text, end);
    if (surelyBreaks(last.value, next.value)) break;
    last = next;
    end += next.bytes;
    ++scalars;
  }
  return {text.substr(0, end), scalars == 1 || text[0] == '\r'};
}

Segment lastSegment(std::string_view text) {
  Scalar first = scalarBefore(text, text.size());
  std::size_t start = text.size() - first.bytes;
  std::size_t scalars = 1;
  while (start > 0) {
    const Scalar previous = scalarBefore(text, start);
    if (surelyBreaks(previous.value, first.value)) break;
    first = previous;
    start -= previous.bytes;
    ++scalars;
  }
  return {text.substr(start), scalars == 1 || text[start] == '\r'};
}

// Steps over up to `count` characters of a segment and takes them off `count`; gives the bytes.
std::size_t stepForward(std::string_view segment, std::size_t& count) {
  NSString* string = nsString(segment);
  NSUInteger unit = 0;
  for (; count > 0 && unit < string.length; --count)
    unit = NSMaxRange([string rangeOfComposedCharacterSequenceAtIndex:unit]);
  return Utf16Offsets(segment).bytesAt(unit);
}

std::size_t stepBackward(std::string_view segment, std::size_t& count) {
  NSString* string = nsString(segment);
  NSUInteger unit = string.length;
  for (; count > 0 && unit > 0; --count)
    unit = [string rangeOfComposedCharacterSequenceAtIndex:unit - 1].location;
  return segment.size() - Utf16Offsets(segment).bytesAt(unit);
}

bool isPlain(char byte) { return byte >= 0x20 && byte < 0x7F; }

// The characters up to `limit` and the bytes they take.
std::size_t advance(std::string_view text, std::size_t limit, std::size_t& bytes) {
  std::size_t left = limit;
  std::size_t at = 0;
  while (left > 0 && at < text.size()) {
    if (isPlain(text[at]) && (at + 1 == text.size() || isPlain(text[at + 1]))) {
      ++at;
      --left;
      continue;
    }
    const Segment segment = firstSegment(text.substr(at));
    if (segment.single) {
      at += segment.text.size();
      --left;
    } else {
      @autoreleasepool {
        at += stepForward(segment.text, left);
      }
    }
  }
  bytes = at;
  return limit - left;
}

NSDateFormatter* stampFormatter() {
  static NSDateFormatter* const formatter = [] {
    NSDateFormatter* made = [[NSDateFormatter alloc] init];
    // The user's own locale may write other digits or count other years.
    made.locale = [NSLocale localeWithLocaleIdentifier:@"en_US_POSIX"];
    made.dateFormat = @"yyyy-MM-dd 'at' HH.mm.ss";
    made.timeZone = NSTimeZone.localTimeZone;  // follows when the user moves to another zone
    return made;
  }();
  return formatter;
}

}  // namespace

bool isLetter(char32_t c) { return hasProperty(c, kAlphabetic); }
bool isNumber(char32_t c) { return hasProperty(c, kNumeric); }
bool isLowercase(char32_t c) { return hasProperty(c, kLowercase); }
bool isUppercase(char32_t c) { return hasProperty(c, kUppercase); }

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
    std::size_t bytes = segment.text.size();
    if (segment.single) {
      --count;
    } else {
      @autoreleasepool {
        bytes = stepBackward(segment.text, count);
      }
    }
    rest.remove_suffix(bytes);
  }
  return text.size() - rest.size();
}

std::string lowercased(std::string_view text) {
  @autoreleasepool {
    return utf8(nsString(text).lowercaseString);
  }
}

std::weak_ordering localizedCompare(std::string_view a, std::string_view b) {
  @autoreleasepool {
    const auto order = static_cast<int>([nsString(a) localizedCaseInsensitiveCompare:nsString(b)]);
    return order <=> 0;
  }
}

std::string fileTimestamp(double seconds) {
  // Beyond these (year 1 to 9999) the form has no four-digit year; NaN goes to the epoch.
  constexpr double kFirst = -62135596800.0 + 86400, kLast = 253402300799.0 - 86400;
  seconds = std::isnan(seconds) ? 0 : std::floor(std::clamp(seconds, kFirst, kLast));
  @autoreleasepool {
    return utf8([stampFormatter() stringFromDate:[NSDate dateWithTimeIntervalSince1970:seconds]]);
  }
}

double now() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace marbelot::text
