// What a test hears of the clipboard.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/desktop_pasteboard.h"
#include "tests/platform/test_queue.h"

namespace marbelot {

inline std::string longText(std::size_t bytes) {
  std::string text;
  for (std::size_t line = 0; text.size() < bytes; ++line) text += std::to_string(line) + '\n';
  text.resize(bytes);
  return text;
}

struct HeardClipboard {
  // The changes since the last call, once there are `count` of them.
  std::vector<PasteboardChange> news(std::size_t count,
                                     std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    std::vector<PasteboardChange> all;
    queue.pumpUntil(
        [&] {
          for (auto& change : board->changesSince(seen)) {
            EXPECT_GT(change.count, seen);
            seen = change.count;
            all.push_back(std::move(change));
          }
          return all.size() >= count;
        },
        limit);
    EXPECT_EQ(all.size(), count);
    all.resize(count);
    return all;
  }
  std::string newText(std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto text = news(1, limit)[0].contents.text;
    return text ? *text : "(none)";
  }

  TestQueue queue;
  std::optional<DesktopPasteboard> board;
  std::int64_t seen = 0;  // the last change that was told
};

}  // namespace marbelot
