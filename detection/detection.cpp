#include "detection/detection.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "detection/finder.h"

namespace marbelot::detection {
namespace {

// One kind's walk, with its next detection taken out.
struct Lane {
  int rank;
  std::unique_ptr<Finder> finder;
  std::optional<Detection> head;
  std::size_t searched = 0;

  void look(std::size_t limit) {
    if (head || searched >= limit) return;
    head = finder->next(limit);
    if (!head) searched = limit;
  }
};

// Merges the kinds into one sequence without overlaps: of the same rank the earlier, then the
// longer stays. The lanes are walked side by side, so that the first detection costs no look at the
// far end of the text.
class Merger {
 public:
  Merger(std::string_view text, unsigned kinds, const DetectionContext& context)
      : size_(text.size()) {
    for (const auto& [kind, rank, make] : finders) {
      if (kinds & static_cast<unsigned>(kind))
        lanes_.push_back({rank, make(text, context), std::nullopt});
    }
  }

  std::optional<Detection> next() {
    while (true) {
      for (Lane& lane : lanes_) lane.look(horizon_);
      Lane* first = earliest();
      if (first == nullptr) {
        if (horizon_ >= size_) return std::nullopt;
        horizon_ += step;
        continue;
      }
      const Range range = first->head->range;
      if (range.end() > horizon_) {
        horizon_ = range.end();
        continue;
      }
      const bool beaten = std::any_of(lanes_.begin(), lanes_.end(), [&](const Lane& lane) {
        return lane.rank < first->rank && lane.head && lane.head->range.start < range.end();
      });
      std::optional<Detection> found = std::exchange(first->head, std::nullopt);
      if (beaten || range.start < taken_) continue;
      taken_ = range.end();
      return found;
    }
  }

 private:
  static constexpr std::size_t step = 64 * 1024;

  Lane* earliest() {
    Lane* first = nullptr;
    for (Lane& lane : lanes_) {
      if (!lane.head) continue;
      if (first == nullptr || lane.head->range.start < first->head->range.start ||
          (lane.head->range.start == first->head->range.start &&
           lane.head->range.length > first->head->range.length)) {
        first = &lane;
      }
    }
    return first;
  }

  std::size_t size_;
  std::size_t horizon_ = step;
  std::size_t taken_ = 0;
  std::vector<Lane> lanes_;
};

}  // namespace

std::vector<Detection> detectAll(std::string_view text, unsigned kinds,
                                 const DetectionContext& context) {
  std::vector<Detection> all;
  Merger merger(text, kinds, context);
  while (auto found = merger.next()) all.push_back(std::move(*found));
  return all;
}

std::optional<Detection> detectFirst(std::string_view text, unsigned kinds,
                                     const DetectionContext& context) {
  return Merger(text, kinds, context).next();
}

}  // namespace marbelot::detection
