#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <deque>
#include <future>

#include "tests/platform/x11_pasteboard_fixture.h"

namespace marbelot {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST_F(X11PasteboardTest, ReadsTextsOfEveryKind) {
  const struct {
    TestOwner::Data data;
    TestOwner::Manners manners;
    std::string expected;
  } cases[] = {
      {{{"UTF8_STRING", "gr\xC3\xBC\xC3\x9F"}}, {}, "gr\xC3\xBC\xC3\x9F"},
      {{{"UTF8_STRING", ""}}, {}, ""},
      {{{"UTF8_STRING", std::string("a\0b\0", 4)}}, {}, std::string("a\0b\0", 4)},
      {{{"UTF8_STRING", "broken \xFF"}}, {}, "broken \xEF\xBF\xBD"},
      {{{"STRING", "caf\xE9"}}, {}, "caf\xC3\xA9"},
      {{{"text/plain", "caf\xE9"}}, {}, "caf\xC3\xA9"},
      {{{"text/plain", "caf\xC3\xA9"}, {"STRING", "no"}}, {}, "caf\xC3\xA9"},
      {{{"text/plain;charset=utf-8", "x"}, {"UTF8_STRING", "y"}}, {{"UTF8_STRING"}, {}}, "x"},
      {{{"UTF8_STRING", "y"}}, {{"UTF8_STRING"}, {}}, "(none)"},
      {{{"UTF8_STRING", longText(20 << 20)}}, {}, longText(20 << 20)},
  };
  for (const auto& [data, manners, expected] : cases) {
    const TestOwner owner(display(), data, manners);
    const auto text = newText();
    EXPECT_TRUE(text == expected) << data.begin()->first << " of " << expected.size() << " bytes";
    takeClipboard();
  }
}

// As many do, whose first type goes to whoever asks for another.
TEST_F(X11PasteboardTest, ReadsOnlyWhatTheOwnerLists) {
  const std::string pdf = "%PDF-1.4 no text", png = encoded(noise(64, 48), "png");
  const struct {
    TestOwner::Data data;
    std::set<std::string> ignored;
    std::string text;
    bool image;
  } cases[] = {
      {{{"application/pdf", pdf}}, {}, "", false},
      {{{"application/pdf", longText(5 << 20)}}, {}, "", false},
      {{{"text/html", "<b>bold</b>"}}, {}, "", false},
      {{{"image/png", png}}, {}, "", true},
      {{{"image/png", png}}, {"UTF8_STRING"}, "", true},
      {{{"COMPOUND_TEXT", "old"}}, {}, "", false},
      {{{"application/pdf", pdf}, {"text/plain", "a text, too"}}, {}, "a text, too", false},
      {{{"TEXT", "by its old name"}}, {}, "by its old name", false},
  };
  for (const auto& [data, ignored, text, image] : cases) {
    TestOwner::Manners manners;
    manners.anything = true;
    manners.ignored = ignored;
    const TestOwner owner(display(), data, manners);
    queue.pumpUntil([&] {
      const auto now = board->contents();
      return now.types.size() == data.size() && now.image.has_value() == image;
    });
    for (const auto& change : board->changesSince(seen)) {
      const SharedText told = change.contents.text;
      EXPECT_EQ(told ? *told : "", text) << data.begin()->first;
    }
    EXPECT_EQ(board->contents().image.has_value(), image) << data.begin()->first;
    takeClipboard();
  }
}

TEST_F(X11PasteboardTest, AnOwnerThatLeavesEmptiesTheClipboard) {
  {
    const TestOwner owner(display(), {{"UTF8_STRING", "here"}});
    EXPECT_EQ(newText(), "here");
    EXPECT_EQ(board->contents().types, std::vector<std::string>{"UTF8_STRING"});
  }
  const auto empty = news(1)[0].contents;
  EXPECT_FALSE(empty.text || empty.image);
  EXPECT_TRUE(empty.types.empty());
}

TEST_F(X11PasteboardTest, RecognisesWhatIsMarkedAsSecret) {
  const struct {
    TestOwner::Data data;
    TestOwner::Manners manners;
    bool concealed;
  } cases[] = {
      {{{"x-kde-passwordManagerHint", "secret"}}, {}, true},
      {{{"x-kde-passwordManagerHint", "public"}}, {}, false},
      {{{"x-kde-passwordManagerHint", "public"}}, {{"x-kde-passwordManagerHint"}, {}}, true},
      {{{"org.nspasteboard.ConcealedType", ""}}, {}, true},
      {{{"org.nspasteboard.TransientType", ""}, {"x-kde-passwordManagerHint", "no"}}, {}, true},
      {{{"text/html", "<b>p</b>"}}, {}, false},
  };
  for (auto [data, manners, concealed] : cases) {
    data["UTF8_STRING"] = "hunter2";
    const TestOwner owner(display(), data, manners);
    const auto contents = news(1)[0].contents;
    EXPECT_EQ(contents.concealed, concealed) << data.begin()->first;
    EXPECT_TRUE(contents.text && *contents.text == "hunter2");
    takeClipboard();
  }
}

TEST_F(X11PasteboardTest, AHungOwnerHoldsUpNobody) {
  const struct {
    const char* what;
    TestOwner::Manners manners;
    bool text;    // read nevertheless
    bool listed;  // the types are known
  } cases[] = {
      {"silent", {{}, {"TARGETS", "UTF8_STRING"}}, false, false},
      {"no text", {{}, {"UTF8_STRING"}}, false, true},
      {"half a text", {{}, {}, 1000, 3000}, false, true},
      {"half an image", {{}, {"image/png"}}, true, true},
  };
  const TestOwner::Data data{{"UTF8_STRING", longText(5000)}, {"image/png", "?"}};
  for (const auto& [what, manners, text, listed] : cases) {
    const TestOwner hung(display(), data, manners);
    const auto started = Clock::now();
    const auto contents = news(1)[0].contents;  // counted all the same
    EXPECT_LT(Clock::now() - started, 3500ms) << what << ": one wait, not one for each type";
    EXPECT_EQ(contents.text != nullptr, text) << what;
    EXPECT_EQ(contents.types.empty(), !listed) << what;

    const TestOwner again(display(), data, manners);
    EXPECT_TRUE(again.awaitReader());
    const auto replaced = Clock::now();
    const TestOwner next(display(), {{"UTF8_STRING", "next"}});
    queue.pumpUntil([&] { return board->contents().text && *board->contents().text == "next"; });
    EXPECT_LT(Clock::now() - replaced, 1500ms) << what;
    takeClipboard();
  }
  // Nor does it hold up the end.
  const TestOwner hung(display(), data, {{}, {"TARGETS", "UTF8_STRING"}});
  EXPECT_TRUE(hung.awaitReader());
  const auto started = Clock::now();
  board.reset();
  EXPECT_LT(Clock::now() - started, 1500ms);
}

// A program that was stopped for a while, or swapped out.
TEST_F(X11PasteboardTest, AnOwnerThatGoesOnAfterAPauseIsToldWhole) {
  const auto text = longText(100000);
  const auto jpeg = encoded(noise(64, 48), "jpeg");
  const struct {
    const char* what;
    TestOwner::Data data;
    TestOwner::Manners manners;
    bool concealed;  // in the end
  } cases[] = {
      {"silent", {}, {{}, {"TARGETS", "UTF8_STRING"}}, false},
      {"half a text", {}, {{}, {}, 1000, 3000}, false},
      {"types unknown", {}, {{}, {"TARGETS"}}, false},
      {"public", {{"x-kde-passwordManagerHint", "no"}}, {{}, {"x-kde-passwordManagerHint"}}, false},
      {"secret", {{"x-kde-passwordManagerHint", "secret"}}, {{}, {"TARGETS", "UTF8_STRING"}}, true},
      {"no image", {{"image/jpeg", jpeg}}, {{}, {"image/jpeg"}}, false},
  };
  for (auto [what, data, manners, concealed] : cases) {
    data["UTF8_STRING"] = text;
    TestOwner owner(display(), data, manners);
    for (const auto& change : news(1)) {
      const auto& early = change.contents;
      EXPECT_TRUE(!early.text || early.concealed || early.types.size() == data.size()) << what;
      EXPECT_FALSE(early.image) << what;
    }
    owner.resume();
    EXPECT_TRUE(queue.pumpUntil([&] {
      const auto now = board->contents();
      return now.text && *now.text == text && now.concealed == concealed &&
             now.image.has_value() == data.contains("image/jpeg");
    })) << what;
    for (const auto& change : board->changesSince(seen))
      EXPECT_TRUE(change.contents.concealed || !concealed) << what;
    takeClipboard();
  }
}

// Programs serve one transfer after the other: one that nobody takes would jam the clipboard.
TEST_F(X11PasteboardTest, WhatIsNoLongerWantedIsTakenAllTheSame) {
  for (const bool told : {true, false}) {
    for (const TestOwner::Manners& manners :
         {TestOwner::Manners{{}, {}, 1000, 3000}, TestOwner::Manners{{}, {"UTF8_STRING"}, 1000}}) {
      TestOwner owner(display(), {{"UTF8_STRING", longText(100000)}}, manners);
      EXPECT_TRUE(owner.awaitReader());
      if (told) news(1);
      const TestOwner next(display(), {{"UTF8_STRING", "next"}});
      EXPECT_TRUE(queue.pumpUntil(
          [&] { return board->contents().text && *board->contents().text == "next"; }));
      seen = board->changeCount();
      owner.resume();
      for (const auto end = Clock::now() + 5s; Clock::now() < end; std::this_thread::sleep_for(1ms))
        if (owner.sent() >= 100000 && !owner.sending()) break;
      EXPECT_EQ(owner.sent(), 100000u) << told;
      EXPECT_FALSE(owner.sending()) << told;
      EXPECT_EQ(board->changeCount(), seen) << "no longer the present one";
      takeClipboard();
    }
  }
}

TEST_F(X11PasteboardTest, LosesNoneOfManyQuickCopies) {
  constexpr int copies = 200;
  // Nobody can tell of a copy that was replaced before it could be asked for.
  std::deque<TestOwner> owners;
  auto copying = std::async(std::launch::async, [&] {
    for (int i = 0; i < copies; ++i) {
      owners.emplace_back(display(), TestOwner::Data{{"UTF8_STRING", "copy " + std::to_string(i)}});
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

TEST_F(X11PasteboardTest, ACopyReplacedInTheMiddleIsStillToldFirst) {
  for (const std::size_t size : {std::size_t{10}, std::size_t{2} << 20}) {
    TestOwner first(display(), {{"UTF8_STRING", longText(size)}}, slowAtFirst);
    EXPECT_TRUE(first.awaitReader());
    const TestOwner second(display(), {{"UTF8_STRING", "second"}});
    first.resume();
    const auto both = news(2);
    ASSERT_TRUE(both[0].contents.text && both[1].contents.text);
    EXPECT_TRUE(*both[0].contents.text == longText(size));
    EXPECT_EQ(*both[1].contents.text, "second");
    takeClipboard();
  }
}

TEST_F(X11PasteboardTest, CountsOwnWritesOnceAndAtOnce) {
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

  // Known to the thread but not yet to us: it came first, and keeps the lower count.
  queue.pumpFor(0ms);
  const TestOwner foreign(display(), {{"UTF8_STRING", "foreign"}});
  EXPECT_TRUE(queue.awaitPost());
  EXPECT_EQ(board->write(share("three")), before + 4);
  const auto both = board->changesSince(before + 2);
  ASSERT_EQ(both.size(), 2u);
  EXPECT_EQ(*both[0].contents.text, "foreign");
  queue.pumpUntil([&] { return announced == 1; });
  EXPECT_EQ(announced, 1);
}

// Still being read when we write: it is told, and what we wrote stays the present contents.
TEST_F(X11PasteboardTest, ACopyOvertakenByAnOwnWriteIsStillTold) {
  for (const bool known : {true, false}) {
    TestOwner slow(display(), {{"UTF8_STRING", longText(8 << 20)}}, slowAtFirst);
    EXPECT_TRUE(slow.awaitReader());
    const auto own = board->write(share("own"), known).value();
    EXPECT_TRUE(slow.awaitSuccessor());
    slow.resume();
    EXPECT_TRUE(pastes("UTF8_STRING", "own"));
    queue.pumpUntil([&] { return board->changeCount() > own; });
    EXPECT_EQ(*board->contents().text, "own");
    EXPECT_EQ(board->contents().concealed, known) << "as it was written";
    const auto told = board->changesSince(known ? own : own - 1);
    ASSERT_EQ(told.size(), known ? 1u : 2u);
    EXPECT_TRUE(*told[0].contents.text == longText(8 << 20));
    EXPECT_EQ(told.back().count, board->changeCount() - (known ? 1 : 0));
    EXPECT_TRUE(board->changesSince(board->changeCount()).empty());
    EXPECT_EQ(*board->contents().text, "own");
  }
}

TEST_F(X11PasteboardTest, TheContentsAtTheStartAreNoChange) {
  const TestOwner owner(display(), {{"UTF8_STRING", "already there"}});
  DesktopPasteboard late(queue, connectX11Clipboard(display()));
  int announced = 0;
  late.setChangeHandler([&] { ++announced; });
  const auto start = late.changeCount();
  EXPECT_TRUE(queue.pumpUntil([&] { return late.contents().text != nullptr; }));
  EXPECT_EQ(*late.contents().text, "already there");
  EXPECT_EQ(late.changeCount(), start);
  EXPECT_TRUE(late.changesSince(start).empty() && late.changesSince(0).empty());
  EXPECT_EQ(announced, 0);
}

TEST_F(X11PasteboardTest, ServesTexts) {
  const auto text = longText(20 << 20);
  EXPECT_TRUE(board->write(share(text)));
  EXPECT_TRUE(pastes("UTF8_STRING", text));
  auto other = std::async(std::launch::async, [&] { return paste(display(), "text/plain"); });
  EXPECT_TRUE(paste(display(), "UTF8_STRING") == text);
  EXPECT_TRUE(other.get() == text) << "two at the same time";
  // One that vanishes in the middle harms nobody.
  EXPECT_TRUE(paste(display(), "UTF8_STRING", true));
  EXPECT_TRUE(paste(display(), "UTF8_STRING") == text);

  EXPECT_TRUE(board->write(share("hunter2"), true));
  EXPECT_TRUE(pastes("x-kde-passwordManagerHint", "secret"));
  EXPECT_TRUE(board->contents().concealed);

  EXPECT_TRUE(board->write(share("caf\xC3\xA9 \xE2\x82\xAC")));
  EXPECT_TRUE(pastes("STRING", "caf\xE9 ?"));
  EXPECT_EQ(paste(display(), "image/png"), std::nullopt);
  const auto targets = paste(display(), "TARGETS");
  EXPECT_EQ(targets ? targets->size() : 0, 4 * 9u);
  FILE* pipe = ::popen(("xclip -o -selection clipboard -display " + display()).c_str(), "r");
  char line[64] = {};
  EXPECT_EQ(std::fread(line, 1, sizeof line, pipe), 9u);
  EXPECT_STREQ(line, "caf\xC3\xA9 \xE2\x82\xAC");
  ::pclose(pipe);
}

}  // namespace
}  // namespace marbelot
