// Notifications through org.freedesktop.Notifications.
#pragma once

#include <QObject>
#include <QString>
#include <deque>

#include "platform/platform.h"

namespace marbelot {

class DesktopNotices : public QObject, public Notices {
 public:
  void post(const std::string& title, const std::string& text) override;

 private:
  enum class Markup { unknown, asking, understood, plain };
  struct Waiting {
    QString title;
    QString text;
  };
  void askForMarkup();
  void send(const Waiting& notice);

  Markup markup_ = Markup::unknown;
  std::deque<Waiting> waiting_;
};

}  // namespace marbelot
