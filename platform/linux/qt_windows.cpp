#include "platform/linux/qt_windows.h"

#include <QApplication>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <algorithm>

#include "platform/linux/drawing.h"
#include "platform/linux/keyboard_grab.h"
#include "platform/linux/popped_menu.h"
#include "platform/linux/screens.h"
#include "platform/linux/view_widgets.h"
#include "platform/linux/window_frame.h"
#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

constexpr int animationMilliseconds = 220;
constexpr const char* handleProperty = "marbelotHandle";

}  // namespace

void bringToFront(QWidget& window) {
  window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

QRect centred(QRect frame) {
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return frame;
  const QRect available = usableArea(*screen);
  frame.moveCenter(available.center());
  frame.moveTo(std::max(frame.left(), available.left()), std::max(frame.top(), available.top()));
  return frame;
}

class QtWindow : public Window {
 public:
  QtWindow(WindowDescription description, PictureCache& pictures)
      : id_(std::move(description.id)),
        alpha_(description.alpha),
        moved_(std::move(description.moved)),
        frame_(*new WindowFrame(description, pictures,
                                {[this, closed = description.closed] {
                                   grab_.release();
                                   if (closed) closed();
                                 },
                                 [this] { tellMoved(); }, description.keyDown})) {
    frame_.setProperty(windowIdProperty, QString::fromStdString(id_));
    frame_.setProperty(handleProperty, QVariant::fromValue(static_cast<void*>(this)));
    fading_.setTargetObject(&frame_);
    fading_.setPropertyName("windowOpacity");
    moving_.setDuration(animationMilliseconds);
    fading_.setDuration(animationMilliseconds);
    moving_.setEasingCurve(QEasingCurve::OutCubic);
    QObject::connect(&fading_, &QAbstractAnimation::finished, &frame_, [this] { hide(); });
    QObject::connect(&moving_, &QVariantAnimation::valueChanged, &frame_,
                     [this](const QVariant& place) {
                       frame_.setShownFrame(QRect(place.toPoint(), frame_.shownFrame().size()));
                     });
  }
  // From one of its own callbacks, too.
  ~QtWindow() override {
    moving_.stop();
    fading_.stop();
    frame_.detach();
    frame_.hide();
    frame_.deleteLater();
  }
  QtWindow(const QtWindow&) = delete;
  QtWindow& operator=(const QtWindow&) = delete;

  void show() override {
    appear(true);
    bringToFront(frame_);
  }
  void showWithoutActivating() override {
    appear(false);
    frame_.show();
    frame_.raise();
  }
  void hide() override {
    moving_.stop();
    grab_.release();
    frame_.hide();
    stopFading();
  }
  void fadeOut() override {
    if (!isVisible() || fading_.state() == QAbstractAnimation::Running) return;
    if (!isComposited()) {
      hide();
      return;
    }
    fading_.setStartValue(frame_.windowOpacity());
    fading_.setEndValue(0.);
    fading_.start();
  }
  void center() override {
    if (frame_.isMaximized() || frame_.isFullScreen()) return;
    frame_.setShownFrame(centred(frame_.shownFrame()));
  }
  bool isVisible() const override { return frame_.isVisible(); }
  bool isKey() const override { return frame_.isVisible() && frame_.isActiveWindow(); }

  Rect frame() const override {
    QRect shown = frame_.shownFrame();
    if (isMoving()) shown.moveTo(moving_.endValue().toPoint());
    return seamRect(shown);
  }
  void setOrigin(Point origin, bool animated) override {
    const Rect now = frame();
    place({origin.x, origin.y, now.width, now.height}, animated);
  }
  void setFrame(const Rect& frame) override { place(frame, false); }
  // Where the keys go elsewhere later, the desktop has closed the window for all it is worth.
  bool grabKeyboard(std::string& leftOut) override {
    return grab_.take(frame_, leftOut, [this] { frame_.close(); });
  }
  void performDrag() override { frame_.drag(); }

  void setTitle(const std::string& title) override {
    frame_.setWindowTitle(QString::fromStdString(title));
  }
  void setContent(Size contentSize, std::vector<View> views) override {
    // A move that is under way is over.
    const Rect now = frame();
    const bool moving = isMoving();
    moving_.stop();
    if (moving) frame_.setShownFrame(qtRect(now));
    frame_.setContent(contentSize, views);
  }
  void redraw(const std::string& viewId) override {
    if (QWidget* view = frame_.pane().find(viewId)) view->update();
  }
  using Window::setText;
  void setText(const std::string& viewId, const SharedText& text, bool concealed) override {
    frame_.pane().setText(viewId, text, concealed);
  }
  SharedText text(const std::string& viewId) const override { return frame_.pane().text(viewId); }
  void focus(const std::string& viewId) override {
    if (QWidget* view = frame_.pane().find(viewId)) view->setFocus();
  }
  bool press(const std::string& viewId) override { return frame_.pane().press(viewId); }
  void popUpMenu(const std::string& viewId, std::shared_ptr<Menu> menu,
                 std::function<void(const MenuItem&)> chosen) override {
    const QWidget* const view = frame_.pane().find(viewId);
    if (!view || !menu) return;
    menu_ = std::make_unique<PoppedMenu>(
        std::move(menu), view->mapToGlobal(QPoint(0, view->height())), std::move(chosen));
  }
  std::string viewAt(Point point) const override {
    return frame_.pane().viewAt(frame_.pane().mapFromGlobal(qtPoint(point)));
  }

  WindowInfo info() const {
    return {id_,
            frame_.windowTitle().toStdString(),
            frame(),
            isKey(),
            frame_.pane().buttons(),
            const_cast<QtWindow*>(this)};
  }

 private:
  bool isMoving() const { return moving_.state() == QAbstractAnimation::Running; }
  void stopFading() {
    fading_.stop();
    if (frame_.windowOpacity() != alpha_) frame_.setWindowOpacity(alpha_);
  }
  void appear(bool activating) {
    stopFading();
    frame_.setAttribute(Qt::WA_ShowWithoutActivating, !activating);
    frame_.prepare();
    if (activating) frame_.acceptFocus();
  }
  void place(const Rect& wanted, bool animated) {
    stopFading();
    const QRect target = qtRect(wanted);
    const bool isNew = frame() != seamRect(target);
    if (!isNew) return;
    moving_.stop();
    if (animated && isVisible()) {
      moving_.setStartValue(frame_.shownFrame().topLeft());
      moving_.setEndValue(target.topLeft());
      moving_.start();
    } else {
      frame_.setShownFrame(target);
    }
    tellMoved();
  }
  void tellMoved() {
    // A copy, because the callee may drop the window.
    if (const auto moved = moved_) moved();
  }

  const std::string id_;
  const double alpha_;
  const std::function<void()> moved_;
  WindowFrame& frame_;  // goes once it is done with the present event
  QPropertyAnimation fading_;
  QVariantAnimation moving_;
  KeyboardGrab grab_;
  std::unique_ptr<PoppedMenu> menu_;
};

std::unique_ptr<Window> QtWindows::create(WindowDescription description) {
  return std::make_unique<QtWindow>(std::move(description), pictures_);
}

double QtWindows::textWidth(const std::string& text, const Font& font) const {
  return marbelot::textWidth(text, font);
}

std::vector<WindowInfo> QtWindows::visible() const {
  std::vector<WindowInfo> infos;
  for (const QWidget* window : QApplication::topLevelWidgets()) {
    if (!window->isVisible()) continue;
    if (const auto* ours =
            static_cast<QtWindow*>(window->property(handleProperty).value<void*>())) {
      infos.push_back(ours->info());
      continue;
    }
    QString id = window->property(windowIdProperty).toString();
    if (id.isEmpty() && window->inherits("QMenu")) id = "menu";
    if (id.isEmpty()) continue;
    WindowInfo info{id.toStdString(),
                    window->windowTitle().toStdString(),
                    seamRect(window->frameGeometry()),
                    window->isActiveWindow(),
                    {},
                    nullptr};
    for (const auto* button : window->findChildren<QPushButton*>())
      info.buttons.push_back({{}, buttonTitle(*button), button->isEnabled()});
    infos.push_back(std::move(info));
  }
  return infos;
}

}  // namespace marbelot
