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
// No compositor adds a shadow of its own to the window.
void refuseShadow(QWidget& window);

}  // namespace marbelot
