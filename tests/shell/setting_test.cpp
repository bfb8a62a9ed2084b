#include "shell/setting.h"

#include <gtest/gtest.h>

#include "tests/support/recorded_shell.h"

namespace marbelot {
namespace {

struct SettingTest : testing::Test, RecordedShell {
  ActionTable actions;
};

TEST_F(SettingTest, EachTypeIsStoredAsSuchAndReadWithItsFallback) {
  Setting<std::int64_t> corner{desk.platform.defaults, "corner", 3};
  Setting<double> x{desk.platform.defaults, "x"};
  Setting<std::vector<std::string>> folders{desk.platform.defaults, "folders"};
  EXPECT_FALSE(corner.stored());
  EXPECT_EQ(corner, 3);
  corner = 1;
  x = 2.5;
  folders = std::vector<std::string>{"/a", "/b"};
  EXPECT_EQ(desk.defaults.stored.at("corner").asInteger(), 1);
  EXPECT_EQ(desk.defaults.stored.at("folders").asTexts()->size(), 2U);

  Setting<double> again{desk.platform.defaults, "x"};
  EXPECT_EQ(again.stored(), 2.5);
  desk.defaults.set("x", 7);
  EXPECT_EQ(again, 7.0) << "written as a whole number by another program";
  desk.defaults.set("x", "left");
  EXPECT_EQ(again, 7.0) << "kept until it is read";
  again.read();
  EXPECT_EQ(again, 0.0);
  desk.defaults.set("folders", Value::List{"/c", 5});
  folders.read();
  EXPECT_EQ(*folders, std::vector<std::string>{"/c"});
}

TEST_F(SettingTest, AToggleFlipsStoresRebuildsAndThenDoesTheRest) {
  Setting<bool> widget{
      desk.platform.defaults, "widget", true, {.registered = true, .toggle = {"Widget", "toggle"}}};
  bool stored = true;
  int rebuilt = 0;
  widget.offerToggle(actions, *this, [&] {
    stored = *desk.defaults.stored.at("widget").asBool();
    rebuilt = rebuilds;
  });
  widget.registerDefault();
  EXPECT_TRUE(desk.defaults.boolFor("widget"));
  Menu menu;
  const MenuItemRef item = widget.addToggle(menu);
  EXPECT_EQ(item->title, "Widget");
  EXPECT_TRUE(item->checked);
  ASSERT_TRUE(actions.perform(*item));
  EXPECT_FALSE(stored);
  EXPECT_EQ(rebuilt, 1);
  EXPECT_FALSE(widget.addToggle(menu)->checked);
}

using SettingDeathTest = SettingTest;

TEST_F(SettingDeathTest, AnActionBelongsToOneFeature) {
  actions.add("copy", {});
  EXPECT_DEATH(actions.add("copy", {}), "the action copy is offered twice");
}

}  // namespace
}  // namespace marbelot
