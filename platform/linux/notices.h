// Notifications through org.freedesktop.Notifications.
#pragma once

#include <QObject>
#include <QString>
#include <deque>

#include "platform/linux/session_bus.h"
#include "platform/platform.h"

namespace marbelot {

class DesktopNotices : public QObject, public Notices {
 public:
  explicit DesktopNotices(SessionBus& bus) : bus_(bus) {}
  void post(const std::string& title, const std::string& text) override;

 private:
  enum class Markup { unknown, asking, understood, plain };
  struct Waiting {
    QString title;
    QString text;
  };
  void post(const Waiting& notice);
  void askForMarkup();
  void send(const Waiting& notice);

  SessionBus& bus_;
  Markup markup_ = Markup::unknown;
  std::deque<Waiting> waiting_;
};

}  // namespace marbelot
