#include <algorithm>

#include "platform/files.h"
#include "platform/memory/memory_platform.h"
#include "platform/text.h"
#include "tests/platform/conformance.h"
#include "tests/support/png.h"

namespace marbelot {
namespace {

class MemoryDesktop : public TestDesktop {
 public:
  MemoryDesktop() {
    memory_.pasteboard.announces = true;
    memory_.workspace.applications["marbelot-test"] = {{"q", "Quarry", {}, true},
                                                       {"c", "Chisel", {}, false}};
  }
  Platform& platform() override { return memory_.platform; }
  bool wait(const std::function<bool()>& done) override {
    if (const auto noted = std::exchange(memory_.workspace.noted, nullptr)) noted(std::nullopt);
    for (int i = 0; i < 100 && !done(); ++i) {
      memory_.folderEvents.fire();
      takePictures();
      memory_.queue.advance(0.01);
    }
    return done();
  }

  void copyElsewhere(const std::string& text) override { memory_.pasteboard.copyElsewhere(text); }
  std::string pasteElsewhere() override { return *memory_.pasteboard.contents().text; }

  std::vector<ShownItem> shown(const Path& path) override {
    std::vector<ShownItem> items;
    for (const MenuItem& item : memory_.statusItem.shown.level(path)) {
      if (item.hidden) continue;
      items.push_back({item.separator ? "—" : text::shownTitle(item.title), item.enabled,
                       item.checked, item.submenu != nullptr});
    }
    return items;
  }
  void highlight(const Path& path) override {
    const MenuItem highlighted = item(path);
    memory_.statusItem.delegate->menuWillHighlightItem(&highlighted);
  }
  void choose(const Path& path) override {
    const MenuItem chosen = item(path);
    closeMenu();
    memory_.statusItem.delegate->menuItemChosen(chosen);
  }
  void closeMenu() override {
    if (!memory_.statusItem.shown.isOpen()) return;
    memory_.statusItem.shown.close();
    memory_.statusItem.delegate->menuDidClose();
  }

  void press(const std::string& window, const std::string& button) override {
    if (window == "alert") {
      const auto& buttons = memory_.dialogs.shown.back().buttons;
      const auto at = std::find(buttons.begin(), buttons.end(), button);
      memory_.dialogs.answer(static_cast<std::size_t>(at - buttons.begin()),
                             std::exchange(typed_, {}));
      return;
    }
    for (const WindowInfo& info : memory_.windows.visible()) {
      for (const ButtonInfo& each : info.buttons)
        if (info.id == window && each.title == button) info.window->press(each.id);
    }
  }
  void press(const std::string& window, Key key) override {
    if (window == "alert") {
      const auto& buttons = memory_.dialogs.shown.back().buttons;
      press(window, key == Key::escape ? buttons.back() : buttons.front());
      return;
    }
    memory::MemoryWindow& pressed = *memory_.windows.find(window);
    if (key == Key::commandReturn) {
      for (const View& view : pressed.description.views) {
        if (const auto* described = std::get_if<Button>(&view.content);
            described && described->defaultKey)
          pressed.press(view.id);
      }
    } else if (key == Key::commandW || pressed.description.escapeCloses) {
      pressed.close();
    }
  }
  void type(const std::string& window, const std::string& text) override {
    if (window == "alert") {
      typed_ += text;
      return;
    }
    memory::MemoryWindow& into = *memory_.windows.find(window);
    into.setText(into.focused, share(*into.text(into.focused) + text));
  }

  std::vector<std::string> notices() override {
    std::vector<std::string> texts;
    for (const memory::Notice& notice : memory_.notices.posted) texts.push_back(notice.text);
    return texts;
  }
  std::vector<std::string> opened() override { return memory_.workspace.opened; }
  std::vector<std::string> revealed() override { return memory_.workspace.revealed; }
  int notes() override { return static_cast<int>(memory_.workspace.notes.size()); }

 private:
  // Those that wait for no user.
  void takePictures() {
    const auto captures = memory_.screenCapture.captures;
    for (const auto& capture : captures) {
      if (capture.arguments.front() == "-x" && !files::exists(capture.path))
        capture.end(png(static_cast<unsigned>(memory_.screens.screens.front().frame.width)));
    }
  }

  MenuItem item(Path path) {
    const std::string title = path.back();
    path.pop_back();
    for (const MenuItem& item : memory_.statusItem.shown.level(path))
      if (item.title == title) return item;
    ADD_FAILURE() << "no item " << title;
    return {};
  }

  memory::MemoryPlatform memory_;
  std::string typed_;
};

std::unique_ptr<TestDesktop> makeDesktop() { return std::make_unique<MemoryDesktop>(); }

const bool added = desktops().emplace("Memory", &makeDesktop).second;

}  // namespace
}  // namespace marbelot
