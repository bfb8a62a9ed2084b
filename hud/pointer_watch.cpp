#include "hud/pointer_watch.h"

namespace marbelot {
namespace {

constexpr double tickSeconds = 0.12;
constexpr double stayingSeconds = 0.4;
constexpr double nearby = 6;  // points

}  // namespace

void PointerWatch::start(const Window& window, std::optional<double> seconds) {
  stop();
  window_ = &window;
  wasOn_ = isOn(window, screens_);
  previewHUDWatch = queue_.every(tickSeconds, [this] { tick(); });
  if (seconds) previewHUDWork = queue_.after(*seconds, away_);
}

void PointerWatch::stop() {
  window_ = nullptr;
  held_ = false;
  previewHUDWork.cancel();
  previewHUDWatch.cancel();
}

void PointerWatch::hold() {
  held_ = true;
  previewHUDWork.cancel();
}

bool PointerWatch::isOn(const Window& window, const Screens& screens) {
  return window.frame().enlarged(nearby).contains(screens.pointer());
}

void PointerWatch::tick() {
  if (!window_ || !window_->isVisible()) return;
  const bool on = isOn(*window_, screens_);
  if (on && !wasOn_) held_ = false;
  wasOn_ = on;
  if (on && !held_) {
    previewHUDWork = queue_.after(stayingSeconds, [this] {
      const auto away = away_;
      stop();
      away();
    });
  }
}

}  // namespace marbelot
