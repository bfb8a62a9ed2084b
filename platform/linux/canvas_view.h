// The widget of a canvas.
#pragma once

#include <QPointF>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>

#include "platform/canvas.h"
#include "platform/linux/picture_cache.h"
#include "platform/linux/popped_menu.h"
#include "platform/linux/view_box.h"

namespace marbelot {

class CanvasView : public ViewBox {
 public:
  // `viewNamed` finds what the delegate's hit test names.
  CanvasView(CanvasDelegate* delegate, Size size, PictureCache& pictures,
             std::function<QWidget*(const std::string&)> viewNamed);

  // What it contains is complete: from now on the delegate says who gets the mouse.
  void watchMouse();
  // The delegate is told nothing any more.
  void detach() { delegate_ = nullptr; }

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  Point pointAt(QPointF position) const;
  Point pixelAt(QPointF position) const;
  QWidget* receiver(QPointF position, QWidget& under) const;

  CanvasDelegate* delegate_;
  PictureCache& pictures_;
  const std::function<QWidget*(const std::string&)> viewNamed_;
  QPointer<QWidget> pressed_;  // has had the button that is down
  // The key that shortcuts were asked about, and whether performKeyEquivalent took it.
  struct Asked {
    int key;
    quint64 timestamp;
    bool taken;
  };
  std::optional<Asked> asked_;
  int clicks_ = 0;
  quint64 lastClick_ = 0;  // milliseconds
  QPointF lastPlace_;
  std::unique_ptr<PoppedMenu> menu_;
};

}  // namespace marbelot
