#import <Foundation/Foundation.h>

#include <array>
#include <bitset>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace marbelot::text {
namespace {

constexpr std::size_t planeSize = 0x10000;
constexpr std::size_t planeCount = 17;

struct Plane {
  std::bitset<planeSize> words;
  std::bitset<planeSize> extenders;
  std::bitset<planeSize> digits;
};

// The plane as a string, in which scalar i stands at i * unitsPerScalar. Surrogates are no scalars.
NSString* scalarsOfPlane(std::size_t plane) {
  std::vector<unichar> units;
  for (std::size_t i = 0; i < planeSize; ++i) {
    if (plane == 0) {
      units.push_back(static_cast<unichar>(i >= 0xD800 && i <= 0xDFFF ? 0xFFFD : i));
    } else {
      const std::size_t offset = (plane - 1) * planeSize + i;
      units.push_back(static_cast<unichar>(0xD800 + (offset >> 10)));
      units.push_back(static_cast<unichar>(0xDC00 + (offset & 0x3FF)));
    }
  }
  return [NSString stringWithCharacters:units.data() length:units.size()];
}

void mark(std::bitset<planeSize>& set, NSString* scalars, NSString* pattern) {
  NSRegularExpression* expression = [NSRegularExpression regularExpressionWithPattern:pattern
                                                                              options:0
                                                                                error:nil];
  const std::size_t unitsPerScalar = scalars.length / planeSize;
  for (NSTextCheckingResult* run in [expression matchesInString:scalars
                                                        options:0
                                                          range:NSMakeRange(0, scalars.length)]) {
    for (NSUInteger at = run.range.location; at < NSMaxRange(run.range); at += unitsPerScalar) {
      set.set(at / unitsPerScalar);
    }
  }
}

// Foundation knows these properties only within its regular expressions, too slow to ask for each
// scalar. One question answers for a plane, in a few milliseconds when it is first needed.
const Plane& planeOf(char32_t c) {
  static std::array<std::once_flag, planeCount> made;
  static std::array<std::unique_ptr<Plane>, planeCount> planes;
  const std::size_t index = c / planeSize;
  std::call_once(made[index], [index] {
    auto plane = std::make_unique<Plane>();
    @autoreleasepool {
      NSString* scalars = scalarsOfPlane(index);
      mark(plane->words, scalars, @"[\\p{Alphabetic}\\p{M}\\p{Nd}\\p{Pc}]+");
      mark(plane->extenders, scalars, @"[\\p{Grapheme_Extend}\\p{Cf}]+");
      mark(plane->digits, scalars, @"\\p{Nd}+");
    }
    planes[index] = std::move(plane);
  });
  return *planes[index];
}

}  // namespace

bool isDecimalDigit(char32_t c) {
  if (c < 0x80) return c >= '0' && c <= '9';
  return planeOf(c).digits[c % planeSize];
}

bool isWordCharacter(char32_t c) {
  constexpr char32_t nonJoiner = 0x200C, joiner = 0x200D;
  return c == nonJoiner || c == joiner || planeOf(c).words[c % planeSize];
}

WordRole wordRole(char32_t c) {
  const Plane& plane = planeOf(c);
  if (plane.extenders[c % planeSize]) return WordRole::extender;
  return plane.words[c % planeSize] ? WordRole::word : WordRole::separator;
}

}  // namespace marbelot::text
