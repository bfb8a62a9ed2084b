#include "platform/linux/window_shadow.h"

#include <QPainter>
#include <vector>

namespace marbelot {
namespace {

// At half the size: nobody can tell, and there is a quarter to do.
constexpr int shrinking = 2;
constexpr int radius = 4;  // of one of the averages, in shrunk pixels; three are a bell curve
constexpr int drop = 5;    // points
constexpr double darkness = 0.35;

// The average of 2 * radius + 1 neighbours along a row of `count` values that are `step` apart.
void average(uchar* row, int count, qsizetype step, std::vector<int>& sums) {
  sums.assign(static_cast<std::size_t>(count) + 1, 0);
  for (int i = 0; i < count; ++i)
    sums[static_cast<std::size_t>(i) + 1] = sums[static_cast<std::size_t>(i)] + row[i * step];
  for (int i = 0; i < count; ++i) {
    const auto from = static_cast<std::size_t>(std::max(i - radius, 0));
    const auto to = static_cast<std::size_t>(std::min(i + radius + 1, count));
    row[i * step] = static_cast<uchar>((sums[to] - sums[from]) / (2 * radius + 1));
  }
}

}  // namespace

QImage shadowOf(const QImage& shape) {
  const QSize points = shape.deviceIndependentSize().toSize();
  const QSize whole = points + QSize(2 * shadowMargin, 2 * shadowMargin);
  QImage alpha(whole / shrinking, QImage::Format_ARGB32_Premultiplied);
  alpha.fill(Qt::transparent);
  {
    QPainter painter(&alpha);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.scale(1. / shrinking, 1. / shrinking);
    painter.drawImage(shadowMargin, shadowMargin + drop, shape);
  }
  alpha = alpha.convertToFormat(QImage::Format_Alpha8);
  std::vector<int> sums;
  for (int pass = 0; pass < 3; ++pass) {
    for (int y = 0; y < alpha.height(); ++y) average(alpha.scanLine(y), alpha.width(), 1, sums);
    for (int x = 0; x < alpha.width(); ++x)
      average(alpha.bits() + x, alpha.height(), alpha.bytesPerLine(), sums);
  }
  const double scale = shape.devicePixelRatio();
  QImage shadow((QSizeF(whole) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  shadow.setDevicePixelRatio(scale);
  shadow.fill(Qt::transparent);
  QPainter painter(&shadow);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.setOpacity(darkness);
  painter.drawImage(QRectF(QPointF(), QSizeF(whole)), alpha);
  painter.setOpacity(1);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
  painter.drawImage(shadowMargin, shadowMargin, shape);
  return shadow;
}

}  // namespace marbelot
