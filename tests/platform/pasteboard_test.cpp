// The clipboard among other programs: the same on X11 and on each Wayland desktop.
#include <deque>

#include "tests/platform/pasteboard_fixture.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

using namespace std::chrono_literals;

INSTANTIATE_TEST_SUITE_P(On, PasteboardTest, testing::ValuesIn(clipboardSides()),
                         [](const auto& test) { return test.param; });

TEST_P(PasteboardTest, ReadsWhatOthersCopyAndForgetsItWithItsOwner) {
  const auto picture = encoded(noise(64, 48), "png"), other = encoded(noise(20, 9), "tiff");
  const struct {
    TestOwner::Data data;
    std::string text;
    std::string image;  // its bytes
  } cases[] = {
      {{{"text/plain;charset=utf-8", "größer"}, {"text/plain", "?"}, {"STRING", "?"}},
       "größer",
       {}},
      {{{"UTF8_STRING", std::string("a\0b\0", 4)}}, std::string("a\0b\0", 4), {}},
      {{{"UTF8_STRING", "broken \xFF"}}, "broken \uFFFD", {}},
      {{{"STRING", "caf\xE9"}}, "café", {}},
      {{{"text/plain", "caf\xE9"}}, "café", {}},
      {{{"text/plain", "café"}, {"STRING", "no"}}, "café", {}},
      {{{"text/html", "<b>bold</b>"}}, "(none)", {}},
      {{{"UTF8_STRING", longText(20 << 20)}}, longText(20 << 20), {}},
      {{{"image/png", picture}, {"image/bmp", "?"}, {"UTF8_STRING", "u"}}, "u", picture},
      // The next type in place of a damaged one.
      {{{"image/png", picture.substr(0, 50)}, {"image/tiff", other}}, "(none)", other},
  };
  for (const auto& [data, text, image] : cases) {
    {
      const auto owner = copy(data);
      const auto contents = news(1)[0].contents;
      EXPECT_TRUE((contents.text ? *contents.text : "(none)") == text) << data.begin()->first;
      EXPECT_TRUE((contents.image ? *contents.image->bytes() : "") == image) << data.begin()->first;
      EXPECT_EQ(contents.types.size(), data.size());
    }
    EXPECT_TRUE(news(1)[0].contents.types.empty()) << "its owner has gone";
  }
}

TEST_P(PasteboardTest, ACopiedFileIsItsImage) {
  const TemporaryHome home;
  const std::string path = home / "a picture, 100%.png";
  writeFile(path, encoded(noise(64, 48), "png"));
  writeFile(home / "text.txt", "no image");
  const auto url = [&](const std::string& name) { return "file://" + (home / name); };
  const std::string escaped = url("a%20picture,%20100%25.png");
  const auto bmp = encoded(noise(9, 7), "bmp");
  const struct {
    TestOwner::Data data;
    int width;  // of the image; 0 for none
  } cases[] = {
      {{{"text/uri-list", "# copied\r\nhttps://example.org/a.png\r\n" + escaped + "\r\n"},
        {"UTF8_STRING", path}},
       64},
      {{{"x-special/gnome-copied-files", "copy\n" + escaped + "\n" + url("text.txt")}}, 64},
      {{{"text/uri-list", escaped}, {"image/bmp", bmp}}, 9},
      {{{"text/uri-list", escaped}, {"image/bmp", "damaged"}}, 64},
      {{{"text/uri-list", url("text.txt") + "\r\n" + escaped}, {"UTF8_STRING", "names"}}, 0},
      {{{"text/uri-list", url("missing.png")}}, 0},
      {{{"text/uri-list", "file://\r\nfile:///%\r\n"}}, 0},
  };
  for (const auto& [data, width] : cases) {
    {
      const auto owner = copy(data);
      const auto contents = news(1)[0].contents;
      EXPECT_EQ(contents.image ? contents.image->width() : 0, width) << data.begin()->second;
      EXPECT_EQ(contents.text != nullptr, data.contains("UTF8_STRING"));
    }
    news(1);
  }
}

