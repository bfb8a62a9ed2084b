// A widget that holds views where their description says.
#pragma once

#include <QWidget>
#include <vector>

#include "platform/view.h"

namespace marbelot {

class ViewBox : public QWidget {
 public:
  // `designed` is the size that the frames of what it holds are meant for.
  explicit ViewBox(Size designed) : designed_(designed) {}
  // Takes the widget, which follows the growth of the box on the sides that are flexible.
  void hold(QWidget* child, const Rect& frame, const Resizing& resizing);

 protected:
  void setDesigned(Size designed) { designed_ = designed; }
  // What it holds is to be deleted once the present event is done.
  void clear();
  void resizeEvent(QResizeEvent* event) override;

 private:
  struct Held {
    QWidget* widget;
    Rect frame;
    Resizing resizing;
  };
  void place(const Held& held);
  Size designed_;
  std::vector<Held> held_;
};

}  // namespace marbelot
