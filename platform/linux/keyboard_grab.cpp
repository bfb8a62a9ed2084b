#include "platform/linux/keyboard_grab.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/wayland_keys.h"
#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

// Between looks at who has the focus; a compositor takes a moment to give it to a window.
constexpr int lookMilliseconds = 500;
constexpr int mostLooksWithout = 3;
// For a compositor's answers: when the cleaning begins, and while the program is to go on.
constexpr auto answerLimit = std::chrono::seconds(2);
constexpr auto secondAnswerLimit = std::chrono::milliseconds(250);

// Whether the server is a guest of a Wayland compositor.
bool isGuest() {
  constexpr std::string_view extension = "XWAYLAND";
  const X11Reply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
      toolkitConnection(),
      xcb_query_extension(toolkitConnection(), extension.size(), extension.data()), nullptr));
  return (reply && reply->present) || isWayland();
}

struct Keyboard {
  int holders = 0;
  std::vector<std::function<void()>> waiting;  // until nobody holds it
};

// There is one. Main thread only.
Keyboard& keyboard() {
  static Keyboard one;
  return one;
}

constexpr const char* leftBySystem = "Ctrl+Alt+F1 to F12 and the power key still work";
constexpr const char* leftByDesktop = "The desktop's own shortcuts and the power key still work";

// As if the window had the focus. Escape is the one key whose name it gets.
void press(QWidget& window, std::uint32_t symbol) {
  const int name = symbol == XKB_KEY_Escape ? Qt::Key_Escape : Qt::Key_unknown;
  QKeyEvent event(QEvent::KeyPress, name, Qt::NoModifier);
  QWidget* const inside = window.focusWidget();
  QCoreApplication::sendEvent(inside ? inside : &window, &event);
}

// `lost` is called once nobody had the focus for several looks in a row: under a grab the toolkit
// does not hear of it.
std::unique_ptr<QTimer> watchFocus(std::function<bool()> hasFocus, std::function<void()> lost) {
  auto watching = std::make_unique<QTimer>();
  QTimer* const timer = watching.get();
  const auto look = [timer, hasFocus = std::move(hasFocus), lost = std::move(lost),
                     without = 0]() mutable {
    without = hasFocus() ? 0 : without + 1;
    if (without < mostLooksWithout) return;
    timer->stop();
    lost();
  };
  QObject::connect(timer, &QTimer::timeout, timer, look);
  timer->start(lookMilliseconds);
  return watching;
}

}  // namespace

// A compositor hands its X server the keys, which are grabbed there, only while a window that it
// manages has the focus. This one stands below the one that has the grab.
class KeyHolder : public QWidget {
 public:
  explicit KeyHolder(QWidget& window)
      : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
        window_(&window) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    setGeometry(window.geometry());
    show();
    activateWindow();
  }

  // Asks for the focus where it has not got it.
  bool takeFocus() {
    const X11Reply<xcb_get_input_focus_reply_t> reply(xcb_get_input_focus_reply(
        toolkitConnection(), xcb_get_input_focus(toolkitConnection()), nullptr));
    if (reply && reply->focus == static_cast<xcb_window_t>(winId())) return true;
    activateWindow();
    return false;
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
  const QPointer<QWidget> window_;
};

KeyboardGrab::KeyboardGrab() = default;
KeyboardGrab::~KeyboardGrab() { release(); }

// Its own surface gets more than any window of the toolkit's, and it does so through XWayland, too.
bool KeyboardGrab::takeFromCompositor(QWidget& window, std::chrono::milliseconds limit) {
  arriving_.reset();
  keys_.reset();
  keys_ = WaylandKeys::take(limit);
  if (!keys_) return false;
  arriving_ = std::make_unique<QSocketNotifier>(keys_->descriptor(), QSocketNotifier::Read);
  QObject::connect(arriving_.get(), &QSocketNotifier::activated, &window, [this, &window] {
    const auto pressed = keys_->receive();
    if (!pressed) return arriving_->setEnabled(false);
    // One of them may end it all.
    const QPointer<QWidget> to(&window);
    for (const std::uint32_t symbol : *pressed)
      if (to) press(*to, symbol);
  });
  return true;
}

bool KeyboardGrab::take(QWidget& window, std::string& leftOut, std::function<void()> lost) {
  leftOut.clear();
  if (!window.isVisible()) return false;
  // The toolkit keeps keys from every window but that one.
  if (QApplication::activeModalWidget()) {
    leftOut = "a dialog is open";
    return false;
  }
  if (!hold(window, leftOut, std::move(lost))) return false;
  if (!std::exchange(taken_, true)) ++keyboard().holders;
  return true;
}

bool KeyboardGrab::hold(QWidget& window, std::string& leftOut, std::function<void()> lost) {
  const bool guest = !toolkitConnection() || isGuest();
  if (!toolkitConnection()) window.showFullScreen();
  if (guest && takeFromCompositor(window, answerLimit)) {
    leftOut = keys_->hasShortcuts() ? leftBySystem : leftByDesktop;
    // A window that was just being shown may get the keys after us.
    const auto hasFocus = [this, &window] {
      return (keys_ && keys_->hasFocus()) || takeFromCompositor(window, secondAnswerLimit);
    };
    watching_ = watchFocus(hasFocus, std::move(lost));
    return true;
  }
  if (!toolkitConnection()) {
    // Nobody can hold the keyboard there. What covers the screen has the keys until the user goes
    // elsewhere by one of the desktop's own.
    leftOut = leftByDesktop;
    watching_ = watchFocus([&window] { return window.isActiveWindow(); }, std::move(lost));
    return true;
  }
  // On the toolkit's own connection, so that it gets the keys.
  const X11Reply<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(
      toolkitConnection(),
      xcb_grab_keyboard(toolkitConnection(), 0, static_cast<xcb_window_t>(window.winId()),
                        XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
      nullptr));
  held_ = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
  if (!held_) return false;
  leftOut = guest ? leftByDesktop : leftBySystem;
  if (!guest) return true;
  holder_ = std::make_unique<KeyHolder>(window);
  watching_ = watchFocus([holder = holder_.get()] { return holder->takeFocus(); }, std::move(lost));
  return true;
}

void KeyboardGrab::whenFree(std::function<void()> work) {
  if (keyboard().holders == 0) return work();
  keyboard().waiting.push_back(std::move(work));
}

void KeyboardGrab::release() {
  if (std::exchange(taken_, false) && --keyboard().holders == 0) {
    for (auto& work : std::exchange(keyboard().waiting, {}))
      QMetaObject::invokeMethod(qApp, std::move(work), Qt::QueuedConnection);
  }
  // It may be telling that it has lost the keys.
  if (watching_) {
    watching_->stop();
    watching_.release()->deleteLater();
  }
  if (arriving_) {
    arriving_->setEnabled(false);
    arriving_.release()->deleteLater();
  }
  keys_.reset();
  if (holder_) {
    holder_->hide();
    holder_.release()->deleteLater();
  }
  if (!std::exchange(held_, false) || !toolkitConnection()) return;
  xcb_ungrab_keyboard(toolkitConnection(), XCB_CURRENT_TIME);
  xcb_flush(toolkitConnection());
}

}  // namespace marbelot
