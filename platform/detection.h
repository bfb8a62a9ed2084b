// Data detection: links, phone numbers, postal addresses and dates in running text. Stateless and
// safe to call from any thread; linear in the length of the text. Bytes that are not valid UTF-8
// are never part of a detection. Where a text is full of things that only look like phone numbers,
// later ones may go unseen rather than hold up the caller.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace marbelot {

enum class DetectionKind : unsigned { link = 1, phone = 2, address = 4, date = 8 };

// Every kind, by the name that the command line shows.
inline constexpr std::pair<DetectionKind, std::string_view> detectionKinds[] = {
    {DetectionKind::link, "link"},
    {DetectionKind::phone, "phone"},
    {DetectionKind::address, "address"},
    {DetectionKind::date, "date"},
};

constexpr unsigned operator|(DetectionKind a, DetectionKind b) {
  return static_cast<unsigned>(a) | static_cast<unsigned>(b);
}

struct Detection {
  DetectionKind kind = DetectionKind::link;
  Range range;  // bytes
  // The URL ("http://" and "mailto:" added where the text leaves them out), the number in E.164,
  // the address on one line, the date in ISO 8601: "2026-05-03", with a time "2026-05-03T14:30"
  // (local), with its offset when the text gives one; of a range of dates or times the start. A
  // part of the day stands for its middle: 9 in the morning, 15, 20, and 22 at night.
  std::string value;
};

struct DetectionContext {
  double now = 0;  // seconds since 1970, what "tomorrow" is reckoned from; 0: the wall clock
  // ISO 3166 code, in which national phone numbers and dates like 3/5/2026 are read; empty: the
  // user's.
  std::string region = {};
  // ISO 639 code, whose months and weekdays are known beside the English, German and French ones;
  // empty: the user's.
  std::string language = {};
};

// All detections of the wanted kinds (a union of DetectionKind), in text order, not overlapping: a
// link keeps what is inside it, then an address; of the rest the earlier, then the longer stays.
std::vector<Detection> detect(std::string_view text, unsigned kinds,
                              const DetectionContext& context = {});

// The first of them only; stops looking as soon as it is known.
std::optional<Detection> firstDetection(std::string_view text, unsigned kinds,
                                        const DetectionContext& context = {});

}  // namespace marbelot
