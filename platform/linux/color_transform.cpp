#include "platform/linux/color_transform.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "platform/linux/pixel_rows.h"

namespace marbelot {
namespace {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;
using Transform = std::unique_ptr<void, decltype(&cmsDeleteTransform)>;

// Levels of 255 by which a colour may be off before it counts as different.
constexpr int visible = 2;

}  // namespace

struct ColorTransform::Handles {
  Profile from;
  Profile srgb{cmsCreate_sRGBProfile(), cmsCloseProfile};

  Transform transform(cmsUInt32Number input, cmsUInt32Number output,
                      cmsUInt32Number flags = 0) const {
    return {cmsCreateTransform(from.get(), input, srgb.get(), output, INTENT_PERCEPTUAL,
                               cmsFLAGS_COPY_ALPHA | flags),
            cmsDeleteTransform};
  }
  Transform eight{nullptr, cmsDeleteTransform};    // null for gray,
  Transform sixteen{nullptr, cmsDeleteTransform};  // and this one, too
  using Rgb = std::array<std::uint8_t, 3>;
  std::array<Rgb, 256> grays{};  // for gray: what each becomes
};

ColorTransform::ColorTransform(std::unique_ptr<Handles> handles) : handles_(std::move(handles)) {}
ColorTransform::~ColorTransform() = default;

std::unique_ptr<ColorTransform> ColorTransform::fromProfile(std::string_view icc, bool gray) {
  return make(cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size())), gray);
}

std::unique_ptr<ColorTransform> ColorTransform::fromGamma(double gamma, const double* xy) {
  if (!(gamma > 0.01 && gamma < 100)) return nullptr;
  // Programs write 1 / 2.2 where they mean the curve of sRGB.
  const bool meansSrgb = std::abs(gamma - 1 / 2.2) < 0.02;
  constexpr std::array<double, 8> srgbXy{0.3127, 0.3290, 0.64, 0.33, 0.30, 0.60, 0.15, 0.06};
  const auto close = [](double a, double b) { return std::abs(a - b) < 0.002; };
  if (meansSrgb && (!xy || std::equal(srgbXy.begin(), srgbXy.end(), xy, close))) return nullptr;
  constexpr cmsFloat64Number srgbCurve[5] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  const std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)> curve(
      meansSrgb ? cmsBuildParametricToneCurve(nullptr, 4, srgbCurve)
                : cmsBuildGamma(nullptr, 1 / gamma),
      cmsFreeToneCurve);
  cmsToneCurve* const curves[3] = {curve.get(), curve.get(), curve.get()};
  if (!xy) xy = srgbXy.data();
  const cmsCIExyY white{xy[0], xy[1], 1};
  const cmsCIExyYTRIPLE primaries{{xy[2], xy[3], 1}, {xy[4], xy[5], 1}, {xy[6], xy[7], 1}};
  return make(cmsCreateRGBProfile(&white, &primaries, curves), false);
}

std::unique_ptr<ColorTransform> ColorTransform::make(void* profile, bool gray) {
  auto handles = std::make_unique<Handles>(Handles{Profile(profile, cmsCloseProfile)});
  if (!profile || cmsGetColorSpace(profile) != (gray ? cmsSigGrayData : cmsSigRgbData))
    return nullptr;
  if (gray) {
    const Transform transform = handles->transform(TYPE_GRAY_8, TYPE_RGB_8);
    if (!transform) return nullptr;
    std::array<std::uint8_t, 256> levels{};
    std::iota(levels.begin(), levels.end(), std::uint8_t{0});
    cmsDoTransform(transform.get(), levels.data(), handles->grays.data(), levels.size());
  } else {
    handles->eight = handles->transform(TYPE_RGBA_8, TYPE_RGBA_8);
    // The library's shortcut for 16 bits is far off near the edges of the gamut.
    handles->sixteen = handles->transform(TYPE_RGBA_16, TYPE_RGBA_8, cmsFLAGS_NOOPTIMIZE);
    if (!handles->eight || !handles->sixteen) return nullptr;
  }
  std::unique_ptr<ColorTransform> made(new ColorTransform(std::move(handles)));
  return made->isVisible() ? std::move(made) : nullptr;
}

// Most profiles are sRGB under one of its many names.
bool ColorTransform::isVisible() const {
  constexpr int step = 51;
  for (int sample = 0; sample < 6 * 6 * 6; ++sample) {
    // Of gray, the samples with three equal parts count.
    const bool gray = !handles_->eight;
    const int red = sample % 6, green = sample / 6 % 6, blue = sample / 36;
    if (gray && (red != green || red != blue)) continue;
    const std::array<std::uint8_t, 4> before{static_cast<std::uint8_t>(red * step),
                                             static_cast<std::uint8_t>(green * step),
                                             static_cast<std::uint8_t>(blue * step), 255};
    auto after = before;
    apply(after.data(), 1);
    for (std::size_t i = 0; i < 3; ++i)
      if (std::abs(before[i] - after[i]) >= visible) return true;
  }
  return false;
}

void ColorTransform::apply(std::uint8_t* pixels, int count) const {
  if (handles_->eight) {
    cmsDoTransform(handles_->eight.get(), pixels, pixels, static_cast<cmsUInt32Number>(count));
    return;
  }
  for (int i = 0; i < count; ++i, pixels += 4)
    std::copy_n(handles_->grays[pixels[0]].data(), 3, pixels);
}

void ColorTransform::apply(const std::uint16_t* from, std::uint8_t* to, int count) const {
  if (handles_->sixteen) {
    cmsDoTransform(handles_->sixteen.get(), from, to, static_cast<cmsUInt32Number>(count));
    return;
  }
  for (int i = 0; i < 4 * count; ++i) to[i] = to8(from[i]);
  apply(to, count);
}

}  // namespace marbelot
