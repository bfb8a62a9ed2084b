// What the operations should give, computed slowly and as plainly as possible in doubles: colours
// are levels from 0 to 255, premultiplied.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "platform/bitmap.h"

namespace marbelot::reference {

using Pixel = std::array<double, 4>;

struct Picture {
  int width, height;
  std::vector<Pixel> pixels;

  Picture(int w, int h) : width(w), height(h), pixels(static_cast<std::size_t>(w) * h) {}
  explicit Picture(const Bitmap& bitmap) : Picture(bitmap.width(), bitmap.height()) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) std::copy_n(bitmap.row(y) + 4 * x, 4, at(x, y).begin());
    }
  }

  Pixel& at(int x, int y) { return pixels[static_cast<std::size_t>(y) * width + x]; }
  const Pixel& at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
  // Transparent outside.
  Pixel orNothing(int x, int y) const {
    return x < 0 || y < 0 || x >= width || y >= height ? Pixel{} : at(x, y);
  }
};

inline Pixel over(const Pixel& top, double shown, const Pixel& below) {
  Pixel result;
  for (int c = 0; c < 4; ++c) result[c] = top[c] * shown + below[c] * (1 - top[3] * shown / 255);
  return result;
}

// --- Resampling ----------------------------------------------------------------------------------

inline double lanczos(double x) {
  const double angle = M_PI * x;
  if (std::abs(x) < 1e-12) return 1;
  return std::abs(x) < 3 ? 3 * std::sin(angle) * std::sin(angle / 3) / (angle * angle) : 0;
}

// A new axis: pixel i's middle lies at `start + (i + 0.5) * step` on an old one, where the middle
// of pixel j is j + 0.5. Beyond its ends its outermost pixels go on.
struct Axis {
  int count;
  double start, step;

  std::vector<double> weights(int i, int side) const {
    const double middle = std::clamp<double>(start + (i + 0.5) * step, 0, side);
    const double scale = std::max(step, 1.0);
    std::vector<double> weights(static_cast<std::size_t>(side));
    double sum = 0;
    for (int j = 0; j < side; ++j) sum += weights[j] = lanczos((j + 0.5 - middle) / scale);
    for (double& weight : weights) weight /= sum;
    return weights;
  }
};

inline Picture resampled(const Picture& picture, const Axis& acrossAxis, const Axis& downAxis) {
  Picture across(acrossAxis.count, picture.height);
  for (int x = 0; x < across.width; ++x) {
    const auto weights = acrossAxis.weights(x, picture.width);
    for (int y = 0; y < across.height; ++y) {
      for (int i = 0; i < picture.width; ++i) {
        for (int c = 0; c < 4; ++c) across.at(x, y)[c] += weights[i] * picture.at(i, y)[c];
      }
    }
  }
  Picture result(acrossAxis.count, downAxis.count);
  for (int y = 0; y < result.height; ++y) {
    const auto weights = downAxis.weights(y, picture.height);
    for (int x = 0; x < result.width; ++x) {
      Pixel& pixel = result.at(x, y);
      for (int j = 0; j < picture.height; ++j) {
        for (int c = 0; c < 4; ++c) pixel[c] += weights[j] * across.at(x, j)[c];
      }
      // Nothing rings beyond black, white and alpha.
      pixel[3] = std::clamp(pixel[3], 0.0, 255.0);
      for (int c = 0; c < 3; ++c) pixel[c] = std::clamp(pixel[c], 0.0, pixel[3]);
    }
  }
  return result;
}

// --- Shapes --------------------------------------------------------------------------------------

// A rounded rectangle.
struct Shape {
  double left, top, width, height, radius;

