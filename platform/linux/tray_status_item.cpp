#include "platform/linux/tray_status_item.h"

#include <xcb/xcb.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPainter>
#include <cstdlib>

#include "platform/linux/symbols.h"

namespace marbelot {
namespace {

constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
// A panel that starts with the session may be later than we are.
constexpr int quickLookMilliseconds = 250;
constexpr int quickLooks = 12;
// After that a tray of the older protocol is looked for now and then.
constexpr int slowLookMilliseconds = 10000;

// The older protocol: somebody owns the selection _NET_SYSTEM_TRAY_S<screen>.
bool trayPresent() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11) return false;
  xcb_connection_t* connection = x11->connection();
  constexpr std::string_view name = "_NET_SYSTEM_TRAY_S0";
  const auto atomCookie = xcb_intern_atom(connection, 1, name.size(), name.data());
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&free)> atom(
      xcb_intern_atom_reply(connection, atomCookie, nullptr), free);
  if (!atom || atom->atom == XCB_ATOM_NONE) return false;
  const auto ownerCookie = xcb_get_selection_owner(connection, atom->atom);
  const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&free)> owner(
      xcb_get_selection_owner_reply(connection, ownerCookie, nullptr), free);
  return owner && owner->owner != XCB_WINDOW_NONE;
}

}  // namespace

TrayStatusItem::TrayStatusItem(SessionBus& bus) : bus_(bus) {
  connect(&look_, &QTimer::timeout, this, &TrayStatusItem::lookForHost);
  look_.setTimerType(Qt::CoarseTimer);
  // Qt asks the bus for whatever kind of tray there is, and would wait for it.
  bus_.whenKnown([this] { startLooking(); });
}

void TrayStatusItem::startLooking() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  hostWatcher_ = std::make_unique<QDBusServiceWatcher>(watcherService, bus,
                                                       QDBusServiceWatcher::WatchForRegistration);
  connect(hostWatcher_.get(), &QDBusServiceWatcher::serviceRegistered, this,
          &TrayStatusItem::lookForHost);
  bus.connect(watcherService, watcherPath, watcherService, "StatusNotifierHostRegistered", this,
              SLOT(lookForHost()));
  look_.start(quickLookMilliseconds);
  looking_ = true;
  if (noHost_) lookForHost();
}

TrayStatusItem::~TrayStatusItem() = default;

void TrayStatusItem::setNoHostHandler(std::function<void()> handler) {
  noHost_ = std::move(handler);
  if (looking_) lookForHost();
}

void TrayStatusItem::lookForHost() {
  if (tray_) return;
  if (trayPresent()) {
    showIcon();
  } else if (!asking_) {
    askForNotifierHost();
  }
}

// The watcher may be there before the panel that it watches for; Qt asks the same when the icon is
// made, and never again.
void TrayStatusItem::askForNotifierHost() {
  asking_ = true;
  QDBusMessage get = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                    "org.freedesktop.DBus.Properties", "Get");
  get << QString(watcherService) << QString("IsStatusNotifierHostRegistered");
  get.setAutoStartService(false);
  auto* asked = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(get), this);
  connect(asked, &QDBusPendingCallWatcher::finished, this, [this, asked] {
    const QDBusPendingReply<QDBusVariant> reply = *asked;
    asked->deleteLater();
    asking_ = false;
    if (!reply.isError() && reply.value().variant().toBool()) {
      showIcon();
    } else if (++looks_ == quickLooks) {
      look_.setInterval(slowLookMilliseconds);
      if (noHost_) noHost_();
    }
  });
}

void TrayStatusItem::showIcon() {
  look_.stop();
  if (tray_) return;
  tray_ = std::make_unique<QSystemTrayIcon>();
  tray_->setIcon(icon_);
  tray_->setToolTip(description_);
  connect(tray_.get(), &QSystemTrayIcon::activated, this, [this] { view_.popUpAtPointer(); });
  tray_->show();
}

bool TrayStatusItem::setSymbol(const std::string& name, const std::string& description) {
  const QIcon icon = symbolIcon(name);
  if (icon.isNull()) return false;
  icon_ = icon;
  // A symbol without a description of its own stands for the program all the same.
  if (!description.empty()) description_ = QString::fromStdString(description);
  if (tray_) {
    tray_->setIcon(icon_);
    tray_->setToolTip(description_);
  }
  return true;
}

void TrayStatusItem::setTitle(const std::string& title) {
  // Trays show pictures only: the title becomes one.
  QPixmap pixmap(44, 44);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  QFont font;
  font.setPixelSize(34);
  painter.setFont(font);
  painter.drawText(pixmap.rect(), Qt::AlignCenter, QString::fromStdString(title));
  painter.end();
  icon_ = QIcon(pixmap);
  if (tray_) tray_->setIcon(icon_);
}

void TrayStatusItem::setMenu(std::shared_ptr<Menu> menu, MenuDelegate* delegate) {
  view_.setMenu(std::move(menu), delegate);
}

}  // namespace marbelot
