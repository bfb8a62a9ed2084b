// What is Wayland's own of the clipboard: pipes, and the process that keeps what is left behind.
#include "platform/linux/wayland_clipboard.h"
#include "platform/linux/x11_clipboard.h"
#include "tests/platform/pasteboard_fixture.h"
#include "tests/platform/wayland_test_clients.h"
#include "tests/platform/x11_test_clients.h"

namespace marbelot {
namespace {

class WaylandSide : public ClipboardSide {
 public:
  explicit WaylandSide(const std::string& desktop) : desktop_(desktop), compositor_(desktop) {}
  const std::string& display() const override { return compositor_.display(); }
  std::unique_ptr<ClipboardConnection> connect() const override {
    return connectWaylandClipboard(display(), nullptr);
  }
  std::unique_ptr<TestOwner> copy(TestOwner::Data data, TestOwner::Manners manners) override {
    return std::make_unique<WaylandOwner>(display(), std::move(data), std::move(manners));
  }
  std::optional<std::string> paste(const std::string& type) const override {
    return pasteFromWayland(display(), type);
  }
  bool signal(int number) override {
    if (desktop_ == "present") return false;
    compositor_.signal(number);
    return true;
  }

 private:
  const std::string desktop_;
  PrivateCompositor compositor_;
};

}  // namespace

std::unique_ptr<ClipboardSide> makeWaylandSide(const std::string& desktop) {
  return std::make_unique<WaylandSide>(desktop);
}

std::vector<std::string> clipboardSides() {
  std::vector<std::string> names = {"X11"};
  for (const std::string& desktop : waylandDesktops()) names.push_back("Wayland" + desktop);
  return names;
}

namespace {

struct WaylandPasteboardTest : PasteboardTest {};

std::vector<std::string> waylandSides() {
  std::vector<std::string> names = clipboardSides();
  names.erase(names.begin());
  return names;
}

INSTANTIATE_TEST_SUITE_P(On, WaylandPasteboardTest, testing::ValuesIn(waylandSides()),
                         [](const auto& test) { return test.param; });

TEST_P(WaylandPasteboardTest, AProgramThatIsStuckInTheMiddleOfAPasteHoldsUpNobody) {
  const auto text = longText(50 << 20);
  EXPECT_TRUE(board->write(share(text)));
  EXPECT_TRUE(pastes("text/plain;charset=utf-8", text));
  // One that is stuck in the middle of a paste holds up nobody.
  const Descriptor stuck = askWayland(side->display(), "text/plain");
  EXPECT_TRUE(paste("UTF8_STRING") == text);
}

TEST_P(WaylandPasteboardTest, GoesOnWithTheNextSeat) {
  if (!side->signal(0)) GTEST_SKIP() << "others are still to be tested on it";
  const auto last = copy({{"test/new-seat", ""}});
  EXPECT_TRUE(last->awaitSuccessor());
  takeClipboard();
  const auto next = copy({{"UTF8_STRING", "next"}});
  EXPECT_EQ(newText(), "next");
}

TEST_P(WaylandPasteboardTest, WhatItLeavesStaysUntilItIsReplaced) {
  EXPECT_TRUE(board->write(share("hunter2"), true));
  board.reset();
  EXPECT_EQ(paste("UTF8_STRING"), "hunter2");
  EXPECT_EQ(paste("x-kde-passwordManagerHint"), "secret");
  start();
  EXPECT_TRUE(becomes("hunter2"));
  EXPECT_TRUE(board->contents().concealed);

  Bitmap bitmap = *Bitmap::makeClear(1000, 800);
  EXPECT_TRUE(
      board->write(Image::fromPixels(std::make_shared<const Bitmap>(std::move(bitmap))), true));
  // A paste that was asked for just before the end.
  const Descriptor from = askWayland(side->display(), "image/bmp");
  auto end = std::async(std::launch::async, [this] { board.reset(); });
  const auto bmp = takePaste(from);
  end.wait();
  EXPECT_TRUE(bmp == paste("image/bmp"));
  EXPECT_EQ(paste("x-kde-passwordManagerHint"), "secret");
  EXPECT_EQ(paste("image/png")->substr(0, 4), "\x89PNG");
  EXPECT_EQ(paste("image/bmp")->substr(0, 2), "BM") << "the keeper converts, too";

  start();
  if (endsDuringAWrite("last")) {
    EXPECT_EQ(paste("UTF8_STRING"), "last");
    // Who starts while it is busy waits for it, and nobody for that.
    side->signal(SIGSTOP);
    start();
    EXPECT_TRUE(board->write(share("early")));
    side->signal(SIGCONT);
    EXPECT_TRUE(pastes("UTF8_STRING", "early"));
  }

  // What is not ours is not ours to leave.
  start();
  takeClipboard();
  {
    const auto owner = copy({{"text/plain", "theirs"}});
    EXPECT_EQ(newText(), "theirs");
    board.reset();
    EXPECT_EQ(paste("text/plain"), "theirs");
  }
  EXPECT_EQ(paste("text/plain"), std::nullopt);
  start();
}

TEST(WaylandWithoutAClipboard, LeavesItToTheXServer) {
  const PrivateCompositor desktop("none");
  const PrivateServer server;
  TestQueue queue;
  DesktopPasteboard board(
      queue, connectWaylandClipboard(desktop.display(), connectX11Clipboard(server.display())));
  EXPECT_TRUE(board.write(share("ours")));
  EXPECT_TRUE(queue.pumpUntil([&] { return paste(server.display(), "UTF8_STRING") == "ours"; }));
}

}  // namespace
}  // namespace marbelot
