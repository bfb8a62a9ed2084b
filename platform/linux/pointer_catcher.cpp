#include "platform/linux/pointer_catcher.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <utility>

namespace marbelot {
namespace {

// The first event may still tell where the pointer was when X11 last heard of it; the next one comes
// at once.
constexpr int settleMilliseconds = 60;
constexpr int limitMilliseconds = 400;

}  // namespace

PointerCatcher::PointerCatcher()
    : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_QuitOnClose, false);
  setMouseTracking(true);
  wait_.setSingleShot(true);
  connect(&wait_, &QTimer::timeout, this, [this] { open_(); });
}

bool PointerCatcher::isNeeded() {
  return QGuiApplication::platformName() == "xcb" && qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

void PointerCatcher::catchAll(std::function<void()> open, std::function<void()> close) {
  open_ = std::move(open);
  close_ = std::move(close);
  setGeometry(QGuiApplication::primaryScreen()->virtualGeometry());
  show();
  activateWindow();
  wait_.start(limitMilliseconds);
}

bool PointerCatcher::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::Enter:
    case QEvent::MouseMove:
      if (wait_.isActive()) wait_.start(settleMilliseconds);
      break;
    case QEvent::WindowDeactivate:
      if (!wait_.isActive() && isVisible()) close_();
      break;
    case QEvent::Close:
      wait_.stop();
      close_();
      break;
    default:
      break;
  }
  return QWidget::event(event);
}

}  // namespace marbelot
