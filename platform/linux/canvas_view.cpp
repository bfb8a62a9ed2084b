#include "platform/linux/canvas_view.h"

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QStyleHints>

#include "platform/linux/drawing.h"
#include "platform/linux/painter.h"

namespace marbelot {

CanvasView::CanvasView(CanvasDelegate* delegate, Size size, PictureCache& pictures,
                       std::function<QWidget*(const std::string&)> viewNamed)
    : ViewBox(size), delegate_(delegate), pictures_(pictures), viewNamed_(std::move(viewNamed)) {}

void CanvasView::watchMouse() {
  for (QWidget* inside : findChildren<QWidget*>()) inside->installEventFilter(this);
}

Point CanvasView::pointAt(QPointF position) const {
  return {position.x(), height() - position.y()};
}

// The lower left corner of the pixel, which belongs to the same view as the pixel does.
Point CanvasView::pixelAt(QPointF position) const {
  return {position.x(), height() - position.y() - 1 / devicePixelRatioF()};
}

void CanvasView::paintEvent(QPaintEvent*) {
  if (!delegate_) return;
  QPainter canvas(this);
  QtPainter painter(canvas, *this, pictures_);
  delegate_->draw(painter, {static_cast<double>(width()), static_cast<double>(height())});
}

// Who gets the mouse instead of the widget that lies under it.
QWidget* CanvasView::receiver(QPointF position, QWidget& under) const {
  if (!delegate_ || !QRectF(rect()).contains(position)) return &under;
  const std::optional<std::string> hit = delegate_->hitTest(pixelAt(position));
  if (!hit) return &under;
  if (hit->empty()) return const_cast<CanvasView*>(this);
  QWidget* const named = viewNamed_(*hit);
  if (!named) return const_cast<CanvasView*>(this);
  return named->isAncestorOf(&under) ? &under : named;
}

bool CanvasView::eventFilter(QObject* watched, QEvent* event) {
  auto* const under = static_cast<QWidget*>(watched);
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove: {
      const auto* const mouse = static_cast<QMouseEvent*>(event);
      const QPointF position = under->mapTo(this, mouse->position());
      const bool pressing =
          event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
      if (pressing) pressed_ = receiver(position, *under);
      QWidget* const to = mouse->buttons() || event->type() == QEvent::MouseButtonRelease
                              ? pressed_.data()
                              : receiver(position, *under);
      if (!to || to == under) return false;
      QMouseEvent handed(event->type(), to->mapFrom(this, position), mouse->globalPosition(),
                         mouse->button(), mouse->buttons(), mouse->modifiers());
      handed.setTimestamp(mouse->timestamp());
      QCoreApplication::sendEvent(to, &handed);
      return true;
    }
    case QEvent::ContextMenu: {
      const auto* const menu = static_cast<QContextMenuEvent*>(event);
      const QPoint position = under->mapTo(this, menu->pos());
      if (receiver(position, *under) != this) return false;
      QContextMenuEvent handed(menu->reason(), position, menu->globalPos(), menu->modifiers());
      QCoreApplication::sendEvent(this, &handed);
      return true;
    }
    case QEvent::ToolTip: {
      const QPoint position = under->mapTo(this, static_cast<QHelpEvent*>(event)->pos());
      return receiver(position, *under) != under;
    }
    default:
      return false;
  }
}

void CanvasView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !delegate_) return;
  const QStyleHints& hints = *QGuiApplication::styleHints();
  const bool again =
      event->timestamp() - lastClick_ <= static_cast<quint64>(hints.mouseDoubleClickInterval()) &&
      (event->position() - lastPlace_).manhattanLength() <= hints.mouseDoubleClickDistance();
  clicks_ = again ? clicks_ + 1 : 1;
  lastClick_ = event->timestamp();
  lastPlace_ = event->position();
  delegate_->mouseDown({pointAt(event->position()), clicks_});
}

void CanvasView::mouseDoubleClickEvent(QMouseEvent* event) { mousePressEvent(event); }

void CanvasView::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons() & Qt::LeftButton && delegate_)
    delegate_->mouseDragged({pointAt(event->position()), clicks_});
}

void CanvasView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && delegate_)
    delegate_->mouseUp({pointAt(event->position()), clicks_});
}

void CanvasView::contextMenuEvent(QContextMenuEvent* event) {
  std::shared_ptr<Menu> menu = delegate_ ? delegate_->menuForEvent(pixelAt(event->pos())) : nullptr;
  if (!menu) {
    event->ignore();
    return;
  }
  menu_ = std::make_unique<PoppedMenu>(std::move(menu), event->globalPos(),
                                       [this](const MenuItem& item) {
                                         if (delegate_) delegate_->menuItemChosen(item);
                                       });
}

bool CanvasView::event(QEvent* event) {
  // Told before every shortcut; whoever accepts it gets the key itself next.
  if (event->type() == QEvent::ShortcutOverride && delegate_) {
    const auto* const key = static_cast<QKeyEvent*>(event);
    // Qt asks more than once.
    if (!asked_ || asked_->key != key->key() || asked_->timestamp != key->timestamp()) {
      asked_ = {key->key(), key->timestamp(),
                key->modifiers() & Qt::ControlModifier && !isModifier(*key) &&
                    delegate_->performKeyEquivalent(keyEvent(*key))};
    }
    if (asked_->taken) event->accept();
    return true;
  }
  return ViewBox::event(event);
}

void CanvasView::keyPressEvent(QKeyEvent* event) {
  const auto asked = std::exchange(asked_, std::nullopt);
  if (asked && asked->taken && asked->key == event->key()) return;
  if (isModifier(*event) || !delegate_ || !delegate_->keyDown(keyEvent(*event))) event->ignore();
}

}  // namespace marbelot
