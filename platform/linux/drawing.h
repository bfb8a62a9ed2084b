// The seam's colours, fonts and keys as Qt's.
#pragma once

#include <QColor>
#include <QFont>
#include <QKeyEvent>
#include <QPalette>

#include "platform/canvas.h"

namespace marbelot {

QColor qtColor(const Color& color, const QPalette& palette);
// The desktop's own font of that kind; points are pixels here.
QFont qtFont(const Font& font);
double textWidth(const std::string& text, const Font& font);
Qt::Alignment qtAlignment(Alignment alignment);
// Whether it is a key that only changes what others mean; nobody is told of these.
bool isModifier(const QKeyEvent& event);
KeyEvent keyEvent(const QKeyEvent& event);

}  // namespace marbelot
