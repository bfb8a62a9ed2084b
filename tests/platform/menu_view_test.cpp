#include "platform/linux/menu_view.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QTest>

namespace marbelot {
namespace {

struct MenuViewTest : testing::Test, MenuDelegate {
  std::shared_ptr<Menu> menu = std::make_shared<Menu>();
  MenuView view;
  std::string chosen;

  void menuWillOpen() override {}
  void menuWillHighlightItem(const MenuItem*) override {}
  void menuDidClose() override {}
  void menuItemChosen(const MenuItem& item) override { chosen += item.title; }

  QMenu* open() {
    view.setMenu(menu, this);
    view.popUpAtPointer();
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
  }
};

TEST_F(MenuViewTest, TitlesShowNothingThatQtWouldActUpon) {
  const struct {
    const char *title, *shown;
  } cases[] = {
      {"“a\tCtrl+Q”", "“a Ctrl+Q”"},
      {"“R&D”", "“R&&D”"},
      {"“\u202Egpj.exe\u202C \u2066x\u2069\u200F”", "“gpj.exe x”"},
      {"“a\r\u2028b\u0085”", "“a  b ”"},
      {"é \U0001F469\u200D\U0001F4BB ⏎", "é \U0001F469\u200D\U0001F4BB ⏎"},
  };
  for (const auto& [title, shown] : cases) menu->add(title, "action");
  const QMenu* shownMenu = open();
  ASSERT_TRUE(shownMenu);
  for (qsizetype i = 0; i < shownMenu->actions().size(); ++i)
    EXPECT_EQ(shownMenu->actions()[i]->text().toStdString(), cases[i].shown);
}

TEST_F(MenuViewTest, KeyEquivalentsAreControlAndTheLetterAlone) {
  menu->add("flatten", "action")->key = "f";
  QMenu* shown = open();
  ASSERT_TRUE(shown);
  for (const Qt::KeyboardModifiers more : {Qt::ShiftModifier, Qt::AltModifier, Qt::MetaModifier}) {
    QTest::keyClick(shown, Qt::Key_F, more | Qt::ControlModifier);
    QTest::qWait(5);
    EXPECT_EQ(chosen, "");
  }
  QTest::keyClick(shown, Qt::Key_F, Qt::ControlModifier);
  EXPECT_TRUE(QTest::qWaitFor([&] { return chosen == "flatten"; }));
}

// Another copy moves the entries while the actions of one of them are open.
TEST_F(MenuViewTest, OpenActionsGoOnMeaningTheirEntry) {
  const auto entry = [](const std::string& name) {
    MenuItem item;
    item.title = name;
    item.payload = std::make_shared<const HUDPayload>(HUDPayload{share(name)});
    item.submenu = std::make_shared<Menu>();
    item.submenu->add("Delete " + name, "deleteClipHistory:");
    return item;
  };
  menu->add(entry("bravo"));
  menu->add(entry("alpha"));
  QMenu* shown = open();
  ASSERT_TRUE(shown);
  shown->setActiveAction(shown->actions()[0]);
  QTest::keyClick(shown, Qt::Key_Right);
  auto* actions = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_TRUE(actions && actions != shown);
  menu->items.insert(menu->items.begin(), std::make_shared<MenuItem>(entry("charlie")));
  view.sync();
  ASSERT_TRUE(actions->isVisible());
  actions->actions()[0]->trigger();
  EXPECT_EQ(chosen, "Delete bravo");
}

}  // namespace
}  // namespace marbelot
