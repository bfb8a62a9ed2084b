#include "platform/linux/screens.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <cmath>

#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

// Where the seam's origin is.
QPoint origin() {
  const QScreen* const main = QGuiApplication::primaryScreen();
  if (!main) return {};
  const QRect frame = main->geometry();
  return {frame.x(), frame.y() + frame.height()};
}

}  // namespace

Rect seamRect(const QRect& rect) {
  const QPoint zero = origin();
  return {static_cast<double>(rect.x() - zero.x()),
          static_cast<double>(zero.y() - rect.y() - rect.height()),
          static_cast<double>(rect.width()), static_cast<double>(rect.height())};
}

Point seamPoint(const QPoint& point) {
  // The point is a pixel, of which the lower left corner counts.
  const Rect rect = seamRect(QRect(point, QSize(1, 1)));
  return {rect.x, rect.y};
}

QRect qtRect(const Rect& rect) {
  const QPoint zero = origin();
  const int left = static_cast<int>(std::lround(rect.x)),
            bottom = static_cast<int>(std::lround(rect.y));
  const QSize size(static_cast<int>(std::lround(rect.width)),
                   static_cast<int>(std::lround(rect.height)));
  return {QPoint(zero.x() + left, zero.y() - bottom - size.height()), size};
}

QPoint qtPoint(Point point) {
  const QPoint zero = origin();
  return {zero.x() + static_cast<int>(std::floor(point.x)),
          zero.y() - 1 - static_cast<int>(std::floor(point.y))};
}

QtScreens::QtScreens() {
  for (QScreen* screen : QGuiApplication::screens()) watch(screen);
  connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
    watch(screen);
    tell();
  });
  connect(qGuiApp, &QGuiApplication::screenRemoved, this, &QtScreens::tell);
  connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &QtScreens::tell);
  told_ = all();
}

void QtScreens::watch(QScreen* screen) {
  connect(screen, &QScreen::geometryChanged, this, &QtScreens::tell);
  connect(screen, &QScreen::availableGeometryChanged, this, &QtScreens::tell);
  connect(screen, &QScreen::physicalDotsPerInchChanged, this, &QtScreens::tell);
}

// Once for everything that one change of the server's brings.
void QtScreens::tell() {
  if (std::exchange(telling_, true)) return;
  QTimer::singleShot(0, this, [this] {
    telling_ = false;
    std::vector<Screen> now = all();
    if (now == told_) return;
    told_ = std::move(now);
    std::erase_if(changed_, [](const auto& handler) { return handler.first.expired(); });
    for (const auto& [token, changed] : std::vector(changed_))
      if (token.lock()) changed();
  });
}

std::vector<Screen> QtScreens::all() const {
  std::vector<Screen> found;
  // The main one is the first.
  for (const QScreen* screen : QGuiApplication::screens()) {
    found.push_back(
        {seamRect(screen->geometry()), seamRect(usableArea(*screen)), screen->devicePixelRatio()});
  }
  return found;
}

Point QtScreens::pointer() const { return seamPoint(QCursor::pos()); }

Task QtScreens::onChange(std::function<void()> changed) {
  const auto token = std::make_shared<char>();
  changed_.emplace_back(token, std::move(changed));
  return Task(token);
}

}  // namespace marbelot
