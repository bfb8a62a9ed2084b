#include "platform/linux/secondary_text.h"

#include <algorithm>
#include <cmath>

namespace marbelot {
namespace {

// WCAG 2.1: text of ordinary size, and the least for anything that one has to see.
constexpr double readable = 4.5;
constexpr double visible = 3;

double luminance(const QColor& color) {
  const auto linear = [](double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

QColor mixed(const QColor& color, const QColor& behind, double share) {
  const auto mix = [share](double one, double other) {
    return static_cast<float>(one * share + other * (1 - share));
  };
  return QColor::fromRgbF(mix(color.redF(), behind.redF()), mix(color.greenF(), behind.greenF()),
                          mix(color.blueF(), behind.blueF()));
}

}  // namespace

double contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor secondaryText(const QPalette& palette) {
  const QColor behind = palette.color(QPalette::Window);
  const QColor themes = palette.color(QPalette::WindowText);
  const QColor text = mixed(themes, behind, themes.alphaF());
  for (double share = 0.6; share < 1; share += 0.05) {
    const QColor paler = mixed(text, behind, share);
    if (contrast(paler, behind) >= readable) return paler;
  }
  if (contrast(text, behind) >= visible) return text;
  return contrast(Qt::black, behind) > contrast(Qt::white, behind) ? Qt::black : Qt::white;
}

}  // namespace marbelot
