#include "platform/linux/key_monitors.h"

#include <QApplication>
#include <QKeyEvent>
#include <algorithm>

#include "platform/linux/drawing.h"
#include "platform/linux/global_keys.h"

namespace marbelot {
namespace {

// Has the last handle's end tell us, so that nothing listens for nobody.
template <class Ended>
std::shared_ptr<void> token(QObject& owner, Ended ended) {
  return {new char, [guard = QPointer<QObject>(&owner), ended](void* memory) {
            delete static_cast<char*>(memory);
            if (guard) QMetaObject::invokeMethod(guard, ended, Qt::QueuedConnection);
          }};
}

template <class Monitors>
void dropEnded(Monitors& monitors) {
  std::erase_if(monitors, [](const auto& monitor) { return monitor.token.expired(); });
}

}  // namespace

QtKeyMonitors::QtKeyMonitors() = default;
QtKeyMonitors::~QtKeyMonitors() = default;

Task QtKeyMonitors::addLocal(std::function<bool(const KeyEvent&)> pressed) {
  auto made = token(*this, [this] {
    dropEnded(local_);
    if (local_.empty()) qApp->removeEventFilter(this);
  });
  if (local_.empty()) qApp->installEventFilter(this);
  local_.push_back({made, std::move(pressed)});
  return Task(std::move(made));
}

Task QtKeyMonitors::addGlobal(std::function<void(const KeyEvent&)> pressed) {
  auto made = token(*this, [this] {
    dropEnded(global_);
    if (global_.empty()) keys_.reset();
  });
  global_.push_back({made, std::move(pressed)});
  if (!keys_)
    keys_ = std::make_unique<GlobalKeys>([this](const KeyEvent& event) { tellGlobal(event); });
  return Task(std::move(made));
}

bool QtKeyMonitors::tellLocal(const KeyEvent& event) {
  bool taken = false;
  for (const auto& monitor : std::vector(local_))
    if (!taken && monitor.token.lock()) taken = monitor.pressed(event);
  return taken;
}

void QtKeyMonitors::tellGlobal(const KeyEvent& event) {
  // Those that come to our own windows are the local monitors'.
  if (QGuiApplication::focusWindow() || QApplication::activePopupWidget()) return;
  for (const auto& monitor : std::vector(global_))
    if (monitor.token.lock()) monitor.pressed(event);
}

// Shortcuts are asked before the key goes to the window, and then the key itself comes.
bool QtKeyMonitors::eventFilter(QObject* watched, QEvent* event) {
  const bool asking = event->type() == QEvent::ShortcutOverride;
  if (!asking && !(event->type() == QEvent::KeyPress && watched->isWindowType())) return false;
  const auto* const key = static_cast<QKeyEvent*>(event);
  if (isModifier(*key)) return false;
  if (!asked_ || asked_->key != key->key() || asked_->timestamp != key->timestamp())
    asked_ = {key->key(), key->timestamp(), tellLocal(keyEvent(*key))};
  const bool taken = asked_->taken;
  if (!asking) asked_.reset();
  if (taken) event->accept();
  return taken;
}

}  // namespace marbelot
