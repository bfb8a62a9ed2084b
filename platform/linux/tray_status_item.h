// The status item in the desktop's tray.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QIcon>
#include <QSystemTrayIcon>
#include <QTimer>

#include "platform/linux/menu_view.h"
#include "platform/linux/session_bus.h"
#include "platform/status_item.h"

class QDBusServiceWatcher;

namespace marbelot {

// A desktop shows status items by one of two protocols, and Qt settles on one of them when the
// first icon is made. So the icon is made only when a host of either kind is there.
class TrayStatusItem : public QObject, public StatusItem, private QAbstractNativeEventFilter {
  Q_OBJECT

 public:
  explicit TrayStatusItem(SessionBus& bus);
  ~TrayStatusItem() override;

  bool setSymbol(const std::string& name, const std::string& description) override;
  void setTitle(const std::string& title) override;
  void setMenu(std::shared_ptr<Menu> menu, MenuDelegate* delegate) override;
  void menuChanged() override { view_.sync(); }
  void popUpMenu() override { view_.popUpAtPointer(); }
  std::optional<Rect> openMenuFrame() const override;
  void setNoHostHandler(std::function<void()> handler) override;

 private Q_SLOTS:
  void lookForHost();

 private:
  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
  void startLooking();
  void lookForAWhile();
  void lookForTray();
  void showIcon();

  SessionBus& bus_;
  MenuView view_;
  QIcon icon_;
  QString description_;
  std::unique_ptr<QSystemTrayIcon> tray_;
  std::unique_ptr<QDBusServiceWatcher> hostWatcher_;
  QTimer look_;
  int looks_ = 0;  // that found no host, since they began
  bool asking_ = false;
  bool looking_ = false;  // not before it is known whether there is a bus
  std::function<void()> noHost_;
};

}  // namespace marbelot
