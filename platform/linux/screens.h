// Screens, and between the seam's coordinates and Qt's.
#pragma once

#include <QObject>
#include <QRect>
#include <QScreen>
#include <memory>
#include <vector>

#include "platform/screens.h"

namespace marbelot {

// Qt's coordinates have y growing down; the seam's begin at the lower left corner of the main
// screen.
Rect seamRect(const QRect& rect);
Point seamPoint(const QPoint& point);
// Whole points: Qt has no others for windows.
QRect qtRect(const Rect& rect);
QPoint qtPoint(Point point);

class QtScreens : public QObject, public Screens {
 public:
  QtScreens();
  std::vector<Screen> all() const override;
  Point pointer() const override;
  Task onChange(std::function<void()> changed) override;

 private:
  void watch(QScreen* screen);
  void tell();

  std::vector<Screen> told_;
  bool telling_ = false;
  std::vector<std::pair<std::weak_ptr<void>, std::function<void()>>> changed_;
};

}  // namespace marbelot
