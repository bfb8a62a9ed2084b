#include "platform/linux/symbols.h"

#include <QPainter>
#include <QPainterPath>

namespace marbelot {
namespace {

// Shapes on a square of 22 units, y down, as tray icons are commonly designed.

QPainterPath cameraOnRectangle() {
  QPainterPath shape;
  // The rectangle behind shows as a frame above and to the left of the camera.
  QPainterPath frame;
  frame.addRoundedRect(QRectF(1, 2, 16, 12), 2.5, 2.5);
  QPainterPath hole;
  hole.addRoundedRect(QRectF(2.8, 3.8, 16, 14), 1.5, 1.5);
  QPainterPath gap;
  gap.addRect(QRectF(4.2, 5.6, 18, 16));
  shape.addPath(frame.subtracted(hole).subtracted(gap));
  QPainterPath body;
  body.addRoundedRect(QRectF(5.2, 8.4, 16, 11.6), 2.4, 2.4);
  QPainterPath finder;
  finder.addRoundedRect(QRectF(10, 6.4, 6.4, 4), 1.4, 1.4);
  QPainterPath lens;
  lens.addEllipse(QPointF(13.2, 14.2), 3.6, 3.6);
  QPainterPath pupil;
  pupil.addEllipse(QPointF(13.2, 14.2), 1.9, 1.9);
  shape.addPath(body.united(finder).subtracted(lens).united(pupil));
  return shape;
}

QPainterPath checkmarkCircle() {
  QPainterPath circle;
  circle.addEllipse(QPointF(11, 11), 9.5, 9.5);
  QPainterPath stroke;
  stroke.moveTo(6.4, 11.6);
  stroke.lineTo(9.8, 15);
  stroke.lineTo(15.8, 7.6);
  QPainterPathStroker pen;
  pen.setWidth(2.2);
  pen.setCapStyle(Qt::RoundCap);
  pen.setJoinStyle(Qt::RoundJoin);
  return circle.subtracted(pen.createStroke(stroke));
}

}  // namespace

QIcon symbolIcon(const std::string& name) {
  QPainterPath shape;
  if (name == "camera.on.rectangle.fill") {
    shape = cameraOnRectangle();
  } else if (name == "checkmark.circle.fill") {
    shape = checkmarkCircle();
  } else {
    return {};
  }
  QIcon icon;
  for (const int pixels : {16, 22, 32, 44}) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / 22.0, pixels / 22.0);
    // A panel does not say whether it is light or dark: a light shape with a dark rim reads on
    // both.
    painter.setPen(QPen(QColor(0, 0, 0, 150), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(shape);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(245, 245, 245));
    painter.drawPath(shape);
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace marbelot
