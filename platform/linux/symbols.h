// The system symbols, drawn here because no icon theme can be relied on. One family: lines of even
// width on a square of 16 units.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPainter>
#include <string>

namespace marbelot {

// For the tray: a light shape with a dark rim. Null for a name that is not known.
QIcon symbolIcon(const std::string& name);

// As large as fits into `rect`, in its middle, its lines on whole pixels of the screen. False,
// nothing drawn, for a name that is not known.
bool drawSymbol(QPainter& painter, const std::string& name, const QRectF& rect,
                const QColor& color);
bool hasSymbol(const std::string& name);

}  // namespace marbelot
