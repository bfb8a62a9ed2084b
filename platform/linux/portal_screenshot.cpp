#include "platform/linux/portal_screenshot.h"

#include <QUrl>
#include <utility>

namespace marbelot {
namespace {

// The package that has this desktop's portal, on Debian and its relatives.
std::string portalPackage() {
  const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP").toUpper();
  if (desktop.contains("GNOME")) return "xdg-desktop-portal-gnome";
  if (desktop.contains("KDE")) return "xdg-desktop-portal-kde";
  return "xdg-desktop-portal";
}

std::string problemOf(const QString& error) {
  const bool isThere = error != "org.freedesktop.DBus.Error.ServiceUnknown" &&
                       !error.startsWith("org.freedesktop.DBus.Error.Unknown");
  return isThere
             ? "The desktop's portal cannot take pictures of the screen right now"
             : "Taking pictures of the screen needs the desktop's portal: install the package “" +
                   portalPackage() + "”.";
}

PortalScreenshot::Answer screenshotOf(const PortalRequest::Answer& answer) {
  if (answer.kind == PortalRequest::Answer::givenUp) return {};
  if (!answer.error.isEmpty()) return {{}, problemOf(answer.error)};
  const QUrl file(answer.results.value("uri").toString());
  if (answer.kind != PortalRequest::Answer::given || !file.isLocalFile()) {
    return {{},
            "The desktop took no picture of the screen. Its privacy settings say which programs "
            "may ask for one."};
  }
  return {file.toLocalFile().toStdString(), {}};
}

}  // namespace

PortalScreenshot::PortalScreenshot(bool interactive, std::function<void(const Answer&)> answered)
    : request_("org.freedesktop.portal.Screenshot", "Screenshot", {QString()},
               {{"interactive", interactive}},
               [answered = std::move(answered)](const PortalRequest::Answer& answer) {
                 answered(screenshotOf(answer));
               }) {}

}  // namespace marbelot
