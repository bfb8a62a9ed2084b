#include "platform/linux/themed_icon.h"

#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <cstring>
#include <memory>
#include <utility>

namespace marbelot {
namespace {

constexpr int iconPoints = 16;

std::optional<Image> imageOf(const QIcon& icon) {
  const QImage drawn = icon.pixmap(QSize(iconPoints, iconPoints), qApp->devicePixelRatio())
                           .toImage()
                           .convertToFormat(QImage::Format_RGBA8888_Premultiplied);
  auto bitmap = Bitmap::make(drawn.width(), drawn.height());
  if (!bitmap) return std::nullopt;
  for (int y = 0; y < drawn.height(); ++y) {
    std::memcpy(bitmap->row(y), drawn.constScanLine(y),
                static_cast<std::size_t>(drawn.width() * Bitmap::pixelBytes));
  }
  return Image::fromPixels(std::make_shared<const Bitmap>(*std::move(bitmap)));
}

}  // namespace

std::optional<Image> themedIcon(const std::string& name) {
  if (name.empty()) return std::nullopt;
  const QString known = QString::fromStdString(name);
  return imageOf(name.front() == '/' ? QIcon(known) : QIcon::fromTheme(known));
}

}  // namespace marbelot
