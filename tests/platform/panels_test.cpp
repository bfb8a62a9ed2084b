// Panels, screens and keys on a desktop of their own: a window manager, now and then a compositor,
// a window of another program, and a user with a mouse and a keyboard.
#include <gtest/gtest.h>

#include <QApplication>
#include <QProcess>
#include <QScreen>
#include <QTest>
#include <memory>

#include "platform/linux/key_monitors.h"
#include "platform/linux/picture_cache.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/qt_windows.h"
#include "platform/linux/screens.h"
#include "platform/linux/x11_desktop.h"
#include "tests/platform/qt_wait.h"
#include "tests/platform/x11_test_clients.h"

namespace marbelot {
namespace {

// A program that ends with the object.
class Program {
 public:
  Program(const QString& name, const QStringList& arguments) {
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.start(name, arguments);
    EXPECT_TRUE(process_.waitForStarted()) << name.toStdString();
  }
  ~Program() {
    process_.kill();
    process_.waitForFinished();
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  QByteArray output() {
    output_ += process_.readAll();
    return output_;
  }

 private:
  QProcess process_;
  QByteArray output_;
};

QByteArray run(const QString& name, const QStringList& arguments) {
  QProcess process;
  process.start(name, arguments);
  waitWithQt([&] { return process.state() == QProcess::NotRunning; });
  return process.readAllStandardOutput().trimmed();
}

struct Drawn : CanvasDelegate {
  void draw(Painter& painter, Size bounds) override {
    ++draws;
    painter.fill({0, 0, bounds.width, bounds.height}, {.red = 1}, 20);
  }
  void mouseDown(const MouseEvent& event) override { downs.push_back(event); }
  void mouseDragged(const MouseEvent& event) override { dragged = event.point; }
  void mouseUp(const MouseEvent& event) override { up = event.point; }
  std::optional<std::string> hitTest(Point point) override {
    if (!tests) return std::nullopt;
    return point.x < 50 ? "button" : "";
  }
  bool keyDown(const KeyEvent& event) override {
    keys.push_back(event.code);
    return true;
  }
  bool performKeyEquivalent(const KeyEvent&) override { return ++equivalents > 0; }

  int draws = 0;
  std::vector<MouseEvent> downs;
  std::optional<Point> dragged, up;
  std::vector<KeyCode> keys;
  int equivalents = 0;
  bool tests = false;
};

class Panels : public testing::TestWithParam<bool> {
 protected:
  Panels() {
    if (GetParam()) {
      compositor_ = std::make_unique<Program>("picom", QStringList{"--backend", "xrender"});
      EXPECT_TRUE(waitWithQt(isComposited));
    }
    other_ = std::make_unique<Program>(
        "xev", QStringList{"-name", "other", "-geometry", "300x200+600+20", "-event", "keyboard"});
    EXPECT_TRUE(waitWithQt([] {
      // A window manager that has hardly started may leave the focus where it was.
      run("xdotool", {"search", "--name", "^other$", "windowactivate"});
      return activeTitle() == "other";
    }));
  }
  ~Panels() override {
    other_.reset();
    compositor_.reset();
    EXPECT_TRUE(waitWithQt([] { return !isComposited(); }));
  }

  static QByteArray activeTitle() { return run("xdotool", {"getactivewindow", "getwindowname"}); }
  static int pointY(double y) {
    return QGuiApplication::primaryScreen()->geometry().height() - 1 - static_cast<int>(y);
  }
  void move(Point point) {
    run("xdotool", {"mousemove", QString::number(point.x), QString::number(pointY(point.y))});
  }
  void click(Point point, int button = 1) {
    move(point);
    run("xdotool", {"click", QString::number(button)});
  }
  void key(const QString& name) { run("xdotool", {"key", name}); }
  // The colour that is seen there.
  QColor seen(Point point) {
    const QImage shot = QGuiApplication::primaryScreen()->grabWindow().toImage();
    return shot.pixelColor(static_cast<int>(point.x), pointY(point.y));
  }

