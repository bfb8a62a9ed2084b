#include <gtest/gtest.h>

#include "hud/always_on_widget.h"
#include "hud/hud_placement.h"
#include "platform/memory/memory_platform.h"

namespace marbelot {
namespace {

constexpr Rect area{0, 0, 1440, 875};
constexpr Size panel{300, 100};

TEST(Placement, KeepsItsMarginsInEachCellOfTheGrid) {
  const double left = 16, centre = 570, right = 1124, top = 759, middle = 387.5, bottom = 16;
  const Point expected[] = {{left, top},    {centre, top},    {right, top},
                            {left, middle}, {centre, middle}, {right, middle},
                            {left, bottom}, {centre, bottom}, {right, bottom}};
  for (int place = 0; place < placementCount; ++place)
    EXPECT_EQ(originForPlacement(panel, place, area), expected[place]) << place;
}

TEST(Placement, ShowsTheLowerLeftOfAPanelLargerThanTheScreen) {
  const Rect small{-100, 50, 200, 90};
  for (const int place : {0, 2, 4, 8})
    EXPECT_EQ(originForPlacement({300, 300}, place, small), (Point{-92, 58})) << place;
  // One that fits with less than its usual margin comes no closer than the least one.
  EXPECT_EQ(originForPlacement({180, 60}, 0, small), (Point{-88, 64}));
}

TEST(Placement, StandsBesideWhatIsThereAsNearAsItCan) {
  const Rect atTop{1124, 700, 300, 159}, below{1124, 560, 300, 130};
  EXPECT_EQ(originBeside(panel, 2, area, {}), originForPlacement(panel, 2, area));
  EXPECT_EQ(originBeside(panel, 2, area, {atTop}), (Point{1124, 592}));
  EXPECT_EQ(originBeside(panel, 2, area, {atTop, below}), (Point{1124, 452}));
  EXPECT_EQ(originBeside(panel, 6, area, {{16, 16, 300, 100}}), (Point{16, 124}));
  const Rect narrow{0, 0, 330, 200};
  EXPECT_EQ(originBeside(panel, 2, narrow, {narrow}), originForPlacement(panel, 2, narrow));
}

TEST(Placement, CyclesThroughTheCornersClockwise) {
  const int next[] = {2, 0, 8, 0, 0, 0, 0, 0, 6};
  for (int place = 0; place < placementCount; ++place) EXPECT_EQ(nextCorner(place), next[place]);
}

TEST(Placement, ArrowKeysGoToTheNeighbourAndStopAtTheEdge) {
  using enum KeyCode;
  EXPECT_EQ(placementAfterKey(0, leftArrow), 0);
  EXPECT_EQ(placementAfterKey(7, downArrow), 7);
  EXPECT_EQ(placementAfterKey(4, leftArrow), 3);
  EXPECT_EQ(placementAfterKey(4, rightArrow), 5);
  EXPECT_EQ(placementAfterKey(4, upArrow), 1);
  EXPECT_EQ(placementAfterKey(4, downArrow), 7);
  EXPECT_EQ(placementAfterKey(2, rightArrow), 2);
  EXPECT_EQ(placementAfterKey(4, escape), std::nullopt);
}

TEST(Placement, BelongsToTheScreenWithThePointer) {
  const Screen first{{0, 0, 1440, 900}, {0, 0, 1440, 875}, 1};
  const Screen second{{1440, 0, 1920, 1080}, {1440, 40, 1920, 1040}, 2};
  EXPECT_EQ(screenArea({first, second}, {1440, 10}), second.visibleFrame);
  EXPECT_EQ(screenArea({first, second}, {-5, 10}), first.visibleFrame);
  EXPECT_EQ(screenArea({}, {}), (Rect{0, 0, 1440, 900}));
}

struct HUDPlacementTest : testing::Test {
  memory::MemoryPlatform desk;
  ActionTable actions;
  HUDPlacement placement{desk.platform, actions};
  std::unique_ptr<Window> window = desk.windows.create(described());

