#include "platform/linux/pointer_catcher.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QThread>
#include <memory>
#include <utility>

#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

// Milliseconds. The window comes up under the pointer where X11 last heard of it; where it truly is
// follows as a movement, unless it is there.
constexpr int stillLimit = 250;
constexpr int settleTime = 40;
constexpr int nudgeTime = 100;  // after the window is drawn, which KWin has to know by then
constexpr int showLimit = 1000;
constexpr auto answerLimit = std::chrono::seconds(1);

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
  putOnEveryDesktop(*other);
  other->show();
}

}  // namespace

PointerCatcher::PointerCatcher()
    : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_QuitOnClose, false);
  setMouseTracking(true);
  wait_.setSingleShot(true);
  connect(&wait_, &QTimer::timeout, this,
          [this] { open_(place_.value_or(QCursor::pos()), usable_); });
}

void PointerCatcher::place(const WaylandPointerPlace& found) {
  // The X server's points may be finer than the compositor's.
  const QRect all = QGuiApplication::primaryScreen()->virtualGeometry();
  const double scale = static_cast<double>(all.width()) / found.desktop.width;
  const auto point = [&](int x, int y) {
    return all.topLeft() + (QPointF(x, y) * scale).toPoint();
  };
  const auto& box = found.usable;
  place_ = point(found.x, found.y);
  usable_ = QRect(point(box.x, box.y), (QSizeF(box.width, box.height) * scale).toSize());
  // What Plasma's panels cover only the X server is told.
  if (const QScreen* screen = QGuiApplication::screenAt(*place_)) usable_ &= usableArea(*screen);
}

void PointerCatcher::catchAll(std::function<void(QPoint, const QRect&)> open,
                              std::function<void()> close) {
  open_ = std::move(open);
  close_ = std::move(close);
  // Over a bar, which no window is ever above, only the compositor knows the pointer. It may take
  // its time on a busy machine.
  const auto found = std::make_shared<std::optional<WaylandPointerPlace>>();
  QThread* const asking = QThread::create([found] { *found = findWaylandPointer(answerLimit); });
  connect(asking, &QThread::finished, this, [this, found] {
    if (*found && (*found)->desktop.width > 0) place(**found);
    cover();
  });
  connect(asking, &QThread::finished, asking, &QObject::deleteLater);
  asking->start();
}

void PointerCatcher::cover() {
  setGeometry(QGuiApplication::primaryScreen()->virtualGeometry());
  putOnEveryDesktop(*this);  // or taskbars would list it
  show();
  activateWindow();
  wait_.start(showLimit);
}

bool PointerCatcher::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::Paint:
      if (wait_.isActive() && place_) {
        wait_.start(settleTime);
      } else if (wait_.isActive() && isKWin()) {
        QTimer::singleShot(nudgeTime, this, [this] { nudgeCompositor(*this); });
      }
      [[fallthrough]];
    case QEvent::Enter:
      if (wait_.isActive() && !place_) wait_.start(stillLimit);
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
