// Lets a menu open at the pointer on a Wayland desktop, where an X11 program neither knows where
// that is over the windows of others, nor gets the keys, nor the clicks beside its menu.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>

#include "platform/linux/wayland_pointer.h"

namespace marbelot {

// A clear window as large as the desktop: it learns where the pointer is, and has the keys and the
// clicks as long as it is there.
class PointerCatcher : public QWidget {
 public:
  PointerCatcher();

  // Calls `open` with the pointer's place, and with what bars leave of its screen where that is
  // known; after a second all the same. `close` is called when the keys go to another program, or
  // the window is closed.
  void catchAll(std::function<void(QPoint, const QRect& usable)> open, std::function<void()> close);

 protected:
  bool event(QEvent* event) override;

 private:
  void place(const WaylandPointerPlace& found);
  void cover();

  QTimer wait_;
  std::optional<QPoint> place_;  // as the compositor has told it
  QRect usable_;
  std::function<void(QPoint, const QRect&)> open_;
  std::function<void()> close_;
};

}  // namespace marbelot
