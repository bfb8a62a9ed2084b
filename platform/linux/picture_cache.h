// Pictures ready to be drawn: decoded and resized off the main thread.
#pragma once

#include <QEvent>
#include <QImage>
#include <QPointer>
#include <QRectF>
#include <QWidget>
#include <cstddef>
#include <list>
#include <vector>

#include "platform/image.h"
#include "platform/main_queue.h"

namespace marbelot {

// Keeps what was drawn last, up to `limit` bytes, and no longer than a view that drew it is shown.
class PictureCache {
 public:
  // Sent to the window of a view when a picture is ready that the view has waited for.
  static constexpr auto readyEvent = static_cast<QEvent::Type>(QEvent::User + 1);
  static constexpr std::size_t defaultLimit = 64 << 20;  // bytes
  explicit PictureCache(MainQueue& queue, std::size_t limit = defaultLimit)
      : queue_(queue), limit_(limit) {}

  // Fills `target`. What is not ready is drawn in another size when there is one, and `view` is
  // drawn again when it is. Damaged images are never drawn.
  void draw(QPainter& painter, const Image& image, const QRectF& target, QWidget& view);

  std::size_t bytes() const;

 private:
  struct Entry {
    Image image;
    QSize size;   // pixels
    QImage made;  // null when it is not ready, or damaged
    bool ready = false;
    Task making{};
    std::vector<QPointer<QWidget>> views{};  // that have drawn it, or wait for it
  };
  using Entries = std::list<Entry>;

  Entry& entryOf(const Image& image, QSize size);
  const QImage* otherSize(const Entry& entry) const;
  void begin(Entry& entry);
  void finish(Entry& entry, QImage made);
  void trim();
  void sweep();

  MainQueue& queue_;
  const std::size_t limit_;
  Entries entries_;  // the one drawn last first
  Task sweep_;
};

}  // namespace marbelot
