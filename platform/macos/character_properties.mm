// Foundation's character sets are by general category and too coarse, but its regular expressions
// know every property. One search over 256 scalars fills a page; pages are made when first asked
// for and never freed.
#include "platform/macos/character_properties.h"

#import <Foundation/Foundation.h>

#include <array>
#include <atomic>
#include <memory>
#include <string>

#include "platform/macos/utf16.h"

namespace marbelot {
namespace {

constexpr char32_t kPageSize = 256;
using Page = std::array<std::uint8_t, kPageSize>;

struct Pattern {
  CharacterProperty property;
  NSRegularExpression* expression;  // nil when this system does not know the property
};

const std::array<Pattern, 6>& patterns() {
  static const std::array<Pattern, 6> compiled = [] {
    const auto compile = [](CharacterProperty property, NSString* pattern) {
      return Pattern{property, [NSRegularExpression regularExpressionWithPattern:pattern
                                                                         options:0
                                                                           error:nil]};
    };
    return std::array<Pattern, 6>{compile(kAlphabetic, @"\\p{Alphabetic}+"),
                                  compile(kNumeric, @"[^\\p{nt=None}]+"),
                                  compile(kLowercase, @"\\p{Lowercase}+"),
                                  compile(kUppercase, @"\\p{Uppercase}+"),
                                  compile(kControl, @"[\\p{GCB=CN}\\p{GCB=CR}\\p{GCB=LF}]+"),
                                  compile(kBase, @"[\\p{GCB=XX}\\p{GCB=LV}\\p{GCB=LVT}]+")};
  }();
  return compiled;
}

std::unique_ptr<Page> makePage(char32_t first) {
  auto page = std::make_unique<Page>();
  page->fill(0);
  if (first >= 0xD800 && first < 0xE000) return page;
  @autoreleasepool {
    std::u16string units;
    for (char32_t c = first; c < first + kPageSize; ++c) appendUtf16(units, c);
    NSString* text =
        [[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(units.data())
                                      length:units.size()];
    const NSUInteger width = units.size() / kPageSize;
    Page* const filled = page.get();
    for (const Pattern& pattern : patterns()) {
      const CharacterProperty property = pattern.property;
      [pattern.expression
          enumerateMatchesInString:text
                           options:0
                             range:NSMakeRange(0, text.length)
                        usingBlock:^(NSTextCheckingResult* match, NSMatchingFlags, BOOL*) {
                          const NSUInteger end = NSMaxRange(match.range) / width;
                          for (NSUInteger i = match.range.location / width; i < end; ++i)
                            (*filled)[i] |= property;
                        }];
    }
  }
  return page;
}

const Page& pageOf(char32_t scalar) {
  static std::array<std::atomic<const Page*>, 0x110000 / kPageSize> pages{};
  std::atomic<const Page*>& slot = pages[scalar / kPageSize];
  if (const Page* page = slot.load(std::memory_order_acquire)) return *page;
  std::unique_ptr<Page> made = makePage(scalar - scalar % kPageSize);
  const Page* expected = nullptr;
  if (slot.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel))
    return *made.release();
  return *expected;
}

}  // namespace

bool hasProperty(char32_t scalar, CharacterProperty property) {
  if (scalar > 0x10FFFF) return false;
  return (pageOf(scalar)[scalar % kPageSize] & property) != 0;
}

}  // namespace marbelot
