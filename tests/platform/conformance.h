// What the seam promises is asked of every backend that can run here, by the same cases: each
// backend has a file that puts it on a desktop of its own and instantiates the suite.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace marbelot {

// An item of the menu as the user sees it.
struct ShownItem {
  std::string title;  // "—" for a separator
  bool enabled = true;
  bool checked = false;
  bool submenu = false;
};

enum class Key { escape, commandReturn, commandW };

// A desktop with the backend on it, the user in front of it, and other programs: for links of the
// test scheme "Quarry", which is the default, two of the name "Chisel" and this one, and one for
// notes.
class TestDesktop {
 public:
  using Path = std::vector<std::string>;  // titles from the top

  virtual ~TestDesktop() = default;
  virtual Platform& platform() = 0;
  // Lets time pass until `done`, as long as a test can be expected to take; tells what `done` says.
  virtual bool wait(const std::function<bool()>& done) = 0;

  // Another program copies a text, and what another one pastes.
  virtual void copyElsewhere(const std::string& text) = 0;
  virtual std::string pasteElsewhere() = 0;

  // The open status menu: the level under the item of that path, whose submenus the user opens.
  virtual std::vector<ShownItem> shown(const Path& path) = 0;
  virtual void highlight(const Path& path) = 0;
  virtual void choose(const Path& path) = 0;  // which closes the menu
  virtual void closeMenu() = 0;

  // In the visible window of that id, of dialogs "alert".
  virtual void press(const std::string& window, const std::string& button) = 0;
  virtual void press(const std::string& window, Key key) = 0;
  virtual void type(const std::string& window, const std::string& text) = 0;  // at its end

  // The texts of the notices so far.
  virtual std::vector<std::string> notices() = 0;
  // The links and the paths of files that were handed to other programs.
  virtual std::vector<std::string> opened() = 0;
  virtual std::vector<std::string> revealed() = 0;
  virtual int notes() = 0;  // that were made
};

inline constexpr const char* testLink = "marbelot-test:x";

// Every backend's file adds its desktop, under its name.
using DesktopMakers = std::map<std::string, std::unique_ptr<TestDesktop> (*)()>;
inline DesktopMakers& desktops() {
  static DesktopMakers makers;
  return makers;
}
inline std::vector<std::string> desktopNames() {
  std::vector<std::string> names;
  for (const auto& [name, maker] : desktops()) names.push_back(name);
  return names;
}

class Conformance : public testing::TestWithParam<std::string> {
 protected:
  std::unique_ptr<TestDesktop> desktop = desktops().at(GetParam())();
  Platform& platform = desktop->platform();

  bool wait(const std::function<bool()>& done) { return desktop->wait(done); }
  // Lets what was going to happen happen.
  void settle(double seconds = 0.1) {
    bool passed = false;
    const Task pause = platform.queue.after(seconds, [&] { passed = true; });
    EXPECT_TRUE(wait([&] { return passed; }));
  }
  bool isVisible(const std::string& window) const {
    for (const WindowInfo& info : platform.windows.visible())
      if (info.id == window) return true;
    return false;
  }
  // What the user does once the window is there; from the event loop, because a dialog may hold up
  // everything else.
  [[nodiscard]] Task once(const std::string& window, std::function<void()> act) {
    const auto done = std::make_shared<bool>(false);
    return platform.queue.every(0.02, [this, window, act = std::move(act), done] {
      if (*done || !isVisible(window)) return;
      *done = true;
      act();
    });
  }
};

// Asks a suite that is derived from Conformance of each desktop.
#define MARBELOT_ON_EACH_DESKTOP(suite)                                \
  INSTANTIATE_TEST_SUITE_P(, suite, testing::ValuesIn(desktopNames()), \
                           [](const auto& test) { return test.param; })

}  // namespace marbelot
