#include "capture/countdown.h"

#include <string>
#include <utility>

namespace marbelot {
namespace {

// In which the window is gone from the screen.
constexpr double vanishingSeconds = 0.12;

constexpr const char* countdownLabel = "countdownLabel";

// Square, dark and rounded, with one large digit.
WindowDescription description() {
  constexpr double side = 160;
  View label;
  label.id = countdownLabel;
  label.frame = {0, 22, side, 116};
  label.content = Label{.font = {.size = 96, .weight = Font::Weight::bold},
                        .color = Color::white(),
                        .alignment = Alignment::centre};
  View ground;
  ground.id = "countdown";
  ground.frame = {0, 0, side, side};
  ground.content =
      Container{.background = Color::black(0.65), .cornerRadius = 28, .views = {std::move(label)}};

  WindowDescription window;
  window.id = "countdown";
  window.contentSize = {side, side};
  window.titled = false;
  window.level = WindowLevel::overlay;
  window.panel = true;
  window.everySpace = true;
  window.besideFullScreen = false;
  window.shadow = false;
  window.ignoresMouse = true;
  window.views = {std::move(ground)};
  return window;
}

}  // namespace

void Countdown::run(int from, std::function<void()> action) {
  action_ = std::move(action);
  show(from);
}

void Countdown::cancel() {
  next_.cancel();
  hide();
}

void Countdown::hide() {
  if (countdownWindow_) countdownWindow_->hide();
}

void Countdown::show(int value) {
  if (!countdownWindow_) countdownWindow_ = platform_.windows.create(description());
  countdownWindow_->setText(countdownLabel, share(std::to_string(value)));
  countdownWindow_->center();
  countdownWindow_->showWithoutActivating();
  next_ = platform_.queue.after(1, [this, value] {
    if (value >= 2) return show(value - 1);
    hide();
    next_ = platform_.queue.after(vanishingSeconds, [this] { std::exchange(action_, {})(); });
  });
}

}  // namespace marbelot
