#include "tests/platform/conformance.h"

namespace marbelot {
namespace {

using Titles = std::vector<std::string>;

struct Recorder : MenuDelegate {
  void menuWillOpen() override {
    log += "opens,";
    if (opening) opening();
  }
  void menuWillHighlightItem(const MenuItem* item) override {
    log += item ? item->title + "," : "none,";
  }
  void menuDidClose() override { log += "closes,"; }
  void menuItemChosen(const MenuItem& item) override {
    chosen = item.title + "=" + representedText(item.represented);
  }
  std::function<void()> opening;
  std::string log, chosen;
};

class MenuConformance : public Conformance {
 protected:
  void TearDown() override {
    desktop->closeMenu();
    platform.statusItem.setMenu(std::make_shared<Menu>(), &recorder);
  }
  void open() {
    platform.statusItem.setMenu(tree, &recorder);
    platform.statusItem.popUpMenu();
    ASSERT_TRUE(wait([&] { return recorder.log.starts_with("opens,"); }));
  }
  Titles titles(const TestDesktop::Path& path = {}) const {
    Titles found;
    for (const ShownItem& item : desktop->shown(path)) found.push_back(item.title);
    return found;
  }
  // A piece of content with actions on it.
  static MenuItemRef entry(const std::string& name, std::int64_t index) {
    MenuItem item;
    item.title = name;
    item.payload = std::make_shared<const HUDPayload>(HUDPayload{share(name)});
    item.submenu = std::make_shared<Menu>();
    item.submenu->add("Delete", "delete:", index)->payload = item.payload;
    return std::make_shared<MenuItem>(std::move(item));
  }
  static Recorder& theRecorder() {
    static Recorder recorder;  // outlives the status item
    recorder = {};
    return recorder;
  }

  Recorder& recorder = theRecorder();
  std::shared_ptr<Menu> tree = std::make_shared<Menu>();
};

MARBELOT_ON_EACH_DESKTOP(MenuConformance);

TEST_P(MenuConformance, ShowsTheTreeAsItStandsWhenItOpens) {
  tree->addDisabled("Header");
  tree->add("One", "one:", std::int64_t{7});
  tree->addSeparator();
  tree->add("Hidden", "hidden")->hidden = true;
  auto inner = std::make_shared<Menu>();
  inner->add("Flat", "flat:", std::string(" | "))->checked = true;
  tree->addSubmenu("Sub", inner);
  tree->add("R&D\t“a\r\nb\u202Egpj.exe\u202C”", "odd");
  recorder.opening = [&] { tree->add("Added", "added"); };
  open();
  EXPECT_EQ(titles(), (Titles{"Header", "One", "—", "Sub", "R&D “a  bgpj.exe”", "Added"}));
  const auto shown = desktop->shown({});
  EXPECT_FALSE(shown[0].enabled);
  EXPECT_TRUE(shown[1].enabled);
  EXPECT_TRUE(shown[3].submenu);
  EXPECT_TRUE(desktop->shown({"Sub"}).at(0).checked);
  desktop->highlight({"Sub", "Flat"});
  EXPECT_TRUE(wait([&] { return recorder.log.ends_with("Flat,"); })) << recorder.log;
  desktop->choose({"Sub", "Flat"});
  EXPECT_TRUE(wait([&] { return recorder.chosen == "Flat= | "; })) << recorder.chosen;
  EXPECT_TRUE(wait([&] { return recorder.log.ends_with("closes,"); })) << recorder.log;
  EXPECT_FALSE(platform.statusItem.openMenuFrame());
}

TEST_P(MenuConformance, FollowsEditsWhileItIsOpen) {
  tree->add("One", "one");
  tree->add("Two", "two");
  open();
  tree->items[0]->title = "First";
  tree->items[1]->hidden = true;
  tree->items.insert(tree->items.begin(), std::make_shared<MenuItem>(*tree->items[0]));
  tree->items[0]->title = "Above";
  EXPECT_EQ(titles(), (Titles{"One", "Two"})) << "not before it is said";
  platform.statusItem.menuChanged();
  EXPECT_EQ(titles(), (Titles{"Above", "First"}));
  desktop->choose({"First"});
  EXPECT_TRUE(wait([&] { return recorder.chosen == "First="; })) << recorder.chosen;
}

// A copy is recorded while the actions of an older one are open: all entries move.
TEST_P(MenuConformance, OpenActionsGoOnMeaningTheirEntry) {
  auto history = std::make_shared<Menu>();
  history->items = {entry("bravo", 0), entry("alpha", 1)};
  tree->add("Last", "last");
  tree->addSubmenu("History", history);
  tree->addSubmenu("Responses", std::make_shared<Menu>());
  open();
  EXPECT_EQ(titles({"History", "alpha"}), Titles{"Delete"});

  auto edited = std::make_shared<Menu>();
  edited->items = {entry("charlie", 0), entry("bravo", 1), entry("alpha", 2)};
  tree->items[1]->submenu = edited;
  tree->items.insert(tree->items.begin(), std::make_shared<MenuItem>(*tree->items[0]));
  platform.statusItem.menuChanged();
  EXPECT_EQ(titles(), (Titles{"Last", "Last", "History", "Responses"}));
  EXPECT_EQ(titles({"History"}), (Titles{"bravo", "alpha"})) << "until they are done with";
  desktop->choose({"History", "alpha", "Delete"});
  EXPECT_TRUE(wait([&] { return recorder.chosen == "Delete=1"; })) << recorder.chosen;

  recorder.log.clear();
  platform.statusItem.popUpMenu();
  ASSERT_TRUE(wait([&] { return recorder.log.starts_with("opens,"); }));
  EXPECT_EQ(titles({"History"}), (Titles{"charlie", "bravo", "alpha"}));
}

TEST_P(MenuConformance, AnOpenListFollowsItsItemToAnotherPlace) {
  auto responses = std::make_shared<Menu>();
  responses->add("Thanks", "copy");
  auto files = std::make_shared<Menu>();
  files->add("a.png", "copy");
  tree->addSubmenu("Responses", responses);
  tree->addSubmenu("Files", files);
  open();
  EXPECT_EQ(titles({"Responses"}), Titles{"Thanks"});
  responses->add("Sorry", "copy");
  MenuItem last;
  last.title = "Last";
  tree->items.insert(tree->items.begin(), 2, std::make_shared<MenuItem>(last));
  platform.statusItem.menuChanged();
  EXPECT_EQ(titles({"Responses"}), (Titles{"Thanks", "Sorry"}));
  EXPECT_EQ(titles(), (Titles{"Last", "Last", "Responses", "Files"}));
  tree->items.erase(tree->items.begin(), tree->items.begin() + 2);
  platform.statusItem.menuChanged();
  EXPECT_EQ(titles(), (Titles{"Responses", "Files"}));
  EXPECT_EQ(titles({"Responses"}), (Titles{"Thanks", "Sorry"}));
}

TEST_P(MenuConformance, HasTheSymbolsThatTheProgramShows) {
  for (const char* symbol : {"camera.on.rectangle.fill", "checkmark.circle.fill"})
    EXPECT_TRUE(platform.statusItem.setSymbol(symbol, "Marbelot")) << symbol;
  platform.statusItem.setTitle("📸");
}

}  // namespace
}  // namespace marbelot
