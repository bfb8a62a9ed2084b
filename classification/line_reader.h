// The lines of a text, one after another.
#pragma once

#include <algorithm>
#include <optional>
#include <string_view>

namespace marbelot {

// Lines end at LF, CR LF or CR. Linear however the three are mixed.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : text_(text) {}

  std::optional<std::string_view> next() {
    if (at_ >= text_.size()) return std::nullopt;
    if (!foundLineFeed_ || lineFeed_ < at_) {
      lineFeed_ = std::min(text_.find('\n', at_), text_.size());
      foundLineFeed_ = true;
    }
    const std::string_view upToLineFeed = text_.substr(at_, lineFeed_ - at_);
    const std::size_t carriageReturn = upToLineFeed.find('\r');
    if (carriageReturn == upToLineFeed.npos) {
      at_ = lineFeed_ + 1;
      return upToLineFeed;
    }
    at_ += carriageReturn + 1;
    if (at_ == lineFeed_) ++at_;
    return upToLineFeed.substr(0, carriageReturn);
  }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t lineFeed_ = 0;
  bool foundLineFeed_ = false;
};

}  // namespace marbelot
