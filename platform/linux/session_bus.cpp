#include "platform/linux/session_bus.h"

#include <QDBusConnection>
#include <utility>

namespace marbelot {

SessionBus::SessionBus(MainQueue& queue) {
  connecting_ = queue.inBackground([] { return QDBusConnection::sessionBus().isConnected(); },
                                   [this](bool connected) {
                                     known_ = true;
                                     connected_ = connected;
                                     for (const auto& work : std::exchange(waiting_, {})) work();
                                   });
}

void SessionBus::whenKnown(std::function<void()> work) {
  if (known_) {
    work();
  } else {
    waiting_.push_back(std::move(work));
  }
}

}  // namespace marbelot
