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
#include <utility>

#include "platform/linux/screens.h"
#include "platform/linux/symbols.h"
#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

constexpr const char* watcherService = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
// A panel that starts with the session may be later than we are.
constexpr int lookMilliseconds = 250;
constexpr int looksAtOnce = 12;

// A tray of the older protocol tells the root window when it takes its selection. Qt has asked for
// what is sent there.
bool isSentToRoot(const xcb_generic_event_t& event) {
  if ((event.response_type & 0x7F) != XCB_CLIENT_MESSAGE) return false;
  const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(toolkitConnection())).data;
  return reinterpret_cast<const xcb_client_message_event_t&>(event).window == screen->root;
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
          &TrayStatusItem::lookForAWhile);
  bus.connect(watcherService, watcherPath, watcherService, "StatusNotifierHostRegistered", this,
              SLOT(lookForHost()));
  qApp->installNativeEventFilter(this);
  looking_ = true;
  lookForAWhile();
}

bool TrayStatusItem::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType == "xcb_generic_event_t" &&
      isSentToRoot(*static_cast<const xcb_generic_event_t*>(message)))
    QMetaObject::invokeMethod(this, &TrayStatusItem::lookForHost, Qt::QueuedConnection);
  return false;
}

// A tray may need a moment until it takes items. After that, one that comes is announced.
void TrayStatusItem::lookForAWhile() {
  if (tray_) return;
  looks_ = 0;
  look_.start(lookMilliseconds);
  if (noHost_) lookForHost();
}

TrayStatusItem::~TrayStatusItem() = default;

std::optional<Rect> TrayStatusItem::openMenuFrame() const {
  const QRect frame = view_.openFrame();
  return frame.isNull() ? std::nullopt : std::optional(seamRect(frame));
}

void TrayStatusItem::setNoHostHandler(std::function<void()> handler) {
  noHost_ = std::move(handler);
  if (looking_) lookForHost();
}

// The watcher may be there before the panel that it watches for; Qt asks the same when the icon is
// made, and never again. Desktops with both kinds of tray, as KDE and GNOME, get the newer one's.
void TrayStatusItem::lookForHost() {
  if (tray_ || asking_) return;
  if (!bus_.connected()) return lookForTray();
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
    // From a watcher that hangs Qt would wait for the same answer, and the program with it.
    if (reply.error().type() == QDBusError::NoReply) return;
    if (reply.isError() || !reply.value().variant().toBool()) return lookForTray();
    showIcon();
    // For hosts that draw the menu themselves, as on GNOME; others ask us to.
    tray_->setContextMenu(view_.exported());
  });
}

// By the older protocol, a tray owns the selection of its screen.
void TrayStatusItem::lookForTray() {
  if (isOwned("_NET_SYSTEM_TRAY_S0")) return showIcon();
  if (++looks_ != looksAtOnce) return;
  look_.stop();
  if (const auto told = std::exchange(noHost_, {})) told();
}

void TrayStatusItem::showIcon() {
  if (tray_) return;
  look_.stop();
  qApp->removeNativeEventFilter(this);
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