TEST_P(PasteboardTest, SecretsAreMarkedBothWays) {
  const struct {
    TestOwner::Data data;
    std::set<std::string> ignored;
    bool concealed;
  } cases[] = {
      {{{"x-kde-passwordManagerHint", "secret"}}, {}, true},
      {{{"x-kde-passwordManagerHint", "public"}}, {}, false},
      {{{"x-kde-passwordManagerHint", "public"}}, {"x-kde-passwordManagerHint"}, true},
      {{{"org.nspasteboard.ConcealedType", ""}}, {}, true},
      {{{"org.nspasteboard.TransientType", ""}, {"x-kde-passwordManagerHint", "no"}}, {}, true},
      {{{"text/html", "<b>p</b>"}}, {}, false},
  };
  for (auto [data, ignored, concealed] : cases) {
    data["UTF8_STRING"] = "hunter2";
    const auto owner = copy(data, {.ignored = ignored});
    const auto contents = news(1)[0].contents;
    EXPECT_EQ(contents.concealed, concealed) << data.begin()->first;
    EXPECT_TRUE(contents.text && *contents.text == "hunter2");
    takeClipboard();
  }
  EXPECT_TRUE(board->write(share("hunter2"), true));
  EXPECT_TRUE(pastes("x-kde-passwordManagerHint", "secret"));
  EXPECT_TRUE(board->contents().concealed);
}

