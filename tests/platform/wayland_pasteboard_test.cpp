#include <gtest/gtest.h>
#include <poll.h>

#include <deque>
#include <future>
#include <optional>

#include "platform/linux/wayland_clipboard.h"
#include "platform/linux/wayland_data_control.h"
#include "tests/platform/heard_clipboard.h"
#include "tests/platform/wayland_test_clients.h"
#include "tests/support/png.h"

namespace marbelot {
namespace {

using namespace std::chrono_literals;

class WaylandPasteboardTest : public testing::TestWithParam<std::string>, protected HeardClipboard {
 protected:
  using Owner = WaylandTestOwner;

  void SetUp() override {
    start();
    takeClipboard();
  }

  void start() { board.emplace(queue, connectWaylandClipboard(display())); }
  const std::string& display() const { return compositor.display(); }
  std::optional<std::string> paste(const std::string& type) const {
    return pasteFromWayland(display(), type);
  }
  // Whether a paste gives this, at the latest a moment after the write.
  bool pastes(const std::string& type, const std::string& expected) const {
    for (int attempt = 0; attempt < 1000; ++attempt, std::this_thread::sleep_for(5ms))
      if (paste(type) == expected) return true;
    return false;
  }
  // Whatever other programs did before is history afterwards.
  void takeClipboard() {
    EXPECT_TRUE(board->write(share("ours")));
    EXPECT_TRUE(pastes("UTF8_STRING", "ours"));
    queue.pumpFor(0ms);
    board->changesSince(0);
    seen = board->changeCount();
  }
  bool becomes(const std::string& text) {
    return queue.pumpUntil(
        [&] { return board->contents().text && *board->contents().text == text; });
  }

