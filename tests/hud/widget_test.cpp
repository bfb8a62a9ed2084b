// The widget that is always on the screen, through the whole application.
#include "tests/hud/panels_fixture.h"

namespace marbelot {
namespace {

class WidgetTest : public PanelsTest {
 protected:
  WidgetTest() { perform("toggleAlwaysOnPreview"); }
  memory::MemoryWindow& widget() { return *shown("widget"); }
  std::optional<std::int64_t> corner() {
    return desk_.defaults.stored.at("alwaysHUDCorner").asInteger();
  }
};

TEST_F(WidgetTest, FollowsTheClipboardAndDrawsNothingWhileItIsUnchanged) {
  EXPECT_EQ(widget().at.maxX(), 1440 - 12);
  EXPECT_EQ(widget().at.maxY(), 875 - 12);
  desk_.pasteboard.learn({.text = share("early"), .image = {}, .types = {}});
  EXPECT_EQ(face(&widget()).texts.at(1), "early");
  copy("hello");
  EXPECT_EQ(face(&widget()).texts.at(1), "hello");
  const int filled = widget().filled;
  const auto redrawn = widget().redrawn;
  desk_.queue.advance(60);
  EXPECT_EQ(widget().filled, filled);
  EXPECT_EQ(widget().redrawn, redrawn);
  copy(picture(400, 100));
  EXPECT_EQ(face(&widget()).images.size(), 1U);
  press(&widget(), "close");
  EXPECT_FALSE(shown("widget"));
  EXPECT_EQ(desk_.defaults.stored.at("alwaysOnPreview").asBool(), false);
}

TEST_F(WidgetTest, RemembersWhereItWasDraggedAndSnapsToCorners) {
  perform("snapAlwaysHUD:", std::int64_t{2});
  EXPECT_EQ(corner(), 2);
  EXPECT_EQ(widget().at.origin(), (Point{12, 12}));
  perform("cycleAlwaysHUDCorner");
  EXPECT_EQ(corner(), 0);
  const int writes = desk_.defaults.writes;
  for (double x = 300; x >= 200; --x) widget().setOrigin({x, 100}, false);  // as the user does
  desk_.queue.advance(0.3);
  EXPECT_EQ(corner(), -1);
  EXPECT_EQ(desk_.defaults.stored.at("alwaysHUDOriginX").asDouble(), 200);
  EXPECT_EQ(desk_.defaults.writes, writes + 3);
  perform("cycleAlwaysHUDCorner");
  EXPECT_EQ(corner(), 3);
  widget().setOrigin({1300, 860}, false);
  desk_.screens.set({{{0, 0, 800, 600}, {0, 0, 800, 600}, 1}});
  EXPECT_EQ(widget().at.maxX(), 800);
  EXPECT_EQ(widget().at.maxY(), 600);
  EXPECT_EQ(corner(), -1);
  launch();
  EXPECT_EQ(widget().at.maxX(), 800);
}

TEST_F(WidgetTest, GivesTheMouseToItsCloseButtonOnly) {
  auto& view = dynamic_cast<HUDWidgetView&>(canvas(&widget(), "widget"));
  const Size size = widget().at.size();
  EXPECT_EQ(view.hitTest({size.width - 10, size.height - 10}), "close");
  EXPECT_EQ(view.hitTest({size.width - 27, size.height - 10}), "");
  EXPECT_EQ(view.hitTest({10, 10}), "");
  view.mouseDown({{10, 10}, 1});
  view.mouseDragged({{30, 30}});
  EXPECT_EQ(widget().drags, 1);
  copy(picture(40, 30));
  view.mouseDown({{10, 10}, 2});
  EXPECT_EQ(shown("preview")->description.title, "Clipboard — 40 × 30");
  // The button beside it is the view's own.
  const Rect button = view.cornerButtonFrame;
  view.mouseDown({{button.x, button.maxY()}, 1});
  view.mouseDragged({{button.x + 2, button.maxY() - 1}});  // a tremble
  view.mouseUp({{button.x, button.maxY()}, 1});
  EXPECT_EQ(corner(), 3);
}

TEST_F(WidgetTest, OffersWhatCanBeDoneWithTheContent) {
  const auto titles = [this] {
    std::string all;
    const auto menu = canvas(&widget(), "widget").menuForEvent({});
    for (const auto& item : menu->items) all += item->title + "|";
    return all;
  };
  const std::string moves =
      "Move to top-left|Move to top-right|Move to bottom-left|Move to bottom-right||Hide widget|";
  EXPECT_EQ(titles(), moves);
  copy(picture(40, 30));
  EXPECT_EQ(titles(),
            "Edit image|Save image to Desktop|Save image to Downloads|Save image to "
            "Pictures/Marbelot|Save image to folder…|Reveal in Finder|Copy image file path||" +
                moves);
}

}  // namespace
}  // namespace marbelot
