// Text services from Foundation: properties, composed characters, case, collation, local time.
#include "platform/text.h"

#import <Foundation/Foundation.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/macos/character_properties.h"
#include "platform/macos/clusters.h"
#include "platform/macos/conversions.h"

namespace marbelot {

std::vector<std::size_t> composedEnds(std::string_view text) {
  std::vector<std::size_t> ends;
  @autoreleasepool {
    NSString* string = nsString(text);
    for (NSUInteger unit = 0; unit < string.length;) {
      unit = NSMaxRange([string rangeOfComposedCharacterSequenceAtIndex:unit]);
      ends.push_back(unit);
    }
  }
  return ends;
}

namespace text {
namespace {

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

}  // namespace text
}  // namespace marbelot
