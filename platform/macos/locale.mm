// The user's language, region and collation, by Foundation.
#include "platform/locale.h"

#import <Foundation/Foundation.h>

#include "platform/macos/conversions.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// The code that the user's settings give for `key`, or `fallback`.
std::string localeCode(NSString* key, const std::string& fallback) {
  @autoreleasepool {
    NSString* code = [NSLocale.currentLocale objectForKey:key];
    return code.length > 0 ? utf8(code) : fallback;
  }
}

}  // namespace

std::weak_ordering text::localizedCompare(std::string_view a, std::string_view b) {
  @autoreleasepool {
    const auto order = static_cast<int>([nsString(a) localizedCaseInsensitiveCompare:nsString(b)]);
    return order <=> 0;
  }
}

const std::string& locale::region() {
  static const std::string found = localeCode(NSLocaleCountryCode, "US");
  return found;
}

const std::string& locale::language() {
  static const std::string found = localeCode(NSLocaleLanguageCode, "en");
  return found;
}

}  // namespace marbelot
