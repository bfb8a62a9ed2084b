// Data detection: links, phone numbers, postal addresses and dates in running text. Stateless and
// safe to call from any thread; linear in the length of the text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace marbelot {

enum class DetectionKind : unsigned { link = 1, phone = 2, address = 4, date = 8 };

constexpr unsigned operator|(DetectionKind a, DetectionKind b) {
  return static_cast<unsigned>(a) | static_cast<unsigned>(b);
}

struct Detection {
  DetectionKind kind = DetectionKind::link;
  Range range;        // bytes
  std::string value;  // the URL, the number in E.164, the address on one line, the date in ISO 8601
};

struct DetectionContext {
  double now = 0;      // seconds since 1970, what "tomorrow" is reckoned from; 0: the wall clock
  std::string region;  // ISO 3166 code that national phone numbers are read in; empty: the user's
};

// All detections of the wanted kinds (a union of DetectionKind), in text order, not overlapping.
std::vector<Detection> detect(std::string_view text, unsigned kinds,
                              const DetectionContext& context = {});

// The first of them only; stops looking as soon as it is known.
std::optional<Detection> firstDetection(std::string_view text, unsigned kinds,
                                        const DetectionContext& context = {});

}  // namespace marbelot
