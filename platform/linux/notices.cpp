#include "platform/linux/notices.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace marbelot {
namespace {

constexpr int showMilliseconds = 4000;
// A service that does not answer must not hold the notices back for long.
constexpr int answerMilliseconds = 1000;

QDBusMessage notificationCall(const QString& method) {
  return QDBusMessage::createMethodCall("org.freedesktop.Notifications",
                                        "/org/freedesktop/Notifications",
                                        "org.freedesktop.Notifications", method);
}

}  // namespace

void DesktopNotices::post(const std::string& title, const std::string& text) {
  const Waiting notice{QString::fromStdString(title), QString::fromStdString(text)};
  bus_.whenKnown([this, notice] { post(notice); });
}

void DesktopNotices::post(const Waiting& notice) {
  if (!bus_.connected()) return;
  if (markup_ == Markup::understood || markup_ == Markup::plain) {
    send(notice);
    return;
  }
  waiting_.push_back(notice);
  if (markup_ == Markup::unknown) askForMarkup();
}

// Where the body is markup, a file name with "<" in it must be escaped; elsewhere it must not.
void DesktopNotices::askForMarkup() {
  markup_ = Markup::asking;
  auto* asked =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(
                                      notificationCall("GetCapabilities"), answerMilliseconds),
                                  this);
  connect(asked, &QDBusPendingCallWatcher::finished, this, [this, asked] {
    const QDBusPendingReply<QStringList> reply = *asked;
    const bool understood = !reply.isError() && reply.value().contains("body-markup");
    // No answer now says nothing about the service that may be there next time.
    markup_ = reply.isError() ? Markup::unknown : understood ? Markup::understood : Markup::plain;
    for (const Waiting& notice : std::exchange(waiting_, {})) send(notice);
    asked->deleteLater();
  });
}

void DesktopNotices::send(const Waiting& notice) {
  QDBusMessage call = notificationCall("Notify");
  const QString body = markup_ == Markup::understood ? notice.text.toHtmlEscaped() : notice.text;
  call << QString("Marbelot") << 0U << QString("org.marbelot.Marbelot") << notice.title << body
       << QStringList() << QVariantMap() << showMilliseconds;
  QDBusConnection::sessionBus().asyncCall(call);
}

}  // namespace marbelot
