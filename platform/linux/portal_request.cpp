#include "platform/linux/portal_request.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QUuid>
#include <utility>

namespace marbelot {
namespace {

constexpr const char* requestInterface = "org.freedesktop.portal.Request";

}  // namespace

PortalRequest::PortalRequest(const char* interface, const char* method, QVariantList arguments,
                             QVariantMap options, std::function<void(const Answer&)> answered)
    : answered_(std::move(answered)) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  const QString token = "marbelot" + QUuid::createUuid().toString(QUuid::Id128);
  // Known beforehand, so that no answer can come before we listen.
  handle_ =
      QString(portalPath) + "/request/" + bus.baseService().mid(1).replace('.', '_') + "/" + token;
  bus.connect({}, handle_, requestInterface, "Response", this, SLOT(responded(uint, QVariantMap)));
  const auto* there =
      new QDBusServiceWatcher(portalName, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
  // Queued, because who is told may give this up, and the watcher has another signal to send.
  connect(
      there, &QDBusServiceWatcher::serviceOwnerChanged, this,
      [this](const QString&, const QString& before) {
        if (!before.isEmpty())
          tell({Answer::refused, {}, QDBusError::errorString(QDBusError::NoReply)});
      },
      Qt::QueuedConnection);
  QDBusMessage call = QDBusMessage::createMethodCall(portalName, portalPath, interface, method);
  options["handle_token"] = token;
  call.setArguments(arguments << options);
  auto* asked = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
  connect(asked, &QDBusPendingCallWatcher::finished, this, [this, asked] {
    asked->deleteLater();
    if (asked->isError()) tell({Answer::refused, {}, asked->error().name()});
  });
}

PortalRequest::~PortalRequest() {
  if (!answered_) return;
  QDBusMessage close =
      QDBusMessage::createMethodCall(portalName, handle_, requestInterface, "Close");
  close.setAutoStartService(false);
  QDBusConnection::sessionBus().asyncCall(close);
}

void PortalRequest::responded(uint response, const QVariantMap& results) {
  constexpr Answer::Kind kinds[] = {Answer::given, Answer::givenUp};  // as the portal numbers them
  tell({response < std::size(kinds) ? kinds[response] : Answer::refused, results, {}});
}

void PortalRequest::tell(const Answer& answer) {
  if (const auto told = std::exchange(answered_, nullptr)) told(answer);
}

}  // namespace marbelot
