#include "keyboard/keyboard_cleaning.h"

#include <utility>

namespace marbelot {
namespace {

constexpr int escapesNeeded = 3;
constexpr double resetSeconds = 2;
constexpr double labelHeight = 180;
constexpr const char* viewId = "blockView";
constexpr const char* labelId = "blockLabel";
constexpr const char* leftOutId = "leftOut";

Rect unionOfScreens(const std::vector<Screen>& screens) {
  Rect all;
  for (const Screen& screen : screens) all = all.unionWith(screen.frame);
  return all;
}

}  // namespace

void KeyboardBlockView::draw(Painter& painter, Size bounds) {
  painter.fill({0, 0, bounds.width, bounds.height}, Color::black(0.88));
}

bool KeyboardBlockView::keyDown(const KeyEvent& key) {
  // A key that is held down is one press.
  if (key.code == KeyCode::escape && !key.isRepeat) onEsc();
  return true;
}

KeyboardCleaning::KeyboardCleaning(Platform& platform, Shell& shell, ActionTable& actions)
    : platform_(platform), shell_(shell) {
  actions.add("toggleKeyboardBlock", [this](const MenuItem&) { toggleKeyboardBlock(); });
  blockView.onEsc = [this] { escapePressed(); };
}

void KeyboardCleaning::toggleKeyboardBlock() { keyboardBlocked ? end() : start(); }

std::vector<View> KeyboardCleaning::views(const Rect& all) {
  const auto label = [](const char* id, const Rect& frame, Font font, double alpha) {
    Label content;
    content.font = font;
    content.color = Color::white(alpha);
    content.alignment = Alignment::centre;
    content.multiline = true;
    return View{id, frame, {.width = true, .bottomMargin = true, .topMargin = true}, content};
  };
  Canvas canvas{&blockView, {}};
  canvas.views.push_back(label(labelId,
                               {0, all.height / 2 - labelHeight / 2, all.width, labelHeight},
                               {.size = 30, .weight = Font::Weight::semibold}, 1));
  canvas.views.push_back(label(
      leftOutId, {0, all.height / 2 - labelHeight, all.width, labelHeight / 2}, {.size = 15}, 0.8));
  std::vector<View> result;
  result.push_back(
      {viewId, {0, 0, all.width, all.height}, {.width = true, .height = true}, std::move(canvas)});
  return result;
}

// Without a frame, but it takes the keys all the same.
WindowDescription KeyboardCleaning::keyboardBlockWindow(const Rect& all) {
  WindowDescription window;
  window.id = "cleaning";
  window.title = "Keyboard cleaning";
  window.contentSize = all.size();
  window.views = views(all);
  window.titled = false;
  window.level = WindowLevel::overlay;
  window.everySpace = true;
  window.shadow = false;
  window.closed = [this] {
    if (!keyboardBlocked) return;
    end();
    shell_.notify("The keyboard works again: the desktop gave its keys to another program");
  };
  return window;
}

void KeyboardCleaning::start() {
  const Rect all = unionOfScreens(platform_.screens.all());
  blockWindow = platform_.windows.create(keyboardBlockWindow(all));
  blockWindow->setFrame(all);
  blockWindow->show();
  blockWindow->focus(viewId);
  if (!blockWindow->grabKeyboard(leftOut_)) {
    blockWindow.reset();
    shell_.notify("The keyboard can't be disabled: " +
                  (leftOut_.empty() ? "another program holds it" : leftOut_));
    return;
  }
  keyboardBlocked = true;
  escCount = 0;
  updateLabel();
  screens_ = platform_.screens.onChange([this] { coverScreens(); });
  shell_.rebuildMenu();
}

void KeyboardCleaning::coverScreens() {
  const Rect all = unionOfScreens(platform_.screens.all());
  if (all.isEmpty() || !blockWindow) return;
  blockWindow->setContent(all.size(), views(all));
  blockWindow->setFrame(all);
  blockWindow->focus(viewId);
  updateLabel();
}

void KeyboardCleaning::escapePressed() {
  if (!keyboardBlocked) return;
  if (++escCount >= escapesNeeded) return end();
  updateLabel();
  escResetWork = platform_.queue.after(resetSeconds, [this] {
    escCount = 0;
    updateLabel();
  });
}

void KeyboardCleaning::end() {
  escResetWork.cancel();
  screens_.cancel();
  if (blockWindow) {
    blockWindow->hide();
    // It may be telling of the key that ends it.
    closing_ = platform_.queue.after(
        0,
        [window = std::shared_ptr<Window>(std::move(blockWindow))]() mutable { window.reset(); });
  }
  keyboardBlocked = false;
  escCount = 0;
  shell_.rebuildMenu();
}

void KeyboardCleaning::updateLabel() {
  if (!blockWindow) return;
  blockWindow->setText(labelId, share("⌨️  Keyboard disabled — safe to clean\n\n"
                                      "Press Esc three times to re-enable   (" +
                                      std::to_string(escCount) + "/3)"));
  blockWindow->setText(leftOutId, share(leftOut_));
}

}  // namespace marbelot
