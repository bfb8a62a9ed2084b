#include "recognition/backgrounds.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "recognition/areas.h"

namespace marbelot {
namespace {

using Color = std::uint32_t;  // 0xRRGGBB
constexpr Color unknown = 0xFFFFFFFF;
// The pixels of photos hardly ever have a neighbour of their own colour.
constexpr int shortestRun = 2;
// From pixel to pixel: a gradient's colours shade into each other, a letter's edge is steeper.
constexpr int gradientStep = 3;

int red(Color color) { return static_cast<int>(color >> 16 & 255); }
int green(Color color) { return static_cast<int>(color >> 8 & 255); }
int blue(Color color) { return static_cast<int>(color & 255); }
Color colorOf(int r, int g, int b) {
  return static_cast<Color>(r) << 16 | static_cast<Color>(g) << 8 | static_cast<Color>(b);
}

// As bright as a difference in all three looks, and not blind to one of hue alone.
std::uint8_t difference(Color a, Color b) {
  return static_cast<std::uint8_t>((3 * std::abs(red(a) - red(b)) +
                                    4 * std::abs(green(a) - green(b)) +
                                    std::abs(blue(a) - blue(b))) /
                                   8);
}

using Picture = Plane<Color>;

// Laid on white, or on black where what is drawn is bright itself.
Picture flattened(const Bitmap& bitmap) {
  std::uint64_t alpha = 0, brightness = 0;
  for (int y = 0; y < bitmap.height(); ++y) {
    const std::uint8_t* const row = bitmap.row(y);
    for (int x = 0; x < bitmap.width(); ++x) {
      const std::uint8_t* const pixel = row + x * Bitmap::pixelBytes;
      alpha += pixel[3];
      brightness += static_cast<std::uint64_t>(3 * pixel[0] + 4 * pixel[1] + pixel[2]) / 8;
    }
  }
  const int ground = brightness * 2 > alpha ? 0 : 255;
  Picture picture{bitmap.width(), bitmap.height(), {}};
  picture.values.resize(picture.at(0, picture.height));
  Color* to = picture.values.data();
  for (int y = 0; y < bitmap.height(); ++y) {
    const std::uint8_t* pixel = bitmap.row(y);
    for (int x = 0; x < bitmap.width(); ++x, pixel += Bitmap::pixelBytes) {
      const int rest = (255 - pixel[3]) * ground / 255;
      *to++ = colorOf(std::min(pixel[0] + rest, 255), std::min(pixel[1] + rest, 255),
                      std::min(pixel[2] + rest, 255));
    }
  }
  return picture;
}

bool isBackground(const Area& area, std::size_t picturePixels) {
  if (area.width() < 12 || area.height() < 8) return false;
  const std::int64_t box = std::int64_t{area.width()} * area.height();
  const bool isWide = area.width() >= area.height();
  return area.holes() >= 3 ||
         // A button with a letter or two; the strokes of a letter fill less.
         (area.holes() >= 1 && isWide && area.pixels * 100 >= box * 65) ||
         // An empty panel.
         (isWide && area.width() >= 40 && area.height() >= 16 && area.pixels * 100 >= box * 80) ||
         area.pixels * 5 >= static_cast<std::int64_t>(picturePixels);
}

// The colour of each background in its own pixels, unknown in all others.
std::vector<Color> backgroundsOf(const Picture& picture) {
  const Areas flat(picture, shortestRun, gradientStep);
  std::vector<Color> result(picture.values.size(), unknown);
  for (const Run& run : flat.runs()) {
    if (!isBackground(flat.areas()[run.area], result.size())) continue;
    const auto start = static_cast<std::ptrdiff_t>(picture.at(run.start, run.y));
    std::copy_n(picture.values.begin() + start, run.end - run.start, result.begin() + start);
  }
  return result;
}

// Where no flat area is near: the most frequent brightness of the tile, as its mean colour.
constexpr int tile = 24;  // pixels

Color tileColor(const Picture& picture, int left, int top) {
  struct Bin {
    int count = 0, r = 0, g = 0, b = 0;
  };
  std::array<Bin, 32> bins{};
  const int right = std::min(left + tile, picture.width);
  const int bottom = std::min(top + tile, picture.height);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      const Color color = picture.values[picture.at(x, y)];
      Bin& bin = bins[difference(color, 0) / 8];
      ++bin.count;
      bin.r += red(color);
      bin.g += green(color);
      bin.b += blue(color);
    }
  }
  const Bin& most = *std::max_element(bins.begin(), bins.end(),
                                      [](const Bin& a, const Bin& b) { return a.count < b.count; });
  return colorOf(most.r / most.count, most.g / most.count, most.b / most.count);
}

