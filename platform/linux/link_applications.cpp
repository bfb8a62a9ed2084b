#include "platform/linux/link_applications.h"

#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <algorithm>
#include <cstring>

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

void LinkApplications::find(const std::string& scheme,
                            std::function<void(std::vector<LinkApplication>)> found) {
  const SearchRef search = searches_.insert(searches_.end(), Search{std::move(found), {}, {}, {}});
  search->step = queue_.inBackground([scheme] { return applicationsForScheme(scheme); },
                                     [this, search](std::vector<DesktopApplication> all) {
                                       std::reverse(all.begin(), all.end());
                                       search->left = std::move(all);
                                       goOn(search);
                                     });
}

void LinkApplications::goOn(SearchRef search) {
  while (!search->left.empty()) {
    DesktopApplication& next = search->left.back();
    const bool drawn = icons_.contains(next.icon);
    search->done.push_back({next.id, next.name, iconFor(next.icon), next.isDefault});
    search->left.pop_back();
    if (drawn) continue;
    search->step = queue_.after(0, [this, search] { goOn(search); });
    return;
  }
  const auto found = std::move(search->found);
  std::vector<LinkApplication> applications = std::move(search->done);
  searches_.erase(search);
  found(std::move(applications));
}

std::optional<Image> LinkApplications::iconFor(const std::string& name) {
  const auto [entry, isNew] = icons_.try_emplace(name);
  if (isNew && !name.empty()) {
    const QString known = QString::fromStdString(name);
    entry->second = imageOf(name.front() == '/' ? QIcon(known) : QIcon::fromTheme(known));
  }
  return entry->second;
}

}  // namespace marbelot