TEST_P(PasteboardTest, LosesNoneOfManyQuickCopies) {
  constexpr int copies = 200;
  // Nobody can tell of a copy that was replaced before it could be asked for.
  std::deque<std::unique_ptr<TestOwner>> owners;
  auto copying = std::async(std::launch::async, [&] {
    for (int i = 0; i < copies; ++i) {
      owners.push_back(copy({{"UTF8_STRING", "copy " + std::to_string(i)}}));
      if (!owners.back()->awaitReader()) return;
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

// A program that was stopped for a while, or swapped out. Programs serve one transfer after the
// other: one that nobody takes would jam the clipboard.
TEST_P(PasteboardTest, AHungOwnerHoldsUpNobodyAndIsToldWholeOnceItGoesOn) {
  const std::string text = longText(3 << 20);
  const struct {
    const char* what;
    TestOwner::Manners manners;
    bool text;  // read nevertheless
  } cases[] = {
      {"silent", {.ignored = {"UTF8_STRING", "image/png"}}, false},
      {"half a text", {.stallAfter = 1000000}, false},
      {"no image", {.ignored = {"image/png"}}, true},
  };
  const TestOwner::Data data{{"UTF8_STRING", text}, {"image/png", encoded(noise(30, 20), "png")}};
  for (const auto& [what, manners, readable] : cases) {
    {
      const auto hung = copy(data, manners);
      const auto early = news(1)[0].contents;
      EXPECT_EQ(early.text != nullptr, readable) << what;
      EXPECT_EQ(early.types.size(), 2u) << what;
      hung->resume();
      EXPECT_TRUE(becomes(text)) << what;
      EXPECT_TRUE(queue.pumpUntil([&] { return board->contents().image.has_value(); })) << what;
    }
    for (const bool told : {false, true}) {
      const auto again = copy(data, manners);
      EXPECT_TRUE(again->awaitReader());
      if (told) news(1);
      const auto next = copy({{"UTF8_STRING", "next"}});
      EXPECT_TRUE(becomes("next")) << what;
      seen = board->changeCount();
      again->resume();
      for (int i = 0; i < 2000 && again->given() < text.size(); ++i)
        std::this_thread::sleep_for(10ms);
      EXPECT_GE(again->given(), text.size()) << what;
      EXPECT_EQ(board->changeCount(), seen) << "no longer the present one: " << what;
      takeClipboard();
    }
  }
  // Nor does it hold up the end.
  const auto hung = copy(data, cases[0].manners);
  EXPECT_TRUE(hung->awaitReader());
  board.reset();
}

TEST_P(PasteboardTest, OwnWritesCountOnceAndKeepTheirPlaceAmongTheOthers) {
  int announced = 0;
  board->setChangeHandler([&] { ++announced; });
  const auto before = board->changeCount();
  EXPECT_EQ(board->write(share("one")), before + 1);
  EXPECT_EQ(board->write(share("two")), before + 2);
  EXPECT_TRUE(pastes("UTF8_STRING", "two"));
  queue.pumpFor(100ms);
  EXPECT_EQ(announced, 1) << "both together, and the server's word about them not again";
  EXPECT_EQ(board->changeCount(), before + 2);
  ASSERT_EQ(board->changesSince(before).size(), 2u);
  ASSERT_EQ(board->changesSince(before).size(), 1u) << "told once, but for the present one";

  // Known to the thread but not yet to us: it came first, and whoever has written is told of it.
  queue.pumpFor(0ms);
  const auto foreign = copy({{"UTF8_STRING", "foreign"}});
  EXPECT_TRUE(queue.awaitPost());
  const auto third = board->write(share("three"));
  EXPECT_EQ(third, before + 3);
  const auto both = board->changesSince(before + 2);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_EQ(*both[0].contents.text, "foreign");
  EXPECT_GT(both[0].count, *third);
  EXPECT_EQ(*board->contents().text, "three");

  // Still being read when we write: it is told, and what we wrote stays the present contents.
  for (const bool known : {true, false}) {
    const auto slow = copy({{"UTF8_STRING", longText(1 << 20)}}, {.ignored = {"UTF8_STRING"}});
    EXPECT_TRUE(slow->awaitReader());
    const auto own = board->write(share("own"), known).value();
    EXPECT_TRUE(slow->awaitSuccessor());
    slow->resume();
    EXPECT_TRUE(pastes("UTF8_STRING", "own"));
    queue.pumpUntil([&] { return board->changeCount() > own; });
    EXPECT_EQ(*board->contents().text, "own");
    EXPECT_EQ(board->contents().concealed, known) << "as it was written";
    const auto told = board->changesSince(known ? own : own - 1);
    ASSERT_EQ(told.size(), known ? 1u : 2u);
    EXPECT_TRUE(*told[0].contents.text == longText(1 << 20));
    EXPECT_EQ(told.back().count, board->changeCount() - (known ? 1 : 0));
    EXPECT_TRUE(board->changesSince(board->changeCount()).empty());
  }
}

TEST_P(PasteboardTest, TheContentsAtTheStartAreAnnouncedButNoChange) {
  const auto owner = copy({{"UTF8_STRING", "already there"}});
  start();
  int announced = 0;
  board->setChangeHandler([&] { ++announced; });
  const auto begun = board->changeCount();
  EXPECT_TRUE(becomes("already there"));
  EXPECT_EQ(board->changeCount(), begun);
  EXPECT_TRUE(board->changesSince(begun).empty() && board->changesSince(0).empty());
  EXPECT_TRUE(queue.pumpUntil([&] { return announced == 1; }));
}

TEST_P(PasteboardTest, ServesTextsAndImagesInEveryForm) {
  const auto text = longText(50 << 20);
  EXPECT_TRUE(board->write(share(text)));
  EXPECT_TRUE(pastes("UTF8_STRING", text));
  auto other = std::async(std::launch::async, [&] { return paste("text/plain;charset=utf-8"); });
  EXPECT_TRUE(paste("UTF8_STRING") == text);
  EXPECT_TRUE(other.get() == text) << "two at the same time";
  EXPECT_TRUE(board->write(share("café €")));
  EXPECT_TRUE(pastes("STRING", "caf\xE9 ?"));
  EXPECT_EQ(paste("image/png"), std::nullopt);

  const auto png = encoded(noise(1920, 1080), "png");
  EXPECT_TRUE(board->write(*Image::fromBytes(share(png))));
  EXPECT_TRUE(pastes("image/png", png)) << "its own bytes";
  // Other forms are made when asked for; meanwhile the rest is served.
  auto bmp = std::async(std::launch::async, [&] { return paste("image/x-MS-bmp"); });
  EXPECT_TRUE(paste("image/png") == png);
  const auto converted = bmp.get();
  ASSERT_TRUE(converted);
  EXPECT_EQ(
      QImage::fromData(QByteArray::fromStdString(*converted)).convertToFormat(QImage::Format_RGB32),
      noise(1920, 1080));
}

// Nobody could paste it.
TEST_P(PasteboardTest, WritesFailAfterTheEndOfTheServer) {
  if (!side->signal(SIGTERM)) GTEST_SKIP() << "others are still to be tested on it";
  // The first ones may be under way before the thread knows.
  queue.pumpUntil([&] { return !board->write(share("lost")); });
  const auto count = board->changeCount();
  const auto text = board->contents().text;
  EXPECT_FALSE(board->write(share("lost, too")));
  EXPECT_EQ(board->changeCount(), count);
  EXPECT_EQ(board->contents().text, text);
}

}  // namespace
}  // namespace marbelot
