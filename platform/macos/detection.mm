// Data detection by NSDataDetector. It reckons dates from the wall clock and numbers from the
// user's region; both are the system's and cannot be set.
#include "platform/detection.h"

#import <Foundation/Foundation.h>

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

// Digits with a leading plus; letters that stand for digits are left to the dialler.
std::string dialled(NSString* number) {
  std::string digits;
  for (const char c : utf8(number))
    if ((c >= '0' && c <= '9') || (c == '+' && digits.empty())) digits += c;
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

std::string isoDate(NSDate* date, NSTimeZone* zone) {
  NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
  formatter.locale = [NSLocale localeWithLocaleIdentifier:@"en_US_POSIX"];
  formatter.timeZone = zone != nil ? zone : NSTimeZone.localTimeZone;
  formatter.dateFormat = @"yyyy-MM-dd'T'HH:mm:ss";
  return utf8([formatter stringFromDate:date]);
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
    detection.value = dialled(result.phoneNumber);
  } else if (result.resultType == NSTextCheckingTypeAddress) {
    detection.kind = DetectionKind::address;
    detection.value = onOneLine(matched);
  } else if (result.resultType == NSTextCheckingTypeDate && result.date != nil) {
    detection.kind = DetectionKind::date;
    detection.value = isoDate(result.date, result.timeZone);
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
