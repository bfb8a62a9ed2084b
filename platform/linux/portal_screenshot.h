// A picture of the screen by the desktop's portal, where the compositor shows it to nobody else.
#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QVariantMap>
#include <functional>
#include <string>

namespace marbelot {

// One request. Main thread only; there is a session bus.
class PortalScreenshot : public QObject {
  Q_OBJECT

 public:
  struct Answer {
    std::string file;     // made for us; empty when there is no picture
    std::string problem;  // one line for the user when there is something to do about it
  };

  // `interactive`: the desktop lets the user choose what to take. `answered` is called once, not
  // before this returns, and may destroy the request.
  PortalScreenshot(bool interactive, std::function<void(const Answer&)> answered);
  // One that is not answered yet is withdrawn.
  ~PortalScreenshot() override;

 private:
  Q_SLOT void responded(uint response, const QVariantMap& results);
  void refused(const QDBusMessage& error);
  void tell(const Answer& answer);

  QString handle_;
  std::function<void(const Answer&)> answered_;  // null once it has been called
};

}  // namespace marbelot
