// Panels, canvases, screens and keys, by events as the window server sends them.
#import <AppKit/AppKit.h>

#include <algorithm>
#include <tuple>

#include "platform/macos/conversions.h"
#include "tests/macos/replaced_method.h"
#include "tests/platform/conformance.h"

namespace marbelot {
namespace {

struct Drawn : CanvasDelegate {
  void draw(Painter& painter, Size bounds) override {
    ++draws;
    painter.fill({0, 0, bounds.width, bounds.height}, {.red = 1}, 20);
    painter.draw("text", {0, 0, 50, 20}, {}, Color::of(Color::Role::secondaryLabel, 0.5),
                 Alignment::right);
    drewSymbol = painter.drawSymbol("camera.on.rectangle.fill", {0, 20, 16, 16}, {});
    painter.clip({0, 0, 10, 10});
    width = painter.width("wide", {});
  }
  void mouseDown(const MouseEvent& event) override { downs.push_back(event); }
  void mouseUp(const MouseEvent& event) override { up = event.point; }
  std::optional<std::string> hitTest(Point point) override {
    if (!tests) return std::nullopt;
    return point.x < 50 ? "button" : "";
  }
  bool keyDown(const KeyEvent& event) override {
    keys.push_back(event.code);
    return takesKeys;
  }
  bool performKeyEquivalent(const KeyEvent& event) override {
    equivalents += event.command;
    return event.command;
  }

  int draws = 0, equivalents = 0;
  bool tests = false, drewSymbol = false, takesKeys = true;
  double width = 0;
  std::vector<MouseEvent> downs;
  std::optional<Point> up;
  std::vector<KeyCode> keys;
};

class AppKitPanels : public testing::Test {
 protected:
  std::unique_ptr<Window> shown(bool panel = true,
                                std::function<bool(const KeyEvent&)> keyDown = {}) {
    WindowDescription made;
    made.id = "panel";
    made.contentSize = {200, 100};
    made.titled = false;
    made.panel = panel;
    made.level = panel ? WindowLevel::raised : WindowLevel::overlay;
    made.keyDown = std::move(keyDown);
    made.everySpace = true;
    made.alpha = 0.9;
    Canvas canvas{&canvas_, {}};
    canvas.views.push_back({"button", {10, 10, 60, 24}, {}, Button{.title = "Do", .flat = true}});
    made.views = {{"canvas", {0, 0, 200, 100}, {.width = true, .height = true}, canvas}};
    made.pressed = [this](const std::string& id) { pressed_ += id + ","; };
    made.moved = [this] { told_.push_back({system().frame.origin.x, system().frame.origin.y}); };
    auto window = platform_.windows.create(std::move(made));
    window->setOrigin({100, 200});
    if (panel) {
      window->showWithoutActivating();
    } else {
      window->show();
    }
    EXPECT_TRUE(wait([this] { return canvas_.draws > 0; }));
    told_.clear();
    return window;
  }
  bool wait(const std::function<bool()>& done) { return desktop_->wait(done); }
  static NSWindow* system() {
    for (NSWindow* each in NSApp.windows)
      if (each.isVisible && [each.identifier isEqualToString:@"panel"]) return each;
    return nil;
  }
  static NSEvent* mouse(NSEventType type, Point at, NSInteger clicks = 1) {
    return [NSEvent mouseEventWithType:type
                              location:NSMakePoint(at.x, at.y)
                         modifierFlags:0
                             timestamp:0
                          windowNumber:system().windowNumber
                               context:nil
                           eventNumber:0
                            clickCount:clicks
                              pressure:1];
  }
  void click(Point at, NSInteger clicks = 1) {
    for (const NSEventType type : {NSEventTypeLeftMouseDown, NSEventTypeLeftMouseUp})
      [NSApp postEvent:mouse(type, at, clicks) atStart:NO];
    settle();
  }
  void key(KeyCode code, bool command = false) {
    NSEvent* const event = [NSEvent keyEventWithType:NSEventTypeKeyDown
                                            location:NSZeroPoint
                                       modifierFlags:command ? NSEventModifierFlagCommand : 0
                                           timestamp:0
                                        windowNumber:system().windowNumber
                                             context:nil
                                          characters:@"k"
                         charactersIgnoringModifiers:@"k"
                                           isARepeat:NO
                                             keyCode:static_cast<unsigned short>(code)];
    [NSApp sendEvent:event];
  }
  void settle() {
    bool passed = false;
    const Task pause = platform_.queue.after(0.05, [&] { passed = true; });
    EXPECT_TRUE(wait([&] { return passed; }));
  }

