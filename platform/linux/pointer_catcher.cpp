#include "platform/linux/pointer_catcher.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <utility>

namespace marbelot {
namespace {

// Milliseconds. The window comes up under the pointer where X11 last heard of it; where it truly is
// follows as a movement, unless it is there.
constexpr int stillLimit = 250;
constexpr int settleTime = 40;
constexpr int nudgeTime = 100;  // after the window is drawn, which KWin has to know by then
constexpr int showLimit = 1000;

bool isKWin() { return qgetenv("XDG_CURRENT_DESKTOP").contains("KDE"); }

// KWin finds out what is below a still pointer only when yet another window comes up.
void nudgeCompositor(QWidget& catcher) {
  if (!catcher.children().isEmpty()) return;
  auto* other =
      new QWidget(&catcher, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
  other->setAttribute(Qt::WA_TranslucentBackground);
  other->setAttribute(Qt::WA_ShowWithoutActivating);
  other->setAttribute(Qt::WA_QuitOnClose, false);
  other->setGeometry(0, 0, 1, 1);
  other->show();
}

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
  wait_.start(showLimit);
}

bool PointerCatcher::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::Paint:
      if (wait_.isActive() && isKWin())
        QTimer::singleShot(nudgeTime, this, [this] { nudgeCompositor(*this); });
      [[fallthrough]];
    case QEvent::Enter:
      if (wait_.isActive()) wait_.start(stillLimit);
      break;
    case QEvent::MouseMove:
      if (wait_.isActive()) wait_.start(settleTime);
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
