// What the desktop's portal is asked for, on behalf of the user.
#pragma once

#include <QObject>
#include <QVariantList>
#include <QVariantMap>
#include <functional>

class QDBusMessage;

namespace marbelot {

inline constexpr const char* portalName = "org.freedesktop.portal.Desktop";
inline constexpr const char* portalPath = "/org/freedesktop/portal/desktop";

// One request, which the portal answers whenever the user does. Main thread only; there is a
// session bus.
class PortalRequest : public QObject {
  Q_OBJECT

 public:
  struct Answer {
    enum Kind { given, givenUp, refused } kind = refused;
    QVariantMap results;
    QString error;  // the bus's name for it, when the portal took no request or ended before
  };

  // `arguments` are those before `options`. `answered` is called once, not before this returns, and
  // may destroy the request.
  PortalRequest(const char* interface, const char* method, QVariantList arguments,
                QVariantMap options, std::function<void(const Answer&)> answered);
  // One that is not answered yet is withdrawn.
  ~PortalRequest() override;

 private:
  Q_SLOT void responded(uint response, const QVariantMap& results);
  void tell(const Answer& answer);

  QString handle_;
  std::function<void(const Answer&)> answered_;  // null once it has been called
};

}  // namespace marbelot
