#include "platform/linux/portal_screenshot.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUrl>
#include <QUuid>
#include <utility>

namespace marbelot {
namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* requestInterface = "org.freedesktop.portal.Request";

// As the portal numbers its answers.
enum : uint { taken = 0, givenUp = 1 };

// The package that has this desktop's portal, on Debian and its relatives.
std::string portalPackage() {
  const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP").toUpper();
  if (desktop.contains("GNOME")) return "xdg-desktop-portal-gnome";
  if (desktop.contains("KDE")) return "xdg-desktop-portal-kde";
  return "xdg-desktop-portal";
}

}  // namespace

PortalScreenshot::PortalScreenshot(bool interactive, std::function<void(const Answer&)> answered)
    : answered_(std::move(answered)) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  const QString token = "marbelot" + QUuid::createUuid().toString(QUuid::Id128);
  // Known beforehand, so that no answer can come before we listen.
  handle_ =
      QString(portalPath) + "/request/" + bus.baseService().mid(1).replace('.', '_') + "/" + token;
  bus.connect({}, handle_, requestInterface, "Response", this, SLOT(responded(uint, QVariantMap)));
  QDBusMessage call = QDBusMessage::createMethodCall(
      portalName, portalPath, "org.freedesktop.portal.Screenshot", "Screenshot");
  const QVariantMap options{{"handle_token", token}, {"interactive", interactive}};
  call << QString() << options;
  auto* asked = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
  connect(asked, &QDBusPendingCallWatcher::finished, this, [this, asked] {
    asked->deleteLater();
    if (asked->isError()) refused(asked->reply());
  });
}

PortalScreenshot::~PortalScreenshot() {
  if (!answered_) return;
  QDBusConnection::sessionBus().asyncCall(
      QDBusMessage::createMethodCall(portalName, handle_, requestInterface, "Close"));
}

void PortalScreenshot::refused(const QDBusMessage& error) {
  const bool isThere = error.errorName() != "org.freedesktop.DBus.Error.ServiceUnknown" &&
                       !error.errorName().startsWith("org.freedesktop.DBus.Error.Unknown");
  tell({{},
        isThere
            ? "The desktop's portal cannot take pictures of the screen right now"
            : "Taking pictures of the screen needs the desktop's portal: install the package “" +
                  portalPackage() + "”."});
}

void PortalScreenshot::responded(uint response, const QVariantMap& results) {
  if (response == givenUp) return tell({});
  const QUrl file(results.value("uri").toString());
  if (response != taken || !file.isLocalFile()) {
    return tell({{},
                 "The desktop took no picture of the screen. Its privacy settings say which "
                 "programs may ask for one."});
  }
  tell({file.toLocalFile().toStdString(), {}});
}

void PortalScreenshot::tell(const Answer& answer) {
  if (const auto told = std::exchange(answered_, nullptr)) told(answer);
}

}  // namespace marbelot