  PrivateCompositor compositor{GetParam()};
};

TEST_P(WaylandPasteboardTest, ReadsWhatOthersCopy) {
  const TemporaryHome home;
  const std::string png = *marbelot::png(30), other = *marbelot::png(20);
  writeFile(home / "a picture.png", png);
  const struct {
    Owner::Data data;
    std::string text;
    int width;  // of the image; 0 for none
  } cases[] = {
      {{{"text/plain;charset=utf-8", "gr\xC3\xBC\xC3\x9F"}, {"text/plain", "?"}},
       "gr\xC3\xBC\xC3\x9F",
       0},
      {{{"text/plain", "caf\xE9"}}, "caf\xC3\xA9", 0},
      {{{"STRING", "caf\xC3\xA9"}}, "caf\xC3\xA9", 0},
      {{{"UTF8_STRING", "broken \xFF"}}, "broken \xEF\xBF\xBD", 0},
      {{{"text/plain", ""}}, "(none)", 0},  // as what is lost with its owner reads
      {{{"text/html", "<b>bold</b>"}}, "(none)", 0},
      {{{"text/plain", longText(20 << 20)}}, longText(20 << 20), 0},
      {{{"image/png", png}, {"image/jpeg", "?"}, {"text/plain", "u"}}, "u", 30},
      {{{"image/png", png.substr(0, 50)}, {"image/tiff", other}}, "(none)", 20},
      {{{"text/uri-list", "file://" + (home / "a%20picture.png") + "\r\n"}, {"text/plain", "a"}},
       "a",
       30},
  };
  for (const auto& [data, text, width] : cases) {
    {
      const Owner owner(display(), data);
      const auto contents = news(1)[0].contents;
      EXPECT_TRUE((contents.text ? *contents.text : "(none)") == text) << data.begin()->first;
      EXPECT_EQ(contents.image ? contents.image->width() : 0, width) << data.begin()->first;
      EXPECT_EQ(contents.types.size(), data.size());
    }
    EXPECT_TRUE(news(1)[0].contents.types.empty()) << "its owner has gone";
  }
}

TEST_P(WaylandPasteboardTest, SecretsAreMarkedBothWays) {
  const struct {
    const char* type;
    const char* value;
    bool concealed;
  } cases[] = {
      {"x-kde-passwordManagerHint", "secret", true},
      {"x-kde-passwordManagerHint", "public", false},
      {"x-kde-passwordManagerHint", "", true},
      {"org.nspasteboard.ConcealedType", "", true},
  };
  for (const auto& [type, value, concealed] : cases) {
    const Owner owner(display(), {{"text/plain", "hunter2"}, {type, value}});
    const auto contents = news(1)[0].contents;
    EXPECT_EQ(contents.concealed, concealed) << type << ' ' << value;
    EXPECT_EQ(*contents.text, "hunter2");
    takeClipboard();
  }
  EXPECT_TRUE(board->write(share("hunter2"), true));
  EXPECT_TRUE(pastes("x-kde-passwordManagerHint", "secret"));
}

TEST_P(WaylandPasteboardTest, LosesNoneOfManyQuickCopies) {
  constexpr int copies = 200;
  std::deque<Owner> owners;
  auto copying = std::async(std::launch::async, [&] {
    for (int i = 0; i < copies; ++i) {
      owners.emplace_back(display(), Owner::Data{{"text/plain", "copy " + std::to_string(i)}});
      if (!owners.back().awaitReader()) return;
      if (owners.size() > 8) owners.pop_front();
    }
  });
  const auto all = news(copies);
  for (int i = 0; i < copies; ++i) {
    const auto& text = all[static_cast<std::size_t>(i)].contents.text;
    ASSERT_TRUE(text && *text == "copy " + std::to_string(i)) << i;
  }
  copying.wait();
}

TEST_P(WaylandPasteboardTest, AHungOwnerHoldsUpNobodyAndIsToldWholeOnceItGoesOn) {
  const std::string text = longText(3 << 20), png = *marbelot::png(30);
  const struct {
    const char* what;
    Owner::Manners manners;
    bool text;  // read nevertheless
  } cases[] = {
      {"silent", {{"text/plain", "image/png"}}, false},
      {"half a text", {{}, 1000000}, false},
      {"no image", {{"image/png"}}, true},
  };
  const Owner::Data data{{"text/plain", text}, {"image/png", png}};
  for (const auto& [what, manners, told] : cases) {
    {
      Owner hung(display(), data, manners);
      const auto early = news(1)[0].contents;
      EXPECT_EQ(early.text != nullptr, told) << what;
      EXPECT_EQ(early.types.size(), 2u) << what;
      hung.resume();
      EXPECT_TRUE(becomes(text)) << what;
      EXPECT_TRUE(queue.pumpUntil([&] { return board->contents().image.has_value(); })) << what;
    }
    Owner again(display(), data, manners);
    EXPECT_TRUE(again.awaitReader());
    const Owner next(display(), {{"text/plain", "next"}});
    EXPECT_TRUE(becomes("next")) << what;
    // What nobody wants any more is taken all the same: the owner would die of a closed pipe.
    again.resume();
    for (int i = 0; i < 1000 && again.written() < text.size() + png.size(); ++i)
      std::this_thread::sleep_for(10ms);
    EXPECT_EQ(again.written(), text.size() + png.size()) << what;
    takeClipboard();
  }
}

TEST_P(WaylandPasteboardTest, OwnWritesKeepTheirPlaceAmongTheOthers) {
  int announced = 0;
  board->setChangeHandler([&] { ++announced; });
  EXPECT_EQ(board->write(share("one")), seen + 1);
  EXPECT_EQ(board->write(share("two")), seen + 2);
  EXPECT_TRUE(pastes("UTF8_STRING", "two"));
  queue.pumpFor(100ms);
  EXPECT_EQ(announced, 1) << "both together, and the compositor's word about them not again";
  news(2);
  // Still being read when we write: it is told, and what we wrote stays the present contents.
  Owner slow(display(), {{"text/plain", longText(1 << 20)}}, {{"text/plain"}});
  EXPECT_TRUE(slow.awaitReader());
  const auto own = board->write(share("own")).value();
  EXPECT_TRUE(slow.awaitSuccessor());
  slow.resume();
  queue.pumpUntil([&] { return board->changeCount() > own; });
  const auto told = board->changesSince(own);
  ASSERT_EQ(told.size(), 1u);
  EXPECT_TRUE(*told[0].contents.text == longText(1 << 20));
  EXPECT_EQ(*board->contents().text, "own");
}

TEST_P(WaylandPasteboardTest, ServesTextsAndImagesInEveryForm) {
  const auto text = longText(50 << 20);
  EXPECT_TRUE(board->write(share(text)));
  EXPECT_TRUE(pastes("text/plain;charset=utf-8", text));
  {
    // One that is stuck in the middle of a paste holds up nobody.
    const auto stuck = WaylandDataControl::connect(display());
    Descriptor from;
    stuck->watch({[&](const std::unique_ptr<WaylandOffer>& offer, bool) {
                    from = offer->receive("text/plain");
                    stuck->flush();
                  },
                  [](const std::string&, const Descriptor&) {}, [] {}});
    while (!stuck->presentIsKnown()) {
      stuck->prepare();
      ASSERT_TRUE(stuck->dispatch(POLLIN));
    }
    EXPECT_TRUE(paste("UTF8_STRING") == text);
  }
  EXPECT_TRUE(board->write(share("caf\xC3\xA9 \xE2\x82\xAC")));
  EXPECT_TRUE(pastes("STRING", "caf\xE9 ?"));
  EXPECT_EQ(paste("image/png"), std::nullopt);

  const auto image = Image::fromBytes(png(30));
  EXPECT_TRUE(board->write(*image));
  EXPECT_TRUE(pastes("image/png", *image->bytes()));
  const auto bmp = paste("image/x-MS-bmp");
  ASSERT_TRUE(bmp);
  EXPECT_EQ(bmp->substr(0, 2), "BM");
  EXPECT_TRUE(paste("image/bmp") == bmp);
}

TEST_P(WaylandPasteboardTest, TheContentsAtTheStartAreNoChange) {
  const Owner owner(display(), {{"text/plain", "already there"}});
  start();
  const auto begun = board->changeCount();
  EXPECT_TRUE(becomes("already there"));
  EXPECT_EQ(board->changeCount(), begun);
  EXPECT_TRUE(board->changesSince(0).empty());
}

TEST_P(WaylandPasteboardTest, WhatItLeavesStaysUntilItIsReplaced) {
  EXPECT_TRUE(board->write(share("hunter2"), true));
  board.reset();
  EXPECT_EQ(paste("UTF8_STRING"), "hunter2");
  EXPECT_EQ(paste("x-kde-passwordManagerHint"), "secret");
  start();
  EXPECT_TRUE(becomes("hunter2"));
  EXPECT_TRUE(board->contents().concealed);

  Bitmap bitmap = *Bitmap::makeClear(40, 30);
  EXPECT_TRUE(
      board->write(Image::fromPixels(std::make_shared<const Bitmap>(std::move(bitmap))), true));
  board.reset();
  EXPECT_EQ(paste("x-kde-passwordManagerHint"), "secret");
  EXPECT_EQ(paste("image/png")->substr(0, 4), "\x89PNG");
  EXPECT_EQ(paste("image/bmp")->substr(0, 2), "BM") << "the keeper converts, too";

  // What is not ours is not ours to leave.
  start();
  takeClipboard();
  {
    const Owner owner(display(), {{"text/plain", "theirs"}});
    EXPECT_EQ(newText(), "theirs");
    board.reset();
    EXPECT_EQ(paste("text/plain"), "theirs");
  }
  EXPECT_EQ(paste("text/plain"), std::nullopt);
  start();
}

// Nobody could paste it.
TEST_P(WaylandPasteboardTest, WritesFailAfterTheEndOfTheCompositor) {
  if (GetParam() == "present") GTEST_SKIP() << "others are still to be tested on it";
  compositor.kill();
  queue.pumpUntil([&] { return !board->write(share("lost")); });
  const auto count = board->changeCount();
  const auto text = board->contents().text;
  EXPECT_FALSE(board->write(share("lost, too")));
  EXPECT_EQ(board->changeCount(), count);
  EXPECT_EQ(board->contents().text, text);
  EXPECT_EQ(connectWaylandClipboard(display()), nullptr);
}

INSTANTIATE_TEST_SUITE_P(On, WaylandPasteboardTest, testing::ValuesIn(waylandDesktops()),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace marbelot
