// What the kinds of detection have in common: each is a finder that walks over the text once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/detection.h"

namespace marbelot::detection {

class Finder {
 public:
  virtual ~Finder() = default;

  // The next detection in text order; none overlaps another of the same finder. Nothing when none
  // starts before `limit`; asked again with a larger limit, the walk goes on where it stopped.
  virtual std::optional<Detection> next(std::size_t limit) = 0;
};

// The text must outlive the finder.
using MakeFinder = std::unique_ptr<Finder>(std::string_view text, const DetectionContext& context);
MakeFinder makeLinkFinder, makeAddressFinder, makePhoneFinder, makeDateFinder;

// What finds each kind. Of two overlapping detections the one of the lower rank stays: a link keeps
// all that is in it, an address its house numbers and postcodes.
struct KindOfFinder {
  DetectionKind kind;
  int rank;
  MakeFinder* make;
};
inline constexpr KindOfFinder finders[] = {
    {DetectionKind::link, 0, makeLinkFinder},
    {DetectionKind::address, 1, makeAddressFinder},
    {DetectionKind::phone, 2, makePhoneFinder},
    {DetectionKind::date, 2, makeDateFinder},
};

// A finder looks at triggers, the bytes without which there is nothing of its kind. No detection
// starts further than this many bytes before its first trigger.
constexpr std::size_t reach = 512;

// A finder whose kind can be told from single trigger bytes.
class TriggerFinder : public Finder {
 public:
  explicit TriggerFinder(std::string_view text) : text_(text) {}

  std::optional<Detection> next(std::size_t limit) final {
    const std::size_t end =
        limit < text_.size() ? std::min(text_.size(), limit + reach) : text_.size();
    while (at_ < end && (at_ = nextTrigger(at_, end)) < end) {
      const std::size_t trigger = at_++;
      if (auto found = examine(trigger)) {
        floor_ = at_ = found->range.end();
        return found;
      }
    }
    return std::nullopt;
  }

 protected:
  // The first trigger in [from, end), or `end`.
  virtual std::size_t nextTrigger(std::size_t from, std::size_t end) const = 0;
  // The detection that the trigger belongs to; starts at floor() or later and includes the trigger.
  virtual std::optional<Detection> examine(std::size_t trigger) = 0;

  std::string_view text() const { return text_; }
  // The end of the last detection: nothing before it may be used again.
  std::size_t floor() const { return floor_; }
  // Goes on with the walk at `at`, for an examination that has seen all before it.
  void skipTo(std::size_t at) {
    if (at > at_) at_ = at;
  }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t floor_ = 0;
};

}  // namespace marbelot::detection
