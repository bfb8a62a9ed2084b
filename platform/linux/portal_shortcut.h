// A key that opens the menu whatever program has the keyboard, where the desktop's portal has such.
#pragma once

#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <optional>

#include "platform/linux/portal_request.h"

namespace marbelot {

// Main thread only; there is a session bus. Which key it is, the user decides in the desktop's own
// window. Nothing happens until there is such a portal.
class PortalShortcut : public QObject {
  Q_OBJECT

 public:
  // `declined`: the user wants none.
  PortalShortcut(std::function<void()> pressed, std::function<void()> declined);

 private:
  void open();
  Q_SLOT void activated(const QDBusObjectPath& session, const QString& id, qulonglong time,
                        const QVariantMap& options);
  void opened(const QVariantMap& results);

  QDBusServiceWatcher portal_;
  const std::function<void()> pressed_;
  const std::function<void()> declined_;
  QString session_;
  std::optional<PortalRequest> opening_;  // until the portal refuses, or ends
  std::optional<PortalRequest> binding_;
};

}  // namespace marbelot
