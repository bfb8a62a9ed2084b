#include "keyboard/keyboard_cleaning.h"

#include <gtest/gtest.h>

#include "tests/support/recorded_shell.h"

namespace marbelot {
namespace {

struct KeyboardCleaningTest : testing::Test, RecordedShell {
  ActionTable actions;
  KeyboardCleaning cleaning{desk.platform, *this, actions};

  void toggle() {
    MenuItem sender;
    sender.action = "toggleKeyboardBlock";
    actions.perform(sender);
  }
  memory::MemoryWindow* window() { return desk.windows.find("cleaning"); }
  CanvasDelegate& view() {
    return *std::get<Canvas>(window()->find("blockView")->content).delegate;
  }
  std::string label() { return *window()->text("blockLabel"); }
  void escape(bool repeat = false) {
    view().keyDown({.code = KeyCode::escape, .isRepeat = repeat});
  }
};

TEST_F(KeyboardCleaningTest, SwallowsEveryKeyUntilTheThirdEscape) {
  toggle();
  EXPECT_EQ(rebuilds, 1);
  ASSERT_TRUE(window() && window()->grabs && window()->isKey());
  EXPECT_EQ(window()->focused, "blockView");
  EXPECT_EQ(label(),
            "⌨️  Keyboard disabled — safe to clean\n\n"
            "Press Esc three times to re-enable   (0/3)");
  EXPECT_TRUE(view().keyDown({.code = KeyCode::space}));
  EXPECT_TRUE(view().performKeyEquivalent({.code = KeyCode::other, .command = true}));
  escape();
  escape(true);  // one key that is held down
  view().performKeyEquivalent({.code = KeyCode::escape});
  EXPECT_TRUE(label().ends_with("(2/3)"));
  escape();
  EXPECT_FALSE(cleaning.keyboardBlocked);
  EXPECT_EQ(rebuilds, 2);
  EXPECT_FALSE(window()->grabs || window()->shown);
  desk.queue.advance(0);
  EXPECT_TRUE(desk.windows.live.empty());
  toggle();
  EXPECT_TRUE(label().ends_with("(0/3)"));
  toggle();
  EXPECT_FALSE(cleaning.keyboardBlocked);
  desk.queue.advance(0);  // the window goes before the desktop
}

TEST_F(KeyboardCleaningTest, SaysWhyItDoesNotStartAndWhyItEnds) {
  toggle();
  window()->close();  // as the desktop does when it gives the keys away
  EXPECT_FALSE(cleaning.keyboardBlocked);
  EXPECT_EQ(rebuilds, 2);
  EXPECT_EQ(desk.notices.last(),
            "The keyboard works again: the desktop gave its keys to another program");
  desk.queue.advance(0);

  desk.windows.refusesGrab = true;
  toggle();
  EXPECT_FALSE(cleaning.keyboardBlocked);
  EXPECT_TRUE(desk.windows.live.empty());
  EXPECT_EQ(rebuilds, 2) << "the menu says what it said before";
  EXPECT_EQ(desk.notices.last(), "The keyboard can't be disabled: another program holds it");
}

TEST_F(KeyboardCleaningTest, APauseStartsTheCountAgain) {
  toggle();
  escape();
  desk.queue.advance(1.9);
  escape();
  desk.queue.advance(1.9);
  EXPECT_TRUE(label().ends_with("(2/3)"));
  desk.queue.advance(0.2);
  EXPECT_TRUE(label().ends_with("(0/3)"));
  escape();
  EXPECT_TRUE(label().ends_with("(1/3)"));
  EXPECT_TRUE(cleaning.keyboardBlocked);
}

TEST_F(KeyboardCleaningTest, CoversAllScreensAlsoOneThatIsAdded) {
  desk.screens.screens = {{{0, 0, 1440, 900}, {0, 0, 1440, 875}, 1},
                          {{-1280, 100, 1280, 1024}, {-1280, 100, 1280, 1024}, 1}};
  toggle();
  EXPECT_EQ(window()->at, (Rect{-1280, 0, 2720, 1124}));
  escape();
  desk.screens.set({{{0, 0, 1440, 900}, {0, 0, 1440, 875}, 1},
                    {{1440, 0, 1920, 1080}, {1440, 0, 1920, 1080}, 2}});
  EXPECT_EQ(window()->at, (Rect{0, 0, 3360, 1080}));
  EXPECT_TRUE(label().ends_with("(1/3)"));
}

}  // namespace
}  // namespace marbelot
