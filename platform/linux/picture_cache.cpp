#include "platform/linux/picture_cache.h"

#include <QCoreApplication>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "platform/image_codec.h"

namespace marbelot {
namespace {

// Pixels that are here already and so few are made ready at once rather than a moment later: to be
// resized, or as they are.
constexpr std::int64_t fewPixels = 1 << 18;
constexpr std::int64_t fewPixelsAsTheyAre = 1 << 21;
constexpr double sweepSeconds = 60;

// Not null unless the image is damaged.
QImage resized(const Image& image, QSize size) {
  SharedBitmap pixels = image.pixels();
  if (!pixels) pixels = decode(image);
  if (!pixels) return {};
  auto* const owner = new SharedBitmap(pixels);
  const QImage whole(
      pixels->data(), pixels->width(), pixels->height(),
      static_cast<qsizetype>(pixels->bytesPerRow()), QImage::Format_RGBA8888_Premultiplied,
      [](void* held) { delete static_cast<SharedBitmap*>(held); }, owner);
  return whole.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
      .convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

bool isShown(const QPointer<QWidget>& view) { return view && view->isVisible(); }

}  // namespace

void PictureCache::draw(QPainter& painter, const Image& image, const QRectF& target,
                        QWidget& view) {
  if (target.isEmpty()) return;
  const QSize own(image.width(), image.height());
  // Whole pixels of the screen, so that one that fits is copied and not resized once more.
  const QTransform toDevice = painter.deviceTransform();
  const QRectF exact = toDevice.mapRect(target);
  QSize size = exact.size().toSize().expandedTo(QSize(1, 1));
  const QRectF place =
      toDevice.inverted().mapRect(QRectF(QPointF(exact.topLeft().toPoint()), QSizeF(size)));
  if (size.width() >= own.width() && size.height() >= own.height()) size = own;

  Entry& entry = entryOf(image, size);
  std::erase_if(entry.views,
                [&view](const QPointer<QWidget>& other) { return !other || other == &view; });
  entry.views.emplace_back(&view);
  if (!entry.ready) begin(entry);
  const QImage* made = entry.ready ? &entry.made : otherSize(entry);
  if (!made || made->isNull()) return;
  const bool smooth = painter.testRenderHint(QPainter::SmoothPixmapTransform);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(place, *made);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
}

PictureCache::Entry& PictureCache::entryOf(const Image& image, QSize size) {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.size == size && entry.image.isSame(image);
  });
  if (found == entries_.end()) {
    entries_.push_front(Entry{image, size, {}});
  } else {
    entries_.splice(entries_.begin(), entries_, found);
  }
  return entries_.front();
}

const QImage* PictureCache::otherSize(const Entry& entry) const {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&entry](const Entry& other) {
    return other.ready && other.image.isSame(entry.image);
  });
  return found == entries_.end() ? nullptr : &found->made;
}

void PictureCache::begin(Entry& entry) {
  if (entry.making) return;
  const Image image = entry.image;
  const QSize size = entry.size;
  const bool fits = size == QSize(image.width(), image.height());
  const std::int64_t most = fits ? fewPixelsAsTheyAre : fewPixels;
  if (image.pixels() && std::int64_t{image.width()} * image.height() <= most) {
    finish(entry, resized(image, size));
    return;
  }
  entry.making =
      queue_.inBackground([image, size] { return resized(image, size); },
                          // The entry goes with its task, and stays where it is in memory.
                          [this, &entry](QImage made) {
                            finish(entry, std::move(made));
                            for (const QPointer<QWidget>& view : entry.views) {
                              if (!view) continue;
                              view->update();
                              QCoreApplication::postEvent(view->window(), new QEvent(readyEvent));
                            }
                          });
}

void PictureCache::finish(Entry& entry, QImage made) {
  entry.made = std::move(made);
  entry.ready = true;
  entry.making.cancel();
  trim();
  if (!sweep_) sweep_ = queue_.every(sweepSeconds, [this] { sweep(); });
}

void PictureCache::trim() {
  std::size_t kept = 0;
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    kept += static_cast<std::size_t>(entry->made.sizeInBytes());
    const bool first = entry == entries_.begin();
    entry = entry->ready && !first && kept > limit_ ? entries_.erase(entry) : std::next(entry);
  }
}

void PictureCache::sweep() {
  std::erase_if(entries_, [](const Entry& entry) {
    return std::none_of(entry.views.begin(), entry.views.end(), isShown);
  });
  if (entries_.empty()) sweep_.cancel();
}

std::size_t PictureCache::bytes() const {
  std::size_t sum = 0;
  for (const Entry& entry : entries_) sum += static_cast<std::size_t>(entry.made.sizeInBytes());
  return sum;
}

}  // namespace marbelot
