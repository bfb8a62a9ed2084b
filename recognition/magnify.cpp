#include "recognition/magnify.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace marbelot {
namespace {

constexpr std::uint8_t paper = 255;
constexpr int taps = 4;
constexpr int one = 1 << 14;  // weights are fixed-point numbers

// Where a result pixel comes from, and how much of each of four source pixels it is.
struct Source {
  std::array<int, taps> at;
  std::array<int, taps> weight;
};

// Catmull and Rom's spline: it keeps strokes as sharp as they were.
double spline(double x) {
  x = std::abs(x);
  if (x < 1) return 1.5 * x * x * x - 2.5 * x * x + 1;
  if (x < 2) return -0.5 * x * x * x + 2.5 * x * x - 4 * x + 2;
  return 0;
}

std::vector<Source> sources(int from, int to, double scale) {
  std::vector<Source> result(static_cast<std::size_t>(to));
  for (int i = 0; i < to; ++i) {
    const double centre = (i + 0.5) / scale - 0.5;
    const int first = static_cast<int>(std::floor(centre)) - 1;
    Source& source = result[static_cast<std::size_t>(i)];
    int rest = one;
    for (int tap = 0; tap < taps; ++tap) {
      const auto t = static_cast<std::size_t>(tap);
      source.at[t] = std::clamp(first + tap, 0, from - 1);
      source.weight[t] = static_cast<int>(std::lround(spline(centre - first - tap) * one));
      rest -= source.weight[t];
    }
    source.weight[1] += rest;
  }
  return result;
}

}  // namespace

Page magnified(const Plane<std::uint8_t>& gray, Rows part, double scale, int margin) {
  const int height = part.bottom - part.top;
  const int innerWidth = std::max(1, static_cast<int>(std::lround(gray.width * scale)));
  const int innerHeight = std::max(1, static_cast<int>(std::lround(height * scale)));
  Page page{innerWidth + 2 * margin, innerHeight + 2 * margin, scale, {}};
  page.gray.assign(static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height),
                   paper);
  const std::vector<Source> columns = sources(gray.width, innerWidth, scale);
  const std::vector<Source> rows = sources(height, innerHeight, scale);

  // Down first, a row at a time: that part runs over whole rows of the source.
  std::vector<int> column(static_cast<std::size_t>(gray.width));
  for (int y = 0; y < innerHeight; ++y) {
    const Source& row = rows[static_cast<std::size_t>(y)];
    std::array<const std::uint8_t*, taps> from;
    for (std::size_t tap = 0; tap < taps; ++tap)
      from[tap] = gray.values.data() + gray.at(0, part.top + row.at[tap]);
    for (std::size_t x = 0; x < column.size(); ++x) {
      column[x] = (from[0][x] * row.weight[0] + from[1][x] * row.weight[1] +
                   from[2][x] * row.weight[2] + from[3][x] * row.weight[3]) >>
                  7;
    }
    std::uint8_t* const to =
        page.gray.data() +
        static_cast<std::size_t>(y + margin) * static_cast<std::size_t>(page.width) + margin;
    for (int x = 0; x < innerWidth; ++x) {
      const Source& source = columns[static_cast<std::size_t>(x)];
      std::int64_t sum = 0;
      for (std::size_t tap = 0; tap < taps; ++tap)
        sum += std::int64_t{column[static_cast<std::size_t>(source.at[tap])]} * source.weight[tap];
      to[x] =
          static_cast<std::uint8_t>(std::clamp<std::int64_t>((sum + (1 << 20)) >> 21, 0, paper));
    }
  }
  return page;
}

}  // namespace marbelot
