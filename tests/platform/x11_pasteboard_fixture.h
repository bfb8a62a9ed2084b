// A clipboard on an X server of its own.
#pragma once

#include <QBuffer>
#include <QImage>

#include "platform/linux/x11_clipboard.h"
#include "tests/platform/heard_clipboard.h"
#include "tests/platform/x11_test_clients.h"

namespace marbelot {

inline const TestOwner::Manners slowAtFirst{{}, {}, 1 << 16, SIZE_MAX, true};

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

class X11PasteboardTest : public testing::Test, protected HeardClipboard {
 protected:
  void SetUp() override {
    ASSERT_FALSE(server.display().empty()) << "Xvfb is needed for these tests";
    board.emplace(queue, connectX11Clipboard(server.display()));
    // Its thread is up when it serves what we write.
    takeClipboard();
    board->changesSince(0);
  }

  const std::string& display() const { return server.display(); }
  // Whether a paste gives this, at the latest a moment after the write.
  bool pastes(const std::string& type, const std::string& expected) const {
    for (int attempt = 0; attempt < 1000;
         ++attempt, std::this_thread::sleep_for(std::chrono::milliseconds(5)))
      if (paste(display(), type) == expected) return true;
    return false;
  }
  // Whatever other programs did before is history afterwards.
  void takeClipboard() {
    EXPECT_TRUE(board->write(share("ours")));
    EXPECT_TRUE(pastes("UTF8_STRING", "ours"));
    seen = board->changeCount();
  }

  PrivateServer server;
};

}  // namespace marbelot
