#include <algorithm>

#include "tests/platform/conformance.h"

namespace marbelot {
namespace {

class WindowConformance : public Conformance {
 protected:
  std::unique_ptr<Window> make(bool escapeCloses = true) {
    WindowDescription window;
    window.id = "editor";
    window.title = "Edit";
    window.contentSize = {400, 200};
    window.resizable = true;
    window.escapeCloses = escapeCloses;
    TextArea text;
    text.editable = true;
    Button save;
    save.title = "Save";
    save.defaultKey = true;
    window.views = {{"text", {0, 44, 400, 156}, {}, text}, {"save", {300, 8, 90, 28}, {}, save}};
    window.pressed = [this](const std::string& view) { pressed += view + ","; };
    window.closed = [this] { ++closed; };
    return platform.windows.create(std::move(window));
  }
  void show(Window& window) {
    window.center();
    window.show();
    window.focus("text");
    ASSERT_TRUE(wait([&] { return isVisible("editor"); }));
  }

  std::string pressed;
  int closed = 0;
};

MARBELOT_ON_EACH_DESKTOP(WindowConformance);

TEST_P(WindowConformance, IsMadeHiddenListedWhileShownAndKeptWhenClosed) {
  auto window = make();
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(isVisible("editor"));
  window->setTitle("Edit text");
  show(*window);
  EXPECT_TRUE(window->isVisible());
  const auto windows = platform.windows.visible();
  const auto found = std::find_if(windows.begin(), windows.end(),
                                  [](const WindowInfo& info) { return info.id == "editor"; });
  ASSERT_NE(found, windows.end());
  EXPECT_EQ(found->title, "Edit text");
  EXPECT_GE(found->frame.width, 400);
  EXPECT_GE(found->frame.height, 200);
  for (const Key key : {Key::commandW, Key::escape}) {
    SCOPED_TRACE(key == Key::escape ? "Escape" : "Command and W");
    closed = 0;
    desktop->press("editor", key);
    EXPECT_TRUE(wait([&] { return closed == 1; }));
    EXPECT_FALSE(window->isVisible());
    show(*window);
  }
  window.reset();
  EXPECT_FALSE(isVisible("editor"));
  EXPECT_EQ(closed, 1) << "nobody closed it";
}

TEST_P(WindowConformance, EscapeClosesOnlyWhereItIsToldTo) {
  const auto window = make(false);
  show(*window);
  desktop->press("editor", Key::escape);
  settle();
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(closed, 0);
}

TEST_P(WindowConformance, TextsComeBackToTheByte) {
  const auto window = make();
  using namespace std::literals;
  const auto tricky =
      share("a\r\nb\rc\u2028d\u2029e\n\n\u00A0\U0001F44D\U0001F3FD e\u0301 \uFEFF\0z\t"s);
  window->setText("text", tricky);
  EXPECT_EQ(window->text("text"), tricky) << "the very text";
  show(*window);
  desktop->type("editor", "typed");
  EXPECT_EQ(*window->text("text"), *tricky + "typed");
  window->setText("text", share("another"));
  EXPECT_EQ(*window->text("text"), "another");
  EXPECT_EQ(*window->text("no such view"), "");
}

TEST_P(WindowConformance, ButtonsAreToldByTheirIds) {
  const auto window = make();
  show(*window);
  desktop->press("editor", "Save");
  EXPECT_TRUE(wait([&] { return pressed == "save,"; })) << pressed;
  desktop->press("editor", Key::commandReturn);
  EXPECT_TRUE(wait([&] { return pressed == "save,save,"; })) << pressed;
  EXPECT_EQ(closed, 0);
}

class DialogConformance : public Conformance {
 protected:
  static Alert question(const std::string& id) {
    Alert alert;
    alert.id = id;
    alert.message = "New canned response";
    alert.informative = "Enter text to save.";
    alert.buttons = {"Add", "Cancel"};
    TextArea text;
    text.editable = true;
    text.bordered = true;
    alert.accessory = {{"text", {0, 0, 300, 80}, {}, text}};
    return alert;
  }
  void present(const Alert& alert, const std::function<void()>& user) {
    answers.clear();
    platform.dialogs.present(alert,
                             [this](const AlertAnswer& answer) { answers.push_back(answer); });
    EXPECT_TRUE(answers.empty()) << "whoever asks goes on first";
    acting = once("alert", user);
    EXPECT_TRUE(wait([&] { return !answers.empty(); }));
    EXPECT_FALSE(isVisible("alert"));
    settle();
    ASSERT_EQ(answers.size(), 1U);
  }

  std::vector<AlertAnswer> answers;
  Task acting;
};

MARBELOT_ON_EACH_DESKTOP(DialogConformance);

TEST_P(DialogConformance, TellTheButtonAndTheText) {
  present(question("canned"), [&] {
    desktop->type("alert", "Thank you");
    desktop->press("alert", "Add");
  });
  EXPECT_EQ(answers[0].button, 0U);
  EXPECT_EQ(answers[0].text, "Thank you");
  present(question("canned"), [&] { desktop->press("alert", Key::escape); });
  EXPECT_EQ(answers[0].button, 1U) << "the last one";
  EXPECT_EQ(answers[0].text, "") << "a new one starts empty";
  present(question("canned"), [&] {
    desktop->type("alert", "quick");
    desktop->press("alert", Key::commandReturn);
  });
  EXPECT_EQ(answers[0].button, 0U);
  EXPECT_EQ(answers[0].text, "quick");
  Alert plain = question("");
  plain.accessory.clear();
  plain.buttons = {"OK"};
  present(plain, [&] { desktop->press("alert", Key::escape); });
  EXPECT_EQ(answers[0].button, 0U);
}

TEST_P(DialogConformance, AskOnceWhileTheyAreOpenAndTheProgramGoesOn) {
  int again = 0, ticks = 0;
  const Task ticking = platform.queue.every(0.01, [&] { ++ticks; });
  present(question("access"), [&] {
    platform.dialogs.present(question("access"), [&](const AlertAnswer&) { ++again; });
    int alerts = 0;
    for (const WindowInfo& info : platform.windows.visible()) alerts += info.id == "alert";
    EXPECT_EQ(alerts, 1);
    const int before = ticks;
    static Task answering;
    answering = platform.queue.every(0.01, [this, before, &ticks] {
      if (ticks < before + 3) return;
      answering.cancel();
      desktop->press("alert", "Cancel");
    });
  });
  EXPECT_EQ(again, 0);
}

}  // namespace
}  // namespace marbelot
