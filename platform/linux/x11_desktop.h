// What windows agree with the window manager and the server, on Qt's own connection.
#pragma once

#include <QRegion>
#include <QScreen>
#include <QWidget>

namespace marbelot {

// Whether translucent windows are mixed with what is below.
bool isComposited();

// The screen without panels, in Qt's coordinates.
QRect usableArea(const QScreen& screen);

// On every desktop, and not among the windows that are cycled or listed. The window is not shown
// yet.
void putOnEveryDesktop(QWidget& window);
// The mouse reaches the window only there, in its own coordinates; all of it, when that is null.
void takeMouseOnlyIn(QWidget& window, const QRegion* region);
// So much of the window, on every side, is only its shadow, in points: nobody adds another one, and
// window managers go by the rest.
void setShadowMargin(QWidget& window, int margin);

}  // namespace marbelot
