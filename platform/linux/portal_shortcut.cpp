#include "platform/linux/portal_shortcut.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QGuiApplication>
#include <algorithm>
#include <utility>

namespace marbelot {
namespace {

constexpr const char* shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* menuId = "menu";

struct Shortcut {
  QString id;
  QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Shortcut& shortcut) {
  argument.beginStructure();
  argument << shortcut.id << shortcut.properties;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Shortcut& shortcut) {
  argument.beginStructure();
  argument >> shortcut.id >> shortcut.properties;
  argument.endStructure();
  return argument;  // NOLINT(bugprone-return-const-ref-from-parameter): Qt's own shape
}

QList<Shortcut> ourShortcuts() { return {{menuId, {{"description", "Open the Marbelot menu"}}}}; }

bool hasMenuShortcut(const QVariantMap& results) {
  const auto shortcuts = results.value("shortcuts").value<QDBusArgument>();
  if (shortcuts.currentSignature() != "a(sa{sv})") return false;
  const auto list = qdbus_cast<QList<Shortcut>>(shortcuts);
  return std::any_of(list.begin(), list.end(), [](const auto& one) { return one.id == menuId; });
}

// Desktops keep the user's choice under the program's name. It is to come before anything else that
// the portal is asked for, and portals that know the name by themselves refuse it.
void tellPortalOurName() {
  QDBusMessage call = QDBusMessage::createMethodCall(
      portalName, portalPath, "org.freedesktop.host.portal.Registry", "Register");
  call << QGuiApplication::desktopFileName() << QVariantMap();
  QDBusConnection::sessionBus().asyncCall(call);
}

}  // namespace

PortalShortcut::PortalShortcut(std::function<void()> pressed, std::function<void()> declined)
    : portal_(portalName, QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForOwnerChange),
      pressed_(std::move(pressed)),
      declined_(std::move(declined)) {
  qDBusRegisterMetaType<Shortcut>();
  qDBusRegisterMetaType<QList<Shortcut>>();
  qRegisterMetaType<QDBusObjectPath>();  // or a slot that takes one cannot be connected
  QDBusConnection::sessionBus().connect(
      portalName, portalPath, shortcutsInterface, "Activated", this,
      SLOT(activated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
  // A session ends with its portal, which some desktops start later than us, and start anew.
  connect(&portal_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString& before, const QString& now) {
            if (!before.isEmpty()) opening_.reset();
            // Who is asked already was started by that.
            if (!now.isEmpty() && !opening_) open();
          });
  open();
}

void PortalShortcut::open() {
  tellPortalOurName();
  // Always the same token: desktops know by it what was chosen before. KDE 5.27 takes shortcuts
  // only with the session: whoever binds them gets none, and the user its settings at each start.
  opening_.emplace(shortcutsInterface, "CreateSession", QVariantList(),
                   QVariantMap{{"session_handle_token", "marbelot"},
                               {"shortcuts", QVariant::fromValue(ourShortcuts())}},
                   [this](const PortalRequest::Answer& answer) {
                     answer.kind == PortalRequest::Answer::given ? opened(answer.results)
                                                                 : opening_.reset();
                   });
}

void PortalShortcut::opened(const QVariantMap& results) {
  session_ = results.value("session_handle").toString();
  if (hasMenuShortcut(results)) return;
  binding_.emplace(shortcutsInterface, "BindShortcuts",
                   QVariantList{QVariant::fromValue(QDBusObjectPath(session_)),
                                QVariant::fromValue(ourShortcuts()), QString()},
                   QVariantMap(), [this](const PortalRequest::Answer& answer) {
                     if (answer.kind != PortalRequest::Answer::givenUp) return;
                     portal_.removeWatchedService(portalName);
                     declined_();
                   });
}

void PortalShortcut::activated(const QDBusObjectPath& session, const QString& id, qulonglong,
                               const QVariantMap&) {
  if (session.path() == session_ && id == menuId) pressed_();
}

}  // namespace marbelot
