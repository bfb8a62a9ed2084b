#include "hud/hud_placement.h"

#include <algorithm>
#include <utility>

namespace marbelot {

HUDPlacement::HUDPlacement(Platform& platform, ActionTable& actions) : platform_(platform) {
  actions.add("cycleHUDPlacement", [this](const MenuItem&) { cycleHUDPlacement(); });
  screens_ = platform_.screens.onChange([this] { screensChanged(); });
}

Rect HUDPlacement::area() const {
  return screenArea(platform_.screens.all(), platform_.screens.pointer());
}

Point HUDPlacement::origin(Size panel) const {
  return originForPlacement(panel, placement(), area());
}

Task HUDPlacement::follow(Window& window, std::function<void()> moved) {
  const int id = ++lastId_;
  open_[id] = {&window, std::move(moved)};
  updateMonitors();
  return Task(std::shared_ptr<void>(nullptr, [this, id, alive = std::weak_ptr(alive_)](void*) {
    if (alive.expired()) return;
    open_.erase(id);
    updateMonitors();
  }));
}

void HUDPlacement::cycleHUDPlacement() { store(nextCorner(placement()), false); }

bool HUDPlacement::isMenuOpen() const {
  const auto windows = platform_.windows.visible();
  return std::any_of(windows.begin(), windows.end(),
                     [](const WindowInfo& window) { return window.id == "menu"; });
}

bool HUDPlacement::onArrow(const KeyEvent& key) {
  const auto next = placementAfterKey(placement(), key.code);
  // In a menu they choose an item.
  if (!next || open_.empty() || isMenuOpen()) return false;
  store(*next, true);
  return true;
}

void HUDPlacement::store(int placement, bool animated) {
  hudPopupPlacement = placement;
  placeAll(animated);
}

void HUDPlacement::placeAll(bool animated) {
  for (const auto& [id, panel] : std::map(open_)) {
    if (!open_.contains(id)) continue;
    panel.window->setOrigin(origin(panel.window->frame().size()), animated);
    if (panel.moved) panel.moved();
  }
}

void HUDPlacement::screensChanged() {
  const auto screens = platform_.screens.all();
  for (const auto& [id, panel] : std::map(open_)) {
    const Rect frame = panel.window->frame();
    const bool seen = std::any_of(screens.begin(), screens.end(), [&](const Screen& screen) {
      return screen.visibleFrame.intersection(frame) == frame;
    });
    if (seen || !open_.contains(id)) continue;
    panel.window->setOrigin(origin(frame.size()));
    if (panel.moved) panel.moved();
  }
}

void HUDPlacement::installLocalMonitor() {
  if (hudArrowLocalMonitor) return;
  hudArrowLocalMonitor = platform_.keyMonitors.addLocal([this](const KeyEvent& key) {
    // A text that the user edits meanwhile keeps its keys.
    const bool inPanel = std::any_of(open_.begin(), open_.end(),
                                     [](const auto& open) { return open.second.window->isKey(); });
    return onArrow(key) && inPanel;
  });
}

void HUDPlacement::updateMonitors() {
  if (open_.empty()) {
    hudArrowLocalMonitor.reset();
    hudArrowGlobalMonitor.reset();
    return;
  }
  installLocalMonitor();
  if (!hudArrowGlobalMonitor) {
    hudArrowGlobalMonitor =
        platform_.keyMonitors.addGlobal([this](const KeyEvent& key) { onArrow(key); });
  }
}

}  // namespace marbelot
