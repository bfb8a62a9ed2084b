#include "platform/linux/keyboard_grab.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <string_view>

#include "platform/linux/x11_connection.h"

namespace marbelot {
namespace {

xcb_connection_t* connection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

// Whether the server is a guest of a Wayland compositor.
bool isGuest() {
  constexpr std::string_view extension = "XWAYLAND";
  const X11Reply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
      connection(), xcb_query_extension(connection(), extension.size(), extension.data()),
      nullptr));
  return (reply && reply->present) || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

}  // namespace

bool KeyboardGrab::take(QWidget& window, std::string& leftOut) {
  leftOut.clear();
  if (!connection() || !window.isVisible()) return false;
  // On the toolkit's own connection, so that it gets the keys.
  const X11Reply<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(
      connection(),
      xcb_grab_keyboard(connection(), 0, static_cast<xcb_window_t>(window.winId()),
                        XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
      nullptr));
  held_ = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
  if (held_) {
    leftOut = isGuest() ? "The desktop's own shortcuts and the power key still work"
                        : "Ctrl+Alt+F1 to F12 and the power key still work";
  }
  return held_;
}

void KeyboardGrab::release() {
  if (!std::exchange(held_, false) || !connection()) return;
  xcb_ungrab_keyboard(connection(), XCB_CURRENT_TIME);
  xcb_flush(connection());
}

}  // namespace marbelot
