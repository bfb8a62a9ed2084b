#include "platform/linux/view_box.h"

#include <cmath>

namespace marbelot {

void ViewBox::hold(QWidget* child, const Rect& frame, const Resizing& resizing) {
  child->setParent(this);
  held_.push_back({child, frame, resizing});
  place(held_.back());
  child->show();
}

void ViewBox::clear() {
  for (const Held& held : held_) {
    held.widget->hide();
    held.widget->deleteLater();
  }
  held_.clear();
}

void ViewBox::resizeEvent(QResizeEvent*) {
  for (const Held& held : held_) place(held);
}

void ViewBox::place(const Held& held) {
  const Resizing& resizing = held.resizing;
  Rect frame = held.frame;
  // What is flexible in one direction shares the growth.
  if (const int sharing = resizing.leftMargin + resizing.width; sharing > 0) {
    const double share = (width() - designed_.width) / sharing;
    if (resizing.leftMargin) frame.x += share;
    if (resizing.width) frame.width += share;
  }
  if (const int sharing = resizing.bottomMargin + resizing.height + resizing.topMargin;
      sharing > 0) {
    const double share = (height() - designed_.height) / sharing;
    if (resizing.bottomMargin) frame.y += share;
    if (resizing.height) frame.height += share;
  }
  // Edges are rounded and not sizes, so that views that touch go on touching.
  const auto left = std::lround(frame.x), right = std::lround(frame.maxX());
  const auto top = std::lround(height() - frame.maxY()), bottom = std::lround(height() - frame.y);
  held.widget->setGeometry(static_cast<int>(left), static_cast<int>(top),
                           static_cast<int>(std::max(right - left, 0L)),
                           static_cast<int>(std::max(bottom - top, 0L)));
}

}  // namespace marbelot
