// A clipboard on a server of its own, among other programs.
#pragma once

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/desktop_pasteboard.h"
#include "tests/platform/other_programs.h"
#include "tests/platform/test_queue.h"

namespace marbelot {

inline std::string longText(std::size_t bytes) {
  std::string text;
  for (std::size_t line = 0; text.size() < bytes; ++line) text += std::to_string(line) + '\n';
  text.resize(bytes);
  return text;
}

// Noise, so that the encoded image has a realistic size.
inline QImage noise(int width, int height) {
  QImage image(width, height, QImage::Format_RGB32);
  std::uint32_t state = 1;
  for (int y = 0; y < height; ++y) {
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < width; ++x) {
      state = state * 1664525 + 1013904223;
      line[x] = qRgb(x & 255, y & 255, static_cast<int>(state >> 29));
    }
  }
  return image;
}

inline std::string encoded(const QImage& image, const char* format) {
  QByteArray bytes;
  QBuffer device(&bytes);
  device.open(QIODevice::WriteOnly);
  image.save(&device, format);
  return bytes.toStdString();
}

// A server, and what other programs do on it.
struct ClipboardSide {
  virtual ~ClipboardSide() = default;
  virtual const std::string& display() const = 0;
  virtual std::unique_ptr<ClipboardConnection> connect() const = 0;
  virtual std::unique_ptr<TestOwner> copy(TestOwner::Data data, TestOwner::Manners manners) = 0;
  virtual std::optional<std::string> paste(const std::string& type) const = 0;
  virtual bool signal(int number) = 0;  // to the server; false where it is not the test's own
};

// "X11", and each Wayland desktop that there is to test on.
std::vector<std::string> clipboardSides();
std::unique_ptr<ClipboardSide> makeX11Side();
std::unique_ptr<ClipboardSide> makeWaylandSide(const std::string& desktop);

class PasteboardTest : public testing::TestWithParam<std::string> {
 protected:
  PasteboardTest() : PasteboardTest(makeSide()) {}
  explicit PasteboardTest(std::unique_ptr<ClipboardSide> on) : side(std::move(on)) {}

  void SetUp() override {
    start();
    // Its thread is up when it serves what we write.
    takeClipboard();
    board->changesSince(0);
  }
  void start() { board.emplace(queue, side->connect()); }
  std::unique_ptr<TestOwner> copy(TestOwner::Data data, TestOwner::Manners manners = {}) {
    return side->copy(std::move(data), std::move(manners));
  }
  std::optional<std::string> paste(const std::string& type) const { return side->paste(type); }
  // Whether a paste gives this, at the latest a moment after the write.
  bool pastes(const std::string& type, const std::string& expected) const {
    for (int attempt = 0; attempt < 1000;
         ++attempt, std::this_thread::sleep_for(std::chrono::milliseconds(5)))
      if (paste(type) == expected) return true;
    return false;
  }
  // Whatever other programs did before is history afterwards.
  void takeClipboard() {
    EXPECT_TRUE(board->write(share("ours")));
    EXPECT_TRUE(pastes("UTF8_STRING", "ours"));
    queue.pumpFor(std::chrono::milliseconds(0));
    board->changesSince(0);
    seen = board->changeCount();
  }
  // The changes since the last call, once there are `count` of them.
  std::vector<PasteboardChange> news(std::size_t count) {
    std::vector<PasteboardChange> all;
    queue.pumpUntil([&] {
      for (auto& change : board->changesSince(seen)) {
        EXPECT_GT(change.count, seen);
        seen = change.count;
        all.push_back(std::move(change));
      }
      return all.size() >= count;
    });
    EXPECT_EQ(all.size(), count);
    all.resize(count);
    return all;
  }
  std::string newText() {
    const auto text = news(1)[0].contents.text;
    return text ? *text : "(none)";
  }
  // Ends while the server is too busy for the last write. False where that cannot be tested.
  bool endsDuringAWrite(const std::string& text) {
    if (!side->signal(SIGSTOP)) return false;
    EXPECT_TRUE(board->write(share(text)));
    const auto end = std::async(std::launch::async, [this] { board.reset(); });
    // Until it is at it; were it not yet, less would be asked of it.
    end.wait_for(std::chrono::milliseconds(100));
    side->signal(SIGCONT);
    return true;
  }
  bool becomes(const std::string& text) {
    return queue.pumpUntil(
        [&] { return board->contents().text && *board->contents().text == text; });
  }

  std::unique_ptr<ClipboardSide> side;
  TestQueue queue;
  std::optional<DesktopPasteboard> board;
  std::int64_t seen = 0;  // the last change that was told

 private:
  static std::unique_ptr<ClipboardSide> makeSide() {
    constexpr std::string_view wayland = "Wayland";
    const std::string name = GetParam();
    return name.starts_with(wayland) ? makeWaylandSide(name.substr(wayland.size())) : makeX11Side();
  }
};

}  // namespace marbelot
