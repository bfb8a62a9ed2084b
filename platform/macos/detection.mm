// Data detection by NSDataDetector, which says where something is. What it means in the forms that
// the seam promises, it does not always say; that comes from the program's own detectors. It
// reckons dates from the wall clock and numbers from the user's region; both are the system's and
// cannot be set.
#include "platform/detection.h"

#import <Foundation/Foundation.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "detection/detection.h"
#include "platform/ascii.h"
#include "platform/locale.h"
#include "platform/macos/conversions.h"
#include "platform/macos/utf16.h"

namespace marbelot {
namespace {

bool contains(unsigned kinds, DetectionKind kind) {
  return (kinds & static_cast<unsigned>(kind)) != 0;
}

// The detector for a union of kinds; made once each, as that takes milliseconds. Null when there is
// nothing to look for.
NSDataDetector* detectorFor(unsigned kinds) {
  static NSMutableDictionary<NSNumber*, NSDataDetector*>* const made =
      [NSMutableDictionary dictionary];
  NSTextCheckingTypes types = 0;
  if (contains(kinds, DetectionKind::link)) types |= NSTextCheckingTypeLink;
  if (contains(kinds, DetectionKind::phone)) types |= NSTextCheckingTypePhoneNumber;
  if (contains(kinds, DetectionKind::address)) types |= NSTextCheckingTypeAddress;
  if (contains(kinds, DetectionKind::date)) types |= NSTextCheckingTypeDate;
  if (types == 0) return nil;
  @synchronized(made) {
    NSDataDetector* detector = made[@(types)];
    if (detector == nil) {
      detector = [NSDataDetector dataDetectorWithTypes:types error:nil];
      if (detector != nil) made[@(types)] = detector;
    }
    return detector;
  }
}

// What our own detectors make of a piece in which the system has found something.
std::optional<std::string> ownValue(NSString* matched, DetectionKind kind) {
  std::optional<Detection> found =
      detection::detectFirst(utf8(matched), static_cast<unsigned>(kind),
                             {text::now(), locale::region(), locale::language()});
  return found ? std::optional(std::move(found->value)) : std::nullopt;
}

// E.164; else the digits as they would be dialled.
std::string numberValue(NSString* number) {
  if (auto known = ownValue(number, DetectionKind::phone)) return *known;
  std::string digits;
  for (const char c : utf8(number))
    if (isDigit(c) || (c == '+' && digits.empty())) digits += c;
  return digits;
}

std::string onOneLine(NSString* address) {
  NSMutableArray<NSString*>* lines = [NSMutableArray array];
  NSCharacterSet* edges = [NSCharacterSet characterSetWithCharactersInString:@" \t,"];
  for (NSString* line in
       [address componentsSeparatedByCharactersInSet:NSCharacterSet.newlineCharacterSet]) {
    NSString* trimmed = [line stringByTrimmingCharactersInSet:edges];
    if (trimmed.length > 0) [lines addObject:trimmed];
  }
  return utf8([lines componentsJoinedByString:@", "]);
}

// ISO 8601 to the second, by the clock that is `offset` seconds ahead of Greenwich's; by the user's
// where there is none.
std::string isoTime(double moment, std::optional<NSInteger> offset) {
  std::tm fields{};
  const auto seconds = static_cast<std::time_t>(std::floor(moment));
  const auto shifted = static_cast<std::time_t>(seconds + offset.value_or(0));
  tzset();  // the user may have moved to another zone
  offset ? gmtime_r(&shifted, &fields) : localtime_r(&seconds, &fields);
  char iso[sizeof "2026-05-03T14:30:00"];
  return {iso, std::strftime(iso, sizeof iso, "%Y-%m-%dT%H:%M:%S", &fields)};
}

std::string offsetSuffix(NSInteger offset) {
  if (offset == 0) return "Z";
  const long minutes = std::labs(static_cast<long>(offset) / 60);
  char suffix[sizeof "+00:00"];
  std::snprintf(suffix, sizeof suffix, "%c%02ld:%02ld", offset < 0 ? '-' : '+', minutes / 60 % 24,
                minutes % 60);
  return suffix;
}

// The system's moment, in the form that suits what stands in the text: it gives days without a time
// as their noon.
std::string dateValue(NSDate* date, NSTimeZone* zone, NSString* matched) {
  std::optional<NSInteger> offset;
  if (zone != nil) offset = [zone secondsFromGMTForDate:date];
  const std::string iso = isoTime(date.timeIntervalSince1970, offset);
  constexpr std::size_t day = 10, minute = 16;
  const std::optional<std::string> own = ownValue(matched, DetectionKind::date);
  // A time that only the system knows to read is a time all the same.
  const bool whole_day = iso.ends_with("T12:00:00") && (!own || own->size() == day);
  if (whole_day) return iso.substr(0, day);
  const std::string value = iso.ends_with(":00") ? iso.substr(0, minute) : iso;
  return offset ? value + offsetSuffix(*offset) : value;
}

// None for results that carry nothing to act on.
std::optional<Detection> detectionOf(NSTextCheckingResult* result, NSString* text) {
  Detection detection;
  NSString* matched = [text substringWithRange:result.range];
  if (result.resultType == NSTextCheckingTypeLink && result.URL != nil) {
    detection.kind = DetectionKind::link;
    detection.value = utf8(result.URL.absoluteString);
  } else if (result.resultType == NSTextCheckingTypePhoneNumber && result.phoneNumber != nil) {
    detection.kind = DetectionKind::phone;
    detection.value = numberValue(result.phoneNumber);
  } else if (result.resultType == NSTextCheckingTypeAddress) {
    detection.kind = DetectionKind::address;
    detection.value = onOneLine(matched);
  } else if (result.resultType == NSTextCheckingTypeDate && result.date != nil) {
    detection.kind = DetectionKind::date;
    detection.value = dateValue(result.date, result.timeZone, matched);
  } else {
    return std::nullopt;
  }
  return detection;
}

std::vector<Detection> search(std::string_view text, unsigned kinds, std::size_t limit) {
  std::vector<Detection> found;
  @autoreleasepool {
    NSDataDetector* detector = detectorFor(kinds);
    if (detector == nil || text.empty()) return found;
    NSString* string = nsString(text);
    Utf16Offsets offsets(text);
    // The block runs before this returns, and writes to the variables themselves.
    auto* const into = &found;
    auto* const at = &offsets;
    [detector
        enumerateMatchesInString:string
                         options:0
                           range:NSMakeRange(0, string.length)
                      usingBlock:^(NSTextCheckingResult* result, NSMatchingFlags, BOOL* stop) {
                        if (result == nil) return;
                        std::optional<Detection> detection = detectionOf(result, string);
                        if (!detection) return;
                        const std::size_t start = at->bytesAt(result.range.location);
                        const std::size_t end = at->bytesAt(NSMaxRange(result.range));
                        if (!into->empty() && start < into->back().range.end()) return;
                        detection->range = {start, end - start};
                        into->push_back(std::move(*detection));
                        if (into->size() >= limit) *stop = YES;
                      }];
  }
  return found;
}

}  // namespace

std::vector<Detection> detect(std::string_view text, unsigned kinds, const DetectionContext&) {
  return search(text, kinds, text.size() + 1);
}

std::optional<Detection> firstDetection(std::string_view text, unsigned kinds,
                                        const DetectionContext&) {
  std::vector<Detection> found = search(text, kinds, 1);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

}  // namespace marbelot