  // How far the sides draw in at a height.
  double inset(double y) const {
    const double up = radius - std::min(y - top, top + height - y);
    return up > 0 ? radius - std::sqrt(radius * radius - up * up) : 0;
  }
  // The mean of what `of` makes of thin slices, from the first height to the second.
  template <typename Of>
  double integral(double from, double to, int slices, Of of) const {
    from = std::max(from, top);
    to = std::min(to, top + height);
    const double slice = (to - from) / slices;
    double sum = 0;
    for (int i = 0; from < to && i < slices; ++i) sum += slice * of(from + (i + 0.5) * slice);
    return sum;
  }
  // Of a pixel.
  double coverage(int x, int y) const {
    return integral(y, y + 1, 400, [&](double at) {
      const double begin = left + inset(at), end = left + width - inset(at);
      return std::max(0.0, std::min<double>(x + 1, end) - std::max<double>(x, begin));
    });
  }
  // At a place under a Gaussian.
  double blurred(double x, double y, double sigma) const {
    const auto below = [&](double at) { return 0.5 * std::erfc(-at / sigma / std::sqrt(2)); };
    return integral(y - 5 * sigma, y + 5 * sigma, 200, [&](double at) {
      const double bell = std::exp(-(at - y) * (at - y) / (2 * sigma * sigma));
      return bell / (sigma * std::sqrt(2 * M_PI)) *
             (below(left + width - inset(at) - x) - below(left + inset(at) - x));
    });
  }
};

struct Card {
  int width, height;
  bool hasBadge;
  Shape badge;
  Pixel color;
  double sigma, down, opacity;  // of the badge's shadow
  Shape window;
  double scale;
};

// Only each so many pixels when that is more than 1; the levels of all others are no numbers.
inline Picture draw(const Picture& picture, const Card& card, int every = 1) {
  const auto axis = [&](int count, int side) {
    return Axis{count, (side - count / card.scale) / 2, 1 / card.scale};
  };
  const Picture placed =
      resampled(picture, axis(card.width, picture.width), axis(card.height, picture.height));
  Picture result(card.width, card.height);
  for (int y = 0; y < card.height; ++y) {
    for (int x = 0; x < card.width; ++x) {
      Pixel& pixel = result.at(x, y);
      if ((x + 3 * y) % every != 0) {
        pixel.fill(std::nan(""));
        continue;
      }
      if (card.hasBadge) {
        pixel[3] =
            255 * card.opacity * card.badge.blurred(x + 0.5, y + 0.5 - card.down, card.sigma);
        pixel = over(card.color, card.badge.coverage(x, y), pixel);
      }
      const double shown = card.window.coverage(x, y);
      if (shown > 0) pixel = over(placed.at(x, y), shown, pixel);
    }
  }
  return result;
}

// --- Turning -------------------------------------------------------------------------------------

// Counter-clockwise, on a canvas of the picture's size.
inline Picture turned(const Picture& picture, double degrees) {
  Picture result(picture.width, picture.height);
  const double cosine = std::cos(degrees * M_PI / 180), sine = std::sin(degrees * M_PI / 180);
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x) {
      const double right = x + 0.5 - result.width / 2.0, down = y + 0.5 - result.height / 2.0;
      const double fromX = right * cosine - down * sine + picture.width / 2.0 - 0.5;
      const double fromY = right * sine + down * cosine + picture.height / 2.0 - 0.5;
      const int column = static_cast<int>(std::floor(fromX)),
                row = static_cast<int>(std::floor(fromY));
      const double toRight = fromX - column, toBelow = fromY - row;
      for (int c = 0; c < 4; ++c) {
        result.at(x, y)[c] = (picture.orNothing(column, row)[c] * (1 - toRight) +
                              picture.orNothing(column + 1, row)[c] * toRight) *
                                 (1 - toBelow) +
                             (picture.orNothing(column, row + 1)[c] * (1 - toRight) +
                              picture.orNothing(column + 1, row + 1)[c] * toRight) *
                                 toBelow;
      }
    }
  }
  return result;
}

// The result that has at each place the picture's pixel at the place that `from` says.
inline Picture moved(const Picture& picture, int width, int height,
                     const std::function<std::array<int, 2>(int x, int y)>& from) {
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto [column, row] = from(x, y);
      result.at(x, y) = picture.at(column, row);
    }
  }
  return result;
}

}  // namespace marbelot::reference