// How far a background reaches into what is no background: into strokes, not into photos.
constexpr std::uint8_t reach = 40;  // pixels, along rows and columns

// Gives every pixel within reach the background nearest to it.
void spread(const Picture& picture, std::vector<Color>& backgrounds) {
  std::vector<std::uint8_t> far(backgrounds.size());
  for (std::size_t i = 0; i < far.size(); ++i) far[i] = backgrounds[i] == unknown ? reach : 0;
  const auto take = [&](std::size_t to, std::size_t from) {
    if (far[from] + 1 >= far[to]) return;
    far[to] = static_cast<std::uint8_t>(far[from] + 1);
    backgrounds[to] = backgrounds[from];
  };
  const int width = picture.width, height = picture.height;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (x > 0) take(picture.at(x, y), picture.at(x - 1, y));
      if (y > 0) take(picture.at(x, y), picture.at(x, y - 1));
    }
  }
  for (int y = height - 1; y >= 0; --y) {
    for (int x = width - 1; x >= 0; --x) {
      if (x + 1 < width) take(picture.at(x, y), picture.at(x + 1, y));
      if (y + 1 < height) take(picture.at(x, y), picture.at(x, y + 1));
    }
  }
}

// The soft edge of a panel: between two backgrounds in place and in colour.
class Edges {
 public:
  Edges(const Picture& picture, const std::vector<Color>& backgrounds)
      : picture_(picture), backgrounds_(backgrounds) {}

  bool isEdge(int x, int y, Color nearest) const {
    const Color color = picture_.values[picture_.at(x, y)];
    for (int v = std::max(y - width, 0); v <= std::min(y + width, picture_.height - 1); ++v) {
      for (int u = std::max(x - width, 0); u <= std::min(x + width, picture_.width - 1); ++u) {
        const Color other = backgrounds_[picture_.at(u, v)];
        if (other == unknown || other == nearest) continue;
        if (difference(nearest, color) + difference(color, other) <=
            difference(nearest, other) + tolerance)
          return true;
      }
    }
    return false;
  }

 private:
  static constexpr int width = 2;      // pixels
  static constexpr int tolerance = 8;  // of colours
  const Picture& picture_;
  const std::vector<Color>& backgrounds_;
};

}  // namespace

Plane<std::uint8_t> inkOf(const Bitmap& bitmap) {
  const Picture picture = flattened(bitmap);
  const std::vector<Color> flat = backgroundsOf(picture);
  std::vector<Color> backgrounds = flat;
  spread(picture, backgrounds);
  const Edges edges(picture, flat);
  Plane<std::uint8_t> ink{picture.width, picture.height, {}};
  ink.values.resize(picture.values.size());
  const auto inkAt = [&](int x, int y, Color& ofTile) {
    const std::size_t i = picture.at(x, y);
    const Color color = picture.values[i];
    Color background = backgrounds[i];
    if (background == color) return std::uint8_t{0};
    if (background == unknown) {
      if (ofTile == unknown) ofTile = tileColor(picture, x / tile * tile, y / tile * tile);
      background = ofTile;
    } else if (edges.isEdge(x, y, background)) {
      return std::uint8_t{0};
    }
    return difference(color, background);
  };
  for (int top = 0; top < picture.height; top += tile) {
    for (int left = 0; left < picture.width; left += tile) {
      Color ofTile = unknown;
      for (int y = top; y < std::min(top + tile, picture.height); ++y) {
        for (int x = left; x < std::min(left + tile, picture.width); ++x)
          ink.values[picture.at(x, y)] = inkAt(x, y, ofTile);
      }
    }
  }
  return ink;
}

}  // namespace marbelot
