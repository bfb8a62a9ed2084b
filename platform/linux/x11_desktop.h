// What windows agree with the window manager and the server, and which of them there is.
#pragma once

#include <QRegion>
#include <QScreen>
#include <QWidget>
#include <string_view>

struct xcb_connection_t;

namespace marbelot {

// Whether a Wayland compositor has the screen. Where there is an X server, too, it is its guest.
bool isWayland();

// Qt's own, on which our windows are; null where they are the compositor's. Main thread only, as
// all that follows.
xcb_connection_t* toolkitConnection();

// False as well without an X server.
bool isOwned(std::string_view selection);

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