  std::unique_ptr<TestDesktop> desktop_ = desktops().at("AppKit")();
  Platform& platform_ = desktop_->platform();
  Drawn canvas_;
  std::string pressed_;
  std::vector<Point> told_;  // where it was when a move was told
};

TEST_F(AppKitPanels, AreListedAndTakeTheMouseWithoutTheKeys) {
  const auto window = shown();
  const Rect expected{100, 200, 200, 100};
  EXPECT_EQ(window->frame(), expected);
  const auto listed = platform_.windows.visible();
  ASSERT_EQ(listed.size(), 1U);
  EXPECT_EQ(listed[0].frame, expected);
  EXPECT_EQ(listed[0].buttons.at(0).title, "Do");
  EXPECT_TRUE(canvas_.drewSymbol);
  EXPECT_GT(canvas_.width, 0);
  EXPECT_FALSE(window->isKey());
  click({20, 22});
  EXPECT_EQ(pressed_, "button,");
  click({170, 10}, 2);
  ASSERT_EQ(canvas_.downs.size(), 1U);
  EXPECT_EQ(canvas_.downs[0].point, (Point{170, 10}));
  EXPECT_EQ(canvas_.downs[0].clickCount, 2);
  EXPECT_EQ(canvas_.up, (Point{170, 10}));
  EXPECT_FALSE(window->isKey());
  EXPECT_EQ(window->viewAt({120, 222}), "button");
  EXPECT_EQ(window->viewAt({290, 210}), "canvas");
  canvas_.tests = true;
  click({60, 22});  // on the button, but where the canvas wants it
  EXPECT_EQ(canvas_.downs.size(), 2U);
  EXPECT_EQ(pressed_, "button,");
}

TEST_F(AppKitPanels, TakeTheKeysThatTheyWantWithAClickAndLieBelowMenus) {
  std::vector<KeyCode> keys;
  const auto window = shown(true, [&](const KeyEvent& key) {
    keys.push_back(key.code);
    return true;
  });
  EXPECT_GT(system().level, NSMainMenuWindowLevel);
  EXPECT_LT(system().level, NSPopUpMenuWindowLevel);
  canvas_.takesKeys = false;
  click({20, 22});
  EXPECT_FALSE(window->isKey()) << "of a button";
  click({170, 10});
  ASSERT_TRUE(wait([&] { return window->isKey(); }));
  key(KeyCode::escape);
  EXPECT_EQ(keys, std::vector{KeyCode::escape});
}

TEST_F(AppKitPanels, MoveFadeAndComeBack) {
  const auto window = shown();
  window->setOrigin({300, 60}, true);
  EXPECT_EQ(window->frame(), (Rect{300, 60, 200, 100})) << "at once, however long it takes";
  EXPECT_TRUE(wait([&] { return !told_.empty(); }));
  EXPECT_EQ(told_.front(), (Point{300, 60})) << "the end, and nothing on the way";
  window->setContent({100, 80}, {{"canvas", {0, 0, 100, 80}, {}, Canvas{&canvas_, {}}}});
  EXPECT_EQ(window->frame(), (Rect{300, 60, 100, 80}));
  {
    BOOL (^const zoomed)(id) = ^BOOL(id) {
      return YES;  // as a Mac says of each that cannot be resized
    };
    const ReplacedMethod fixed([NSWindow class], @selector(isZoomed), zoomed);
    window->center();
  }
  const Rect area = platform_.screens.all().at(0).visibleFrame;
  EXPECT_EQ(window->frame(), (Rect{area.midX() - 50, area.midY() - 40, 100, 80}));
  window->fadeOut();
  EXPECT_TRUE(wait([&] { return !window->isVisible(); }));
  window->showWithoutActivating();
  EXPECT_NEAR(system().alphaValue, 0.9, 0.01);
}

TEST_F(AppKitPanels, AWindowHasTheKeysAndKeepsOthersFromSwitching) {
  const auto window = shown(false);
  window->focus("canvas");
  ASSERT_TRUE(wait([&] { return window->isKey(); }));
  std::vector<KeyCode> local;
  Task locals = platform_.keyMonitors.addLocal([&](const KeyEvent& event) {
    local.push_back(event.code);
    return event.code == KeyCode::upArrow;
  });
  Task globals = platform_.keyMonitors.addGlobal([](const KeyEvent&) { ADD_FAILURE(); });
  key(KeyCode::upArrow);
  key(KeyCode::rightArrow);
  EXPECT_EQ(local, (std::vector{KeyCode::upArrow, KeyCode::rightArrow}));
  EXPECT_EQ(canvas_.keys, std::vector{KeyCode::rightArrow});
  locals.cancel();
  key(KeyCode::upArrow);
  EXPECT_EQ(local.size(), 2U);
  key(KeyCode::tab, true);
  EXPECT_EQ(canvas_.equivalents, 1);
  EXPECT_TRUE(window->isVisible());

  const auto switching = NSApplicationPresentationDisableProcessSwitching;
  std::string leftOut;
  EXPECT_TRUE(window->grabKeyboard(leftOut));
  EXPECT_FALSE(leftOut.empty());
  EXPECT_NE(NSApp.presentationOptions & switching, 0U);
  window->hide();
  EXPECT_EQ(NSApp.presentationOptions & switching, 0U);
  window->show();
  EXPECT_TRUE(window->grabKeyboard(leftOut));
  [system() resignKeyWindow];
  settle();
  EXPECT_FALSE(window->isVisible()) << "the keys went elsewhere";
  EXPECT_EQ(NSApp.presentationOptions & switching, 0U);
}

TEST_F(AppKitPanels, AreOnEveryDesktopBesideFullScreenWindowsAndNotCycledWhereTheyAreTo) {
  __block NSUInteger told = 0;
  void (^const tells)(id, NSUInteger) = ^(id, NSUInteger behavior) {
    told = behavior;
  };
  const ReplacedMethod noted([NSWindow class], @selector(setCollectionBehavior:), tells);
  using Case = std::tuple<bool, bool, NSUInteger>;
  for (const auto& [panel, besideFullScreen, behavior] :
       {Case{true, true, 337}, Case{true, false, 81}, Case{false, true, 273}}) {
    WindowDescription made;
    made.contentSize = {40, 40};
    made.panel = panel;
    made.everySpace = true;
    made.besideFullScreen = besideFullScreen;
    platform_.windows.create(std::move(made));
    EXPECT_EQ(told, behavior);
  }
}

TEST_F(AppKitPanels, MayGoInTheMiddleOfTheirOwnCallbacks) {
  std::unique_ptr<Window> window;
  WindowDescription described;
  described.id = "panel";
  described.contentSize = {100, 50};
  described.views = {{"button", {10, 10, 60, 24}, {}, Button{.title = "Do"}}};
  described.pressed = [&](const std::string&) { window.reset(); };
  window = platform_.windows.create(std::move(described));
  window->show();
  EXPECT_TRUE(window->press("button"));
  EXPECT_FALSE(window);
  EXPECT_TRUE(platform_.windows.visible().empty());
}

TEST_F(AppKitPanels, ScreensAreToldAsTheyChange) {
  const auto screens = platform_.screens.all();
  ASSERT_FALSE(screens.empty());
  EXPECT_EQ(screens[0].frame.x, 0);
  EXPECT_EQ(screens[0].frame.y, 0);
  EXPECT_GT(screens[0].frame.width, 0);
  EXPECT_LE(screens[0].visibleFrame.maxY(), screens[0].frame.maxY());
  const Point pointer = platform_.screens.pointer();
  EXPECT_TRUE(std::any_of(screens.begin(), screens.end(),
                          [&](const Screen& screen) { return screen.frame.contains(pointer); }));
  int changes = 0;
  Task told = platform_.screens.onChange([&] { ++changes; });
  const auto change = [] {
    [NSNotificationCenter.defaultCenter
        postNotificationName:NSApplicationDidChangeScreenParametersNotification
                      object:NSApp];
  };
  change();
  EXPECT_EQ(changes, 1);
  told.cancel();
  change();
  EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace marbelot
