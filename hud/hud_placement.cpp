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

Point HUDPlacement::origin(Size size, const Window* panel) const {
  std::vector<Rect> taken;
  for (const auto& [id, window] : open_)
    if (window != panel && window->isVisible()) taken.push_back(window->frame());
  return beside(size, std::move(taken));
}

Point HUDPlacement::beside(Size size, std::vector<Rect> taken) const {
  if (const auto frame = standing ? standing() : std::nullopt) taken.push_back(*frame);
  return originBeside(size, placement(), area(), taken);
}

Task HUDPlacement::follow(Window& window) {
  const int id = ++lastId_;
  open_[id] = &window;
  updateMonitors();
  return Task(std::shared_ptr<void>(nullptr, [this, id, alive = std::weak_ptr(alive_)](void*) {
    if (alive.expired()) return;
    open_.erase(id);
    updateMonitors();
  }));
}

void HUDPlacement::cycleHUDPlacement() { store(nextCorner(placement()), false); }

// In a menu they choose an item; while the keyboard is being cleaned they mean nothing.
bool HUDPlacement::areKeysTaken() const {
  const auto windows = platform_.windows.visible();
  return std::any_of(windows.begin(), windows.end(), [](const WindowInfo& window) {
    return window.id == "menu" || window.id == "cleaning";
  });
}

bool HUDPlacement::onArrow(KeyCode key) {
  const auto next = placementAfterKey(placement(), key);
  if (!next || open_.empty() || areKeysTaken()) return false;
  store(*next, true);
  return true;
}

void HUDPlacement::store(int placement, bool animated) {
  hudPopupPlacement = placement;
  placeAll(animated);
}

// The one that has been open for the longest time gets the place, the others stand beside it.
void HUDPlacement::placeAll(bool animated) {
  std::vector<Rect> taken;
  for (const auto& [id, panel] : open_) {
    panel->setOrigin(beside(panel->frame().size(), taken), animated);
    taken.push_back(panel->frame());
  }
}

void HUDPlacement::screensChanged() {
  const auto screens = platform_.screens.all();
  for (const auto& [id, panel] : open_) {
    const Rect frame = panel->frame();
    const bool seen = std::any_of(screens.begin(), screens.end(), [&](const Screen& screen) {
      return screen.visibleFrame.intersection(frame) == frame;
    });
    if (!seen) panel->setOrigin(origin(frame.size(), panel));
  }
}

void HUDPlacement::installLocalMonitor() {
  if (hudArrowLocalMonitor) return;
  hudArrowLocalMonitor = platform_.keyMonitors.addLocal([this](const KeyEvent& key) {
    // A text that the user edits meanwhile keeps its keys.
    const bool inPanel = std::any_of(open_.begin(), open_.end(),
                                     [](const auto& open) { return open.second->isKey(); });
    return onArrow(key.code) && inPanel;
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
        platform_.keyMonitors.addGlobal([this](const KeyEvent& key) { onArrow(key.code); });
  }
}

}  // namespace marbelot