  WindowDescription panel() {
    WindowDescription made;
    made.id = "panel";
    made.contentSize = {200, 100};
    made.titled = false;
    made.panel = true;
    made.level = WindowLevel::floating;
    made.everySpace = true;
    Canvas canvas{&canvas_, {}};
    canvas.views.push_back({"button", {10, 10, 60, 24}, {}, Button{.title = "Do", .flat = true}});
    canvas.views.push_back(
        {"text", {10, 50, 100, 40}, {}, TextArea{.text = "text", .editable = true}});
    made.views = {{"canvas", {0, 0, 200, 100}, {.width = true, .height = true}, canvas}};
    made.pressed = [this](const std::string& id) { pressed_ += id + ","; };
    made.moved = [this] { ++moved_; };
    made.keyDown = [this](const KeyEvent& event) {
      keys_.push_back(event.code);
      return true;
    };
    return made;
  }
  std::unique_ptr<Window> shown(WindowDescription description) {
    auto window = windows_.create(std::move(description));
    window->setOrigin({100, 200});
    window->showWithoutActivating();
    EXPECT_TRUE(waitWithQt([this] { return seen({299, 250}) == QColor(Qt::red); }));
    moved_ = 0;
    return window;
  }

  QtMainQueue queue_;
  PictureCache pictures_{queue_};
  QtWindows windows_{pictures_};
  QtScreens screens_;
  QtKeyMonitors monitors_;
  Drawn canvas_;
  std::string pressed_;
  int moved_ = 0;
  std::vector<KeyCode> keys_;
  std::unique_ptr<Program> compositor_, other_;
};

INSTANTIATE_TEST_SUITE_P(, Panels, testing::Bool(),
                         [](const auto& test) { return test.param ? "Composited" : "Plain"; });

TEST_P(Panels, WorkWhileAnotherProgramIsActive) {
  const auto window = shown(panel());
  const Rect expected{100, 200, 200, 100};
  EXPECT_EQ(window->frame(), expected);
  EXPECT_EQ(windows_.visible().at(0).frame, expected);
  EXPECT_TRUE(waitWithQt([&] { return seen({150, 205}) == QColor(Qt::red); }));
  EXPECT_NE(seen({101, 201}), QColor(Qt::red)) << "the corner";
  EXPECT_NE(seen({99, 250}), QColor(Qt::red)) << "left of it";
  EXPECT_EQ(seen({299, 250}), QColor(Qt::red));

  click({120, 222});
  EXPECT_TRUE(waitWithQt([&] { return pressed_ == "button,"; }));
  EXPECT_EQ(activeTitle(), "other");
  click({270, 210});
  ASSERT_TRUE(waitWithQt([&] { return canvas_.up.has_value(); }));
  EXPECT_EQ(canvas_.downs.at(0).point, (Point{170, 11}));
  EXPECT_EQ(activeTitle(), "other");
  EXPECT_FALSE(window->isKey());
  key("Return");
  EXPECT_TRUE(keys_.empty());
  EXPECT_EQ(window->viewAt({120, 222}), "button");
  EXPECT_EQ(window->viewAt({290, 210}), "canvas");
  EXPECT_EQ(window->viewAt({50, 222}), "");

  // A text asks for the keys.
  click({120, 270});
  EXPECT_TRUE(waitWithQt([&] { return window->isKey(); }));
  key("x");
  EXPECT_TRUE(waitWithQt([&] { return window->text("text")->find('x') != std::string::npos; }));
}

TEST_P(Panels, AreMovedByTheUserAndByTheProgram) {
  const auto window = shown(panel());
  const int draws = canvas_.draws;
  window->setOrigin({300, 60}, true);
  EXPECT_EQ(window->frame(), (Rect{300, 60, 200, 100})) << "at once, however long it takes";
  EXPECT_EQ(moved_, 1);
  EXPECT_TRUE(waitWithQt([&] { return seen({480, 65}) == QColor(Qt::red); }));
  EXPECT_EQ(moved_, 1);
  EXPECT_EQ(canvas_.draws, draws) << "moving draws nothing anew";

  window->setContent({100, 80}, {{"canvas", {0, 0, 100, 80}, {}, Canvas{&canvas_, {}}}});
  EXPECT_EQ(window->frame(), (Rect{300, 60, 100, 80}));
  EXPECT_TRUE(waitWithQt([&] { return seen({405, 100}) != QColor(Qt::red); }));
  EXPECT_TRUE(waitWithQt([&] { return seen({395, 100}) == QColor(Qt::red); }));

  window->fadeOut();
  EXPECT_TRUE(waitWithQt([&] { return !window->isVisible(); }));
  window->showWithoutActivating();
  EXPECT_TRUE(waitWithQt([&] { return seen({395, 100}) == QColor(Qt::red); })) << "opaque again";
}

TEST_P(Panels, DragByTheirBackground) {
  WindowDescription described = panel();
  described.views = {
      {"picture", {0, 0, 200, 100}, {}, Container{.background = {.red = 1}, .views = {}}}};
  described.movableByBackground = true;
  auto window = windows_.create(std::move(described));
  window->setOrigin({100, 200});
  window->showWithoutActivating();
  ASSERT_TRUE(waitWithQt([&] { return seen({150, 250}) == QColor(Qt::red); }));
  moved_ = 0;
  move({150, 250});
  run("xdotool", {"mousedown", "1"});
  move({160, 240});
  move({250, 150});
  run("xdotool", {"mouseup", "1"});
  EXPECT_TRUE(waitWithQt([&] {
    return window->frame() == Rect{200, 100, 200, 100};
  })) << window->frame().x;
  EXPECT_TRUE(waitWithQt([&] { return seen({390, 110}) == QColor(Qt::red); }));
  EXPECT_GE(moved_, 1);
  EXPECT_EQ(activeTitle(), "other");
}

TEST_P(Panels, TheDelegateSaysWhoGetsTheMouse) {
  const auto window = shown(panel());
  canvas_.tests = true;
  click({160, 222});  // on the button, but too far to the right
  click({120, 222});
  EXPECT_TRUE(waitWithQt([&] { return pressed_ == "button,"; }));
  EXPECT_EQ(canvas_.downs.size(), 1u) << "the first of them";
  EXPECT_FALSE(window->isKey());
  canvas_.downs.clear();
  move({250, 250});
  run("xdotool", {"click", "--repeat", "2", "--delay", "20", "1"});
  ASSERT_TRUE(waitWithQt([&] { return canvas_.downs.size() == 2; }));
  EXPECT_EQ(canvas_.downs[1].clickCount, 2);
}

TEST_P(Panels, AnOverlayCoversAFullScreenWindowAndTakesEveryKey) {
  run("xdotool", {"search", "--name", "^other$", "windowactivate"});
  run("wmctrl", {"-r", "other", "-b", "add,fullscreen"});
  const QSize whole = QGuiApplication::primaryScreen()->size();
  WindowDescription described = panel();
  described.id = "cover";
  described.level = WindowLevel::overlay;
  described.panel = false;
  described.shadow = false;
  described.views = {
      {"canvas", {0, 0, 200, 100}, {.width = true, .height = true}, Canvas{&canvas_, {}}}};
  auto window = windows_.create(std::move(described));
  window->setFrame({0, 0, static_cast<double>(whole.width()), static_cast<double>(whole.height())});
  window->show();
  window->focus("canvas");
  ASSERT_TRUE(waitWithQt([&] { return seen({600, 300}) == QColor(Qt::red); }));
  EXPECT_TRUE(waitWithQt([&] { return window->isKey(); }));

  std::string leftOut;
  ASSERT_TRUE(waitWithQt([&] { return window->grabKeyboard(leftOut); }));
  EXPECT_FALSE(leftOut.empty());
  for (const char* name : {"Escape", "alt+F4", "super+d", "ctrl+w", "Tab"}) key(name);
  EXPECT_TRUE(
      waitWithQt([&] { return !canvas_.keys.empty() && canvas_.keys.back() == KeyCode::tab; }));
  EXPECT_EQ(canvas_.keys.front(), KeyCode::escape);
  EXPECT_EQ(canvas_.equivalents, 1) << "Control and W is no shortcut here";
  EXPECT_TRUE(window->isVisible());
  EXPECT_FALSE(other_->output().contains("Escape"));
  window->hide();
  ASSERT_TRUE(waitWithQt([&] { return activeTitle() == "other"; }));
  run("xdotool", {"search", "--name", "^other$", "windowfocus"});
  key("q");
  EXPECT_TRUE(waitWithQt([&] { return other_->output().contains("keysym 0x71"); }));
}

TEST_P(Panels, IgnoreTheMouseWhereTheyAreTold) {
  WindowDescription described = panel();
  described.ignoresMouse = true;
  const auto window = shown(std::move(described));
  click({120, 222});
  key("Return");
  EXPECT_TRUE(pressed_.empty());
  EXPECT_TRUE(canvas_.downs.empty());
}

TEST_P(Panels, KeysAreSeenElsewhereAndHere) {
  std::vector<KeyCode> global, local;
  int taken = 0;
  Task globals = monitors_.addGlobal([&](const KeyEvent& event) { global.push_back(event.code); });
  Task locals = monitors_.addLocal([&](const KeyEvent& event) {
    local.push_back(event.code);
    return event.code == KeyCode::upArrow && ++taken > 0;
  });
  key("Left");
  EXPECT_TRUE(waitWithQt([&] { return global == std::vector{KeyCode::leftArrow}; }));
  EXPECT_TRUE(local.empty());

  const auto window = shown(panel());
  window->show();
  // The server may still send to the other window what is typed just after we are told.
  ASSERT_TRUE(waitWithQt([&] { return window->isKey() && activeTitle() != "other"; }));
  window->focus("canvas");
  key("Up");
  key("Right");
  EXPECT_TRUE(waitWithQt([&] {
    return local == std::vector{KeyCode::upArrow, KeyCode::rightArrow};
  }));
  EXPECT_TRUE(waitWithQt([&] { return !canvas_.keys.empty(); }));
  EXPECT_EQ(canvas_.keys, std::vector{KeyCode::rightArrow});
  EXPECT_EQ(global.size(), 1u);
  locals.cancel();
  globals.cancel();
  key("Up");
  EXPECT_TRUE(waitWithQt([&] { return canvas_.keys.size() == 2; }));
  EXPECT_EQ(local.size(), 2u);
}

TEST_P(Panels, MenusOpenBelowTheirView) {
  const auto window = shown(panel());
  auto menu = std::make_shared<Menu>();
  menu->add("Rotate", "rotate");
  std::string chosen;
  window->popUpMenu("button", menu, [&](const MenuItem& item) { chosen = item.title; });
  const auto open = [this]() -> std::optional<Rect> {
    for (const WindowInfo& info : windows_.visible())
      if (info.id == "menu") return info.frame;
    return std::nullopt;
  };
  ASSERT_TRUE(waitWithQt([&] { return open().has_value(); }));
  EXPECT_EQ(open()->x, 110);
  EXPECT_EQ(open()->maxY(), 210);
  click({open()->midX(), open()->midY()});
  EXPECT_TRUE(waitWithQt([&] { return chosen == "Rotate"; }));
  EXPECT_EQ(activeTitle(), "other");
}

TEST_P(Panels, MayGoInTheMiddleOfTheirOwnCallbacks) {
  std::unique_ptr<Window> window;
  WindowDescription described = panel();
  described.pressed = [&](const std::string&) { window.reset(); };
  window = shown(std::move(described));
  EXPECT_TRUE(window->press("button"));
  EXPECT_FALSE(window);
  EXPECT_TRUE(windows_.visible().empty());
}

TEST_P(Panels, KnowScreenAndPointerFromTheLowerLeft) {
  const auto screens = screens_.all();
  ASSERT_EQ(screens.size(), 1u);
  EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1280, 1024}));
  move({123, 45});
  EXPECT_TRUE(waitWithQt([&] { return screens_.pointer() == Point{123, 45}; }));
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  const marbelot::PrivateServer server("1280x1024x24");
  qputenv("DISPLAY", QByteArray::fromStdString(server.display()));
  qputenv("QT_QPA_PLATFORM", "xcb");
  qputenv("NO_AT_BRIDGE", "1");
  const QApplication application(argc, argv);
  const marbelot::Program manager("openbox", {"--sm-disable"});
  marbelot::waitWithQt([] {
    return marbelot::run("xprop", {"-root", "_NET_SUPPORTING_WM_CHECK"}).contains('#');
  });
  return RUN_ALL_TESTS();
}
