// GNUstep has no data detector. This one finds what the program's own detectors find, and tells of
// it as the system's does: a number as it stands in the text, a day without a time as its noon.
#import <Foundation/Foundation.h>

#include <cstdio>
#include <ctime>

#include "detection/detection.h"
#include "platform/locale.h"
#include "platform/macos/conversions.h"

@interface GapResult : NSTextCheckingResult
@property NSTextCheckingType resultType;
@property NSRange range;
@property(copy) NSURL* URL;
@property(copy) NSString* phoneNumber;
@property(copy) NSDate* date;
@property(strong) NSTimeZone* timeZone;
@end

@implementation GapResult
@synthesize resultType, range, URL, phoneNumber, date, timeZone;
@end

namespace {

using marbelot::Detection;
using marbelot::DetectionKind;

NSTextCheckingType typeOf(DetectionKind kind) {
  return kind == DetectionKind::link      ? NSTextCheckingTypeLink
         : kind == DetectionKind::phone   ? NSTextCheckingTypePhoneNumber
         : kind == DetectionKind::address ? NSTextCheckingTypeAddress
                                          : NSTextCheckingTypeDate;
}

void setDate(GapResult* result, const std::string& value) {
  std::tm fields{};
  fields.tm_hour = 12;
  fields.tm_isdst = -1;
  const char* rest = strptime(value.c_str(), "%Y-%m-%d", &fields);
  if (*rest == 'T') rest = strptime(rest, "T%H:%M", &fields);
  if (*rest == ':') rest = strptime(rest, ":%S", &fields);
  char sign = 0;
  int hours = 0, minutes = 0;
  if (*rest == '\0') {
    result.date = [NSDate dateWithTimeIntervalSince1970:static_cast<double>(std::mktime(&fields))];
    return;
  }
  if (std::sscanf(rest, "%c%d:%d", &sign, &hours, &minutes) < 1) return;
  const int offset = (sign == '-' ? -60 : 60) * (60 * hours + minutes);
  result.date =
      [NSDate dateWithTimeIntervalSince1970:static_cast<double>(timegm(&fields) - offset)];
  result.timeZone = [NSTimeZone timeZoneForSecondsFromGMT:offset];
}

// The system's own takes a "%" that begins no escape for itself.
NSURL* urlFrom(const std::string& value) {
  NSString* const text = marbelot::nsString(value);
  if (NSURL* const url = [NSURL URLWithString:text]) return url;
  NSRegularExpression* const stray =
      [NSRegularExpression regularExpressionWithPattern:@"%(?![0-9A-Fa-f]{2})" options:0 error:nil];
  return [NSURL URLWithString:[stray stringByReplacingMatchesInString:text
                                                              options:0
                                                                range:NSMakeRange(0, text.length)
                                                         withTemplate:@"%25"]];
}

}  // namespace

@implementation NSDataDetector {
  NSTextCheckingTypes _types;
}

+ (NSDataDetector*)dataDetectorWithTypes:(NSTextCheckingTypes)types error:(NSError**)error {
  NSDataDetector* const made = [[NSDataDetector alloc] initWithPattern:@"." options:0 error:error];
  made->_types = types;
  return made;
}

- (void)enumerateMatchesInString:(NSString*)string
                         options:(NSMatchingOptions)options
                           range:(NSRange)range
                      usingBlock:(GSRegexBlock)block {
  unsigned kinds = 0;
  for (const auto& [kind, name] : marbelot::detectionKinds)
    if ((_types & typeOf(kind)) != 0) kinds |= static_cast<unsigned>(kind);
  const std::string text = marbelot::utf8([string substringWithRange:range]);
  std::size_t byte = 0;
  NSUInteger unit = range.location;
  const auto unitsTo = [&](std::size_t end) {
    unit += marbelot::nsString(std::string_view(text).substr(byte, end - byte)).length;
    byte = end;
    return unit;
  };
  BOOL stop = NO;
  for (const Detection& found : marbelot::detection::detectAll(
           text, kinds,
           {marbelot::text::now(), marbelot::locale::region(), marbelot::locale::language()})) {
    GapResult* const result = [[GapResult alloc] init];
    result.resultType = typeOf(found.kind);
    const NSUInteger start = unitsTo(found.range.start);
    result.range = NSMakeRange(start, unitsTo(found.range.end()) - start);
    if (found.kind == DetectionKind::link) result.URL = urlFrom(found.value);
    if (found.kind == DetectionKind::phone)
      result.phoneNumber = [string substringWithRange:result.range];
    if (found.kind == DetectionKind::date) setDate(result, found.value);
    block(result, 0, &stop);
    if (stop) return;
  }
}
@end
