// The native window of a described one.
#pragma once

#include <QImage>
#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "platform/linux/view_pane.h"
#include "platform/window.h"

namespace marbelot {

// One without a title bar draws its own shadow into a margin around the views where the desktop
// mixes windows; where it does not, it cuts its corners out. The margin belongs to nobody: frames
// are told without it, and the mouse goes through.
class WindowFrame : public QWidget {
 public:
  // What the user does. A copy is called, because the callee may drop the window.
  struct Events {
    std::function<void()> closed;
    std::function<void()> moved;
    std::function<bool(const KeyEvent&)> keyDown;
  };
  WindowFrame(const WindowDescription& description, PictureCache& pictures, Events events);

  ViewPane& pane() { return pane_; }
  const ViewPane& pane() const { return pane_; }

  // In Qt's coordinates, with the title bar and without the margin.
  QRect shownFrame() const;
  void setShownFrame(const QRect& frame);
  void setContent(Size size, const std::vector<View>& views);
  // Adapts to what the desktop can do; to be called before each showing.
  void prepare();
  // A panel takes the focus from now on until it loses it.
  void acceptFocus();
  void drag();
  // Drops all callbacks.
  void detach();

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void takeFirstFocus();
  void setPaneSize(QSize size);
  void fitWanted();
  void shape();

  const bool titled_;
  const bool panel_;
  const bool resizable_;
  const bool shadow_;
  const bool everySpace_;
  const bool ignoresMouse_;
  const bool movableByBackground_;
  Events events_;
  ViewPane pane_;
  bool composited_ = false;
  int margin_ = 0;
  QImage shadowImage_;
  std::vector<QPoint> asked_;    // where the program has put it, the last one last
  QPoint told_;                  // where the frame was when it was last told of
  bool framed_ = false;          // by the window manager
  std::optional<QRect> wanted_;  // until it is
  bool settled_ = false;         // on the screen, so that whoever moves it is the user
  bool dragging_ = false;
  QPoint pressedAt_;  // where the pointer was
  QPoint dragOffset_;
};

}  // namespace marbelot
