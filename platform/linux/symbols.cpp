#include "platform/linux/symbols.h"

#include <QPainterPath>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace marbelot {
namespace {

constexpr double grid = 16;  // units, y down
constexpr double lineUnits = 1.3;

// Shapes are written as in SVG paths, with absolute coordinates: M x y, L x y, C (a cubic curve),
// Z, and besides O cx cy r (a circle), R x y width height r (a rounded rectangle) and A cx cy r
// start sweep (an arc, in degrees, counterclockwise from three o'clock, joined to what was before).
struct Symbol {
  std::string_view name;
  std::string_view lines;
  std::string_view areas{};
  std::string_view cuts{};  // lines cut out of the areas
};

constexpr Symbol symbols[] = {
    {"arrow.2.squarepath",
     "M3.5 11.5 L3.5 4.5 L11.5 4.5 M9 2 L11.5 4.5 L9 7 "
     "M12.5 4.5 L12.5 11.5 L4.5 11.5 M7 9 L4.5 11.5 L7 14"},
    {"arrow.triangle.2.circlepath", "A8 8 5.5 165 -140 M2.7 9.4 A8 8 5.5 345 -140",
     "M14 8.6 L15.5 5 L10.9 6.6 Z M2 7.4 L0.5 11 L5.1 9.4 Z"},
    {"arrow.up.left.and.arrow.down.right",
     "M7.5 2.5 L2.5 2.5 L2.5 7.5 M2.5 2.5 L6.8 6.8 M8.5 13.5 L13.5 13.5 L13.5 8.5 M13.5 13.5 L9.2 "
     "9.2"},
    {"arrow.uturn.backward",
     "M6.5 1.5 L2.5 5.5 L6.5 9.5 M2.5 5.5 L9.5 5.5 A9.5 9.5 4 90 -180 L6 "
     "13.5"},
    {"camera.on.rectangle.fill", "M3.5 10.5 L1.5 10.5 L1.5 1.5 L12.5 1.5 L12.5 3",
     "R3.8 6 11.4 8.8 1.8 M7.4 6.2 L8.2 4.4 L10.8 4.4 L11.6 6.2 Z", "O9.5 10.4 2.1"},
    {"checkmark", "M2.5 8.5 L6.3 12.5 L13.5 3.5"},
    {"checkmark.circle.fill", "", "O8 8 7", "M4.6 8.4 L7.1 11 L11.5 5.5"},
    {"chevron.down", "M3.5 5.5 L8 10.5 L12.5 5.5"},
    {"circle.circle", "O8 8 6.5 O8 8 3"},
    {"crop", "M4.5 0.5 L4.5 11.5 L15.5 11.5 M0.5 4.5 L11.5 4.5 L11.5 15.5"},
    {"doc.on.doc", "R5.5 4.5 8 10 1.5 M5.5 11.5 L2.5 11.5 L2.5 1.5 L10.5 1.5 L10.5 4.5"},
    {"ellipsis.circle", "O8 8 6.5", "O4.9 8 0.95 O8 8 0.95 O11.1 8 0.95"},
    {"pin", "M5.5 1.5 L10.5 1.5 L10 6 L12.5 9.5 L3.5 9.5 L6 6 Z M8 9.5 L8 14.5"},
    {"pin.fill", "M5.5 1.5 L10.5 1.5 L10 6 L12.5 9.5 L3.5 9.5 L6 6 Z M8 9.5 L8 14.5",
     "M5.5 1.5 L10.5 1.5 L10 6 L12.5 9.5 L3.5 9.5 L6 6 Z"},
    {"safari", "O8 8 6.5 M11.5 4.5 L6.8 6.8 L4.5 11.5 L9.2 9.2 Z", "M11.5 4.5 L6.8 6.8 L9.2 9.2 Z"},
    {"square", "R2.5 2.5 11 11 2"},
    {"square.and.arrow.down",
     "M5.5 6.5 L2.5 6.5 L2.5 14.5 L13.5 14.5 L13.5 6.5 L10.5 6.5 M8 1 L8 10.5 M5 7.5 L8 10.5 L11 "
     "7.5"},
    {"square.on.square", "R5.5 5.5 9 9 1.5 M5.5 10.5 L1.5 10.5 L1.5 1.5 L10.5 1.5 L10.5 5.5"},
    {"text.append",
     "M1.5 2.5 L14.5 2.5 M1.5 6.5 L14.5 6.5 M1.5 10.5 L7.5 10.5 M11.5 8.5 L11.5 14.5 "
     "M8.5 11.5 L14.5 11.5"},
    {"text.viewfinder",
     "M1.5 4.5 L1.5 1.5 L4.5 1.5 M11.5 1.5 L14.5 1.5 L14.5 4.5 M14.5 11.5 L14.5 14.5 L11.5 14.5 "
     "M4.5 14.5 L1.5 14.5 L1.5 11.5 M4.5 5.5 L11.5 5.5 M4.5 8 L11.5 8 M4.5 10.5 L9.5 10.5"},
    {"wand.and.rays",
     "M1.5 14.5 L9.5 6.5 M10.5 1 L10.5 3 M15 5.5 L13 5.5 M13.7 2.3 L12.3 3.7 M13.7 8.7 L12.3 7.3 "
     "M7.3 2.3 L8.7 3.7 M10.5 8 L10.5 10 M6 5.5 L8 5.5"},
    {"xmark.circle.fill", "", "O8 8 7", "M5.3 5.3 L10.7 10.7 M10.7 5.3 L5.3 10.7"},
};

const Symbol* symbolNamed(std::string_view name) {
  const auto* const found =
      std::find_if(std::begin(symbols), std::end(symbols),
                   [name](const Symbol& symbol) { return symbol.name == name; });
  return found == std::end(symbols) ? nullptr : found;
}

// Makes paths of `pixels` by `pixels` pixels, with lines of `line` pixels that cover whole ones.
class Drawing {
 public:
  Drawing(double pixels, double line) : scale_(pixels / grid), line_(line) {}

