#include "platform/linux/qt_windows.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "platform/linux/qt_main_queue.h"
#include "platform/linux/secondary_text.h"
#include "platform/linux/text_view.h"

namespace marbelot {
namespace {

WindowDescription editorLike() {
  WindowDescription window;
  window.id = "made up";
  window.contentSize = {400, 200};
  View text, hint, save;
  text.id = "text";
  text.frame = {0, 44, 400, 156};
  text.content = TextArea{.editable = true};
  hint.id = "hint";
  hint.frame = {12, 14, 200, 16};
  hint.content = Label{.text = "MMMM", .color = Color::of(Color::Role::secondaryLabel)};
  save.id = "save";
  save.frame = {300, 8, 90, 28};
  save.content = Button{.title = "Save", .defaultKey = true};
  window.views = {text, hint, save};
  return window;
}

QWidget* shown(const QString& id) {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->property("marbelotWindow") == id) return window;
  return nullptr;
}

TEST(QtWindows, PressingTheButtonLeavesTheFocusInTheText) {
  QtMainQueue queue;
  PictureCache pictures(queue);
  QtWindows windows(pictures);
  WindowDescription description = editorLike();
  int pressed = 0;
  description.pressed = [&](const std::string&) { ++pressed; };
  const auto window = windows.create(std::move(description));
  window->show();
  window->focus("text");
  auto* text = shown("made up")->findChild<TextView*>();
  auto* button = shown("made up")->findChild<QPushButton*>();
  ASSERT_TRUE(QTest::qWaitFor([&] { return text->hasFocus(); }));
  QTest::mouseClick(button, Qt::LeftButton);
  EXPECT_EQ(pressed, 1);
  EXPECT_TRUE(text->hasFocus());
  // What is typed next is not part of it.
  QTest::keyClick(text, Qt::Key_Return, Qt::ControlModifier);
  EXPECT_EQ(pressed, 2);
  EXPECT_EQ(button->toolTip(), "Ctrl+Return");
}

TEST(QtWindows, SecondaryTextIsReadableInEveryTheme) {
  const struct {
    const char *window, *text;
  } themes[] = {
      {"#efefef", "#000000"}, {"#eff0f1", "#232629"}, {"#f6f5f4", "#2e3436"},
      {"#2a2e32", "#fcfcfc"}, {"#353535", "#ffffff"}, {"#242424", "#80ffffff"},
      {"#000000", "#ffffff"}, {"#ffffff", "#000000"}, {"#000000", "#ffff00"},
      {"#002b36", "#839496"}, {"#fdf6e3", "#657b83"}, {"#3b4252", "#d8dee9"},
      {"#888888", "#777777"}, {"#c0c0c0", "#c0c0c0"},
  };
  EXPECT_NEAR(contrast(Qt::white, Qt::black), 21, 0.01);
  EXPECT_NEAR(contrast("#777777", Qt::white), 4.48, 0.01);
  QtMainQueue queue;
  PictureCache pictures(queue);
  QtWindows windows(pictures);
  const auto window = windows.create(editorLike());
  window->show();
  const auto* label = shown("made up")->findChild<QLabel*>();
  for (const auto& [behind, text] : themes) {
    QPalette palette;
    palette.setColor(QPalette::Window, behind);
    palette.setColor(QPalette::WindowText, text);
    shown("made up")->setPalette(palette);
    EXPECT_GE(contrast(secondaryText(palette), behind), 3) << behind;
    const QImage image = shown("made up")->grab(label->geometry()).toImage();
    double most = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x)
        most = std::max(most, contrast(image.pixelColor(x, y), behind));
    }
    EXPECT_GE(most, 3) << behind;
  }
}

}  // namespace
}  // namespace marbelot
