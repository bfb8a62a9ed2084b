#include "platform/linux/painter.h"

#include <QPainterPath>
#include <algorithm>

#include "platform/linux/drawing.h"
#include "platform/linux/symbols.h"

namespace marbelot {
namespace {

// Rounded as much as the rectangle allows.
double fittingRadius(const QRectF& rect, double radius) {
  return std::min({radius, rect.width() / 2, rect.height() / 2});
}

}  // namespace

QtPainter::QtPainter(QPainter& painter, QWidget& view, PictureCache& pictures)
    : painter_(painter), view_(view), pictures_(pictures) {
  painter_.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
}

QRectF QtPainter::flipped(const Rect& rect) const {
  return {rect.x, view_.height() - rect.maxY(), rect.width, rect.height};
}

QColor QtPainter::colour(const Color& color) const { return qtColor(color, view_.palette()); }

void QtPainter::fill(const Rect& rect, const Color& color, double cornerRadius) {
  const QRectF place = flipped(rect);
  const double radius = fittingRadius(place, cornerRadius);
  if (radius <= 0) {
    painter_.fillRect(place, colour(color));
    return;
  }
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(colour(color));
  painter_.drawRoundedRect(place, radius, radius);
}

void QtPainter::fillBetween(const Rect& outer, const Rect& inner, const Color& color) {
  QPainterPath both;
  both.setFillRule(Qt::OddEvenFill);
  both.addRect(flipped(outer));
  both.addRect(flipped(inner));
  painter_.fillPath(both, colour(color));
}

void QtPainter::stroke(const Rect& rect, const Color& color, double lineWidth,
                       double cornerRadius) {
  const QRectF place = flipped(rect);
  const double radius = std::max(0., fittingRadius(place, cornerRadius));
  painter_.setPen(QPen(colour(color), lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
  painter_.setBrush(Qt::NoBrush);
  painter_.drawRoundedRect(place, radius, radius);
}

void QtPainter::draw(const Image& image, const Rect& rect) {
  pictures_.draw(painter_, image, flipped(rect), view_);
}

void QtPainter::draw(const std::string& text, const Rect& rect, const Font& font,
                     const Color& color, Alignment alignment) {
  const QRectF place = flipped(rect);
  const QFont made = qtFont(font);
  painter_.setFont(made);
  painter_.setPen(colour(color));
  // As the text begins, whatever the direction of the desktop is.
  painter_.setLayoutDirection(Qt::LayoutDirectionAuto);
  const QString shown = QFontMetricsF(made).elidedText(QString::fromStdString(text), Qt::ElideRight,
                                                       place.width() + 0.5);
  painter_.drawText(place,
                    static_cast<int>(qtAlignment(alignment) | Qt::AlignVCenter) |
                        Qt::TextSingleLine | Qt::TextDontClip,
                    shown);
}

bool QtPainter::drawSymbol(const std::string& name, const Rect& rect, const Color& color) {
  return marbelot::drawSymbol(painter_, name, flipped(rect), colour(color));
}

void QtPainter::clip(const Rect& rect) { painter_.setClipRect(flipped(rect), Qt::IntersectClip); }

double QtPainter::width(const std::string& text, const Font& font) const {
  return textWidth(text, font);
}

}  // namespace marbelot
