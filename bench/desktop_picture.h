// What a screenshot looks like, for the benchmarks.
#pragma once

#include <QFont>
#include <QImage>
#include <QPainter>

namespace marbelot {

// A desktop: a wallpaper, windows with text and a picture.
inline QImage desktopPicture(int width, int height) {
  QImage image(width, height, QImage::Format_RGBA8888);
  QPainter painter(&image);
  QLinearGradient sky(0, 0, 0, height);
  sky.setColorAt(0, QColor("#274060"));
  sky.setColorAt(1, QColor("#7fa3c7"));
  painter.fillRect(image.rect(), sky);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setFont(QFont("DejaVu Sans", 14));
  for (int window = 0; window < 3; ++window) {
    const QRect frame(150 + 1150 * window, 120 + 90 * window, 1080, 1500);
    painter.setPen(Qt::NoPen);
    painter.setBrush(window == 1 ? QColor("#1e1e2e") : QColor("#fbfbfb"));
    painter.drawRoundedRect(frame, 16, 16);
    painter.setPen(window == 1 ? QColor("#cdd6f4") : QColor("#222233"));
    for (int line = 0; line < 44; ++line) {
      painter.drawText(frame.x() + 40, frame.y() + 70 + 32 * line,
                       QString("%1  the quick brown fox jumps over the lazy dog, line %2 of it")
                           .arg(line * 7919 % 1000)
                           .arg(line));
    }
  }
  return image;
}

}  // namespace marbelot