  QPainterPath path(std::string_view text) const {
    QPainterPath made;
    while (const auto command = letter(text)) {
      switch (*command) {
        case 'M':
          made.moveTo(snapped(text));
          break;
        case 'L':
          made.lineTo(snapped(text));
          break;
        case 'C': {
          const QPointF first = point(text), second = point(text);
          made.cubicTo(first, second, point(text));
          break;
        }
        case 'O': {
          const QPointF centre = point(text);
          const double radius = length(text);
          made.addEllipse(centre, radius, radius);
          break;
        }
        case 'R': {
          const double x = number(text), y = number(text), width = number(text),
                       height = number(text);
          const double radius = length(text);
          made.addRoundedRect(QRectF(snap({x, y}), snap({x + width, y + height})), radius, radius);
          break;
        }
        case 'A': {
          const QPointF centre = point(text);
          const double radius = length(text), start = number(text);
          const QRectF circle(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
          if (made.isEmpty() || made.elementAt(made.elementCount() - 1).isMoveTo())
            made.arcMoveTo(circle, start);
          made.arcTo(circle, start, number(text));
          break;
        }
        default:
          made.closeSubpath();
      }
    }
    return made;
  }

  QPainterPath lines(std::string_view text) const {
    QPainterPathStroker pen;
    pen.setWidth(line_);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen.createStroke(path(text));
  }

 private:
  static void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  }
  static std::optional<char> letter(std::string_view& text) {
    skipBlanks(text);
    if (text.empty()) return std::nullopt;
    const char first = text.front();
    text.remove_prefix(1);
    return first;
  }
  static double number(std::string_view& text) {
    skipBlanks(text);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
  }
  double length(std::string_view& text) const { return number(text) * scale_; }
  QPointF point(std::string_view& text) const {
    const double x = length(text);
    return {x, length(text)};
  }
  QPointF snapped(std::string_view& text) const {
    const double x = number(text);
    return snap({x, number(text)});
  }
  // Lines of an odd width cover whole pixels when they run through their middle.
  QPointF snap(QPointF units) const {
    const double offset = static_cast<int>(line_) % 2 == 1 ? 0.5 : 0;
    const auto toPixel = [&](double unit) { return std::round(unit * scale_ - offset) + offset; };
    return {toPixel(units.x()), toPixel(units.y())};
  }

  const double scale_;
  const double line_;
};

QPainterPath outline(const Symbol& symbol, int pixels) {
  const double line = std::max(1., std::round(lineUnits * pixels / grid));
  const Drawing drawing(pixels, line);
  QPainterPath shape = drawing.path(symbol.areas).simplified();
  if (!symbol.cuts.empty()) shape = shape.subtracted(drawing.lines(symbol.cuts));
  return shape.united(drawing.lines(symbol.lines));
}

}  // namespace

bool hasSymbol(const std::string& name) { return symbolNamed(name) != nullptr; }

bool drawSymbol(QPainter& painter, const std::string& name, const QRectF& rect,
                const QColor& color) {
  const Symbol* const symbol = symbolNamed(name);
  if (!symbol) return false;
  const QTransform toDevice = painter.deviceTransform();
  const QRectF place = toDevice.mapRect(rect);
  const int pixels = static_cast<int>(std::min(place.width(), place.height()) + 0.01);
  if (pixels < 1) return true;
  const QPointF corner = place.center() - QPointF(pixels, pixels) / 2.;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const QPainterPath shape =
      outline(*symbol, pixels).translated(std::round(corner.x()), std::round(corner.y()));
  painter.fillPath(toDevice.inverted().map(shape), color);
  painter.restore();
  return true;
}

QIcon symbolIcon(const std::string& name) {
  const Symbol* const symbol = symbolNamed(name);
  if (!symbol) return {};
  QIcon icon;
  for (const int pixels : {16, 22, 32, 44}) {
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPainterPath shape = outline(*symbol, pixels);
    // A panel does not say whether it is light or dark: a light shape with a dark rim reads on
    // both.
    const double rim = 1.6 * pixels / 22;
    painter.setPen(QPen(QColor(0, 0, 0, 150), rim, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(shape);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(245, 245, 245));
    painter.drawPath(shape);
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace marbelot
