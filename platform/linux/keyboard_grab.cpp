#include "platform/linux/keyboard_grab.h"

#include <xcb/xcb.h>

#include <QEvent>
#include <QGuiApplication>
#include <QTimer>
#include <string_view>
#include <utility>

#include "platform/linux/x11_connection.h"

namespace marbelot {
namespace {

xcb_connection_t* connection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

// Between looks at who has the focus; a compositor takes a moment to give it to a window.
constexpr int lookMilliseconds = 500;
constexpr int mostLooksWithout = 3;

// Whether the server is a guest of a Wayland compositor.
bool isGuest() {
  constexpr std::string_view extension = "XWAYLAND";
  const X11Reply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
      connection(), xcb_query_extension(connection(), extension.size(), extension.data()),
      nullptr));
  return (reply && reply->present) || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

}  // namespace

// A compositor hands its X server the keys, which are grabbed there, only while a window that it
// manages has the focus. This one stands below the one that has the grab.
class KeyHolder : public QWidget {
 public:
  KeyHolder(QWidget& window, std::function<void()> lost)
      : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
        window_(&window) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    setGeometry(window.geometry());
    connect(&looking_, &QTimer::timeout, this, [this, lost = std::move(lost)] { look(lost); });
    show();
    activateWindow();
    looking_.start(lookMilliseconds);
  }

 protected:
  bool event(QEvent* event) override {
    // The toolkit gives keys to the window with the focus, whoever has the grab.
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease ||
                       event->type() == QEvent::ShortcutOverride;
    if (isKey && window_) {
      QWidget* const inside = window_->focusWidget();
      return QCoreApplication::sendEvent(inside ? inside : window_.data(), event);
    }
    return QWidget::event(event);
  }

 private:
  // Under a grab the toolkit does not hear of it.
  void look(const std::function<void()>& lost) {
    const X11Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection(), xcb_get_input_focus(connection()), nullptr));
    if (reply && reply->focus == static_cast<xcb_window_t>(winId())) {
      without_ = 0;
      return;
    }
    activateWindow();
    if (++without_ < mostLooksWithout) return;
    looking_.stop();
    lost();
  }

  const QPointer<QWidget> window_;
  QTimer looking_;
  int without_ = 0;  // looks in a row
};

KeyboardGrab::KeyboardGrab() = default;
KeyboardGrab::~KeyboardGrab() { release(); }

bool KeyboardGrab::take(QWidget& window, std::string& leftOut, std::function<void()> lost) {
  leftOut.clear();
  if (!connection()) leftOut = "that takes an X server, or XWayland";
  if (!connection() || !window.isVisible()) return false;
  // On the toolkit's own connection, so that it gets the keys.
  const X11Reply<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(
      connection(),
      xcb_grab_keyboard(connection(), 0, static_cast<xcb_window_t>(window.winId()),
                        XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
      nullptr));
  held_ = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
  if (held_) {
    const bool guest = isGuest();
    leftOut = guest ? "The desktop's own shortcuts and the power key still work"
                    : "Ctrl+Alt+F1 to F12 and the power key still work";
    if (guest) holder_ = std::make_unique<KeyHolder>(window, std::move(lost));
  }
  return held_;
}

void KeyboardGrab::release() {
  // It may be telling that it has lost the keys.
  if (holder_) {
    holder_->hide();
    holder_.release()->deleteLater();
  }
  if (!std::exchange(held_, false) || !connection()) return;
  xcb_ungrab_keyboard(connection(), XCB_CURRENT_TIME);
  xcb_flush(connection());
}

}  // namespace marbelot
