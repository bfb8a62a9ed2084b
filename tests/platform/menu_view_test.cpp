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
  std::string highlights;  // the titles, "-" for none, each with a blank; "open" and "closed"

  void menuWillOpen() override { highlights += "open "; }
  void menuWillHighlightItem(const MenuItem* item) override {
    highlights += (item ? item->title : "-") + ' ';
  }
  void menuDidClose() override { highlights += "closed"; }
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

TEST_F(MenuViewTest, AnImageStandsBeforeItsTitleAndGoesWithIt) {
  const auto filled = [](std::uint8_t red) {
    Bitmap bitmap = *Bitmap::makeClear(32, 32);
    for (std::size_t at = 0; at < bitmap.bytesPerRow() * 32; at += 4) {
      bitmap.data()[at] = red;
      bitmap.data()[at + 3] = 255;
    }
    return Image::fromPixels(std::make_shared<const Bitmap>(std::move(bitmap)));
  };
  menu->add("browser", "action")->image = filled(200);
  menu->add("editor", "action");
  const QMenu* shown = open();
  ASSERT_TRUE(shown);
  const auto redOf = [&](qsizetype at) {
    return QColor(shown->actions()[at]->icon().pixmap(16).toImage().pixel(8, 8)).red();
  };
  EXPECT_EQ(redOf(0), 200);
  EXPECT_TRUE(shown->actions()[1]->icon().isNull());
  menu->items = {std::make_shared<MenuItem>(), std::make_shared<MenuItem>()};
  menu->items[1]->image = filled(90);
  view.sync();
  EXPECT_TRUE(shown->actions()[0]->icon().isNull());
  EXPECT_EQ(redOf(1), 90);
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

TEST_F(MenuViewTest, TellsEachChangeOfTheHighlightOnce) {
  menu->add("one", "action");
  menu->addDisabled("label");
  menu->add("two", "action");
  const auto inside = std::make_shared<Menu>();
  inside->add("inner", "action");
  inside->addDisabled("inner label");
  menu->addSubmenu("sub", inside);
  QMenu* shown = open();
  ASSERT_TRUE(shown);
  const auto pointAt = [&](QMenu* in, int row, int offset = 0) {
    const QRect place = in->actionGeometry(in->actions()[row]);
    QTest::mouseMove(in, place.center() + QPoint(offset, 0));
    QTest::qWait(1);
  };
  const auto told = [&](const std::string& expected) {
    const bool came = QTest::qWaitFor([&] { return highlights == expected; });
    return came ? std::exchange(highlights, {}) : std::exchange(highlights, {}) + " and no more";
  };
  pointAt(shown, 0, -5);
  for (int offset = -4; offset < 5; ++offset) pointAt(shown, 0, offset);
  EXPECT_EQ(told("open one "), "open one ");
  pointAt(shown, 1);
  EXPECT_EQ(told("- "), "- ") << "a disabled item";
  pointAt(shown, 2);
  EXPECT_EQ(told("two "), "two ");
  QTest::mouseMove(shown, QPoint(400, shown->height() + 100));
  EXPECT_EQ(told("- "), "- ") << "left";
  pointAt(shown, 2);
  EXPECT_EQ(told("two "), "two ");
  menu->items[2] = std::make_shared<MenuItem>(*menu->items[2]);
  view.sync();
  pointAt(shown, 2, 3);
  menu->items[2] = std::make_shared<MenuItem>(*menu->items[2]);
  menu->items[2]->title = "three";
  view.sync();
  EXPECT_EQ(told("three "), "three ") << "as soon as it is another one";

  pointAt(shown, 3);
  EXPECT_EQ(told("sub "), "sub ");
  QMenu* submenu = shown->actions()[3]->menu();
  EXPECT_TRUE(QTest::qWaitFor([&] { return submenu->isVisible(); }));
  QTest::qWait(20);
  EXPECT_EQ(told(""), "") << "its submenu beside it";
  pointAt(submenu, 0);
  EXPECT_EQ(told("inner "), "inner ");
  pointAt(submenu, 1);
  EXPECT_EQ(told("- "), "- ");
  pointAt(submenu, 0);
  EXPECT_EQ(told("inner "), "inner ");
  QTest::keyClick(submenu, Qt::Key_Left);
  EXPECT_FALSE(submenu->isVisible());
  EXPECT_EQ(told("sub "), "sub ") << "where the keys went back to";
  QTest::keyClick(shown, Qt::Key_Up);
  EXPECT_EQ(told("three "), "three ");
  shown->close();
  EXPECT_EQ(told("- closed"), "- closed");
}

TEST_F(MenuViewTest, AHostMayNotTellThatItHasClosedTheMenu) {
  view.setMenu(menu, this);
  QMenu* exported = view.exported();
  for (const char* title : {"one", "two"}) {
    menu->add(title, "action");
    emit exported->aboutToShow();
    EXPECT_EQ(exported->actions().last()->text(), title);
  }
  EXPECT_EQ(std::exchange(highlights, {}), "open closedopen ");
  QMenu* own = open();
  emit exported->aboutToHide();
  own->close();
  emit exported->aboutToShow();
  EXPECT_EQ(highlights, "open closedopen ");
}

}  // namespace
}  // namespace marbelot