  static WindowDescription described() {
    WindowDescription window;
    window.contentSize = panel;
    return window;
  }
  memory::MemoryWindow& shown() { return *desk.windows.live.front(); }
};

TEST_F(HUDPlacementTest, TakesAnythingElseThanAPlaceForTheTopRight) {
  for (const Value& stored : {Value(9), Value("6th"), Value(-1), Value(Value::List{})}) {
    desk.defaults.stored.insert_or_assign("hudPopupPlacement", stored);
    placement.hudPopupPlacement.read();
    EXPECT_EQ(placement.placement(), 2);
  }
  desk.defaults.stored.insert_or_assign("hudPopupPlacement", Value(6));
  placement.hudPopupPlacement.read();
  EXPECT_EQ(placement.placement(), 6);
}

TEST_F(HUDPlacementTest, MovesOpenPanelsByKeysOfAnyProgramAndTakesThoseOfPanelsOnly) {
  EXPECT_EQ(desk.keyMonitors.globals(), 0U);
  Task open = placement.follow(*window);
  EXPECT_EQ(desk.keyMonitors.globals(), 1U);
  desk.keyMonitors.pressElsewhere({.code = KeyCode::downArrow});
  EXPECT_EQ(placement.placement(), 5);
  EXPECT_EQ(shown().at.origin(), originForPlacement(panel, 5, area));
  EXPECT_TRUE(shown().animated);
  EXPECT_EQ(desk.defaults.stored.at("hudPopupPlacement").asInteger(), 5);
  // A text of the program keeps the key; a panel that has the keys does not need it.
  EXPECT_FALSE(desk.keyMonitors.pressHere({.code = KeyCode::leftArrow}));
  EXPECT_EQ(placement.placement(), 4);
  window->show();
  EXPECT_TRUE(desk.keyMonitors.pressHere({.code = KeyCode::leftArrow}));
  EXPECT_FALSE(desk.keyMonitors.pressHere({.code = KeyCode::space}));
  EXPECT_EQ(placement.placement(), 3);
  // In a menu they choose an item, and a keyboard that is being cleaned does nothing.
  for (const char* id : {"menu", "cleaning"}) {
    WindowDescription other = described();
    other.id = id;
    const auto opened = desk.windows.create(other);
    opened->showWithoutActivating();
    EXPECT_FALSE(desk.keyMonitors.pressHere({.code = KeyCode::leftArrow}));
    EXPECT_EQ(placement.placement(), 3) << id;
  }
  open.cancel();
  EXPECT_EQ(desk.keyMonitors.globals() + desk.keyMonitors.locals(), 0U);
  EXPECT_FALSE(placement.onArrow(KeyCode::leftArrow));
}

TEST_F(HUDPlacementTest, PutsAPanelBackInPlaceOnlyWhenItsScreenGoesAway) {
  const Screen main = desk.screens.screens.front();
  const Screen other{{1440, 0, 1920, 1080}, {1440, 0, 1920, 1080}, 2};
  desk.screens.set({main, other});
  const Task open = placement.follow(*window);
  window->setOrigin({2000, 300});
  desk.screens.set({other, main});
  EXPECT_EQ(shown().at.origin(), (Point{2000, 300}));
  desk.screens.set({main});
  EXPECT_EQ(shown().at.origin(), originForPlacement(panel, 2, area));
}

TEST(WidgetPlace, StandsInTheCornersAndGoesRoundThemClockwise) {
  EXPECT_EQ(widgetCornerOrigin(0, panel, area), (Point{12, 763}));
  EXPECT_EQ(widgetCornerOrigin(1, panel, area), (Point{1128, 763}));
  EXPECT_EQ(widgetCornerOrigin(2, panel, area), (Point{12, 12}));
  EXPECT_EQ(widgetCornerOrigin(3, panel, area), (Point{1128, 12}));
  EXPECT_EQ(nextWidgetCorner(0), 1);
  EXPECT_EQ(nextWidgetCorner(1), 3);
  EXPECT_EQ(nextWidgetCorner(3), 2);
  EXPECT_EQ(nextWidgetCorner(2), 0);
  EXPECT_EQ(nextWidgetCorner(freeWidgetPosition), 3);
}

}  // namespace
}  // namespace marbelot
