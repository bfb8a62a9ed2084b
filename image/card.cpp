#include "image/card.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "image/bands.h"
#include "image/paint.h"
#include "image/resampler.h"
#include "platform/fast_path.h"

namespace marbelot {
namespace {

// Four channels before they are rounded.
using Levels = std::array<float, 4>;

// What is below a premultiplied pixel of which so much shows.
template <typename Pixel>
Levels drawnOver(const Pixel& pixel, float shown, const Levels& below) {
  const float hidden = 1 - static_cast<float>(pixel[3]) * shown / 255;
  Levels levels{};
  for (std::size_t channel = 0; channel < 4; ++channel) {
    levels[channel] = static_cast<float>(pixel[channel]) * shown + below[channel] * hidden;
  }
  return levels;
}

// The picture as it lies on the canvas: the columns and rows that the opening touches.
class PlacedPicture {
 public:
  PlacedPicture(const Bitmap& picture, const Card& card)
      : picture_(picture),
        left_(firstTouched(card.width, card.opening.width)),
        top_(firstTouched(card.height, card.opening.height)),
        across_(axis(card.width - 2 * left_, picture.width(), card.scale)),
        down_(axis(card.height - 2 * top_, picture.height(), card.scale)) {
    if (isWhole(across_) && isWhole(down_)) return;
    resampler_.emplace(picture, across_, down_);
    line_.resize(static_cast<std::size_t>(across_.count) * 4);
  }

  std::int64_t left() const { return left_; }
  bool touches(std::int64_t y) const { return y >= top_ && y < top_ + down_.count; }

  // The pixels from column left() on of a row that it touches.
  const std::uint8_t* row(std::int64_t y) {
    const int row = static_cast<int>(y - top_);
    if (!resampler_) {
      return picture_.row(static_cast<int>(down_.start) + row) +
             4 * static_cast<int>(across_.start);
    }
    resampler_->row(row, line_.data());
    return line_.data();
  }

 private:
  static std::int64_t firstTouched(std::int64_t canvas, double opening) {
    return std::max<std::int64_t>(
        0, static_cast<std::int64_t>(std::floor((static_cast<double>(canvas) - opening) / 2)));
  }
  static SampledAxis axis(std::int64_t count, int side, double scale) {
    return {static_cast<int>(count), (side - static_cast<double>(count) / scale) / 2, 1 / scale};
  }
  // Pixel lies on pixel.
  static bool isWhole(const SampledAxis& axis) {
    return axis.step == 1 && axis.start == std::floor(axis.start);
  }

  const Bitmap& picture_;
  std::int64_t left_, top_;
  SampledAxis across_, down_;
  std::optional<Resampler> resampler_;
  std::vector<std::uint8_t> line_;
};

// Paints row by row, from both ends towards the middle, for a row is the same on the right as on
// the left. Edges are ramps, where a pixel is partly covered; between them all is solid:
//
//   shadow | ramp | badge | ramp | picture | ramp | badge | ramp | shadow
//                                     ^ the middle of the canvas
//
// Near the top and the bottom rows are not solid, and the rest of them is painted as a ramp is.
class CardPainter {
 public:
  CardPainter(const Bitmap& picture, const Card& card)
      : card_(card),
        half_(card.width / 2),
        picture_(picture, card),
        opening_(card.opening, card.width, card.height),
        clear_(static_cast<std::size_t>(card.width)) {
    if (!card.badge) return;
    badge_.emplace(card.badge->shape, card.width, card.height);
    shadow_.emplace(card.badge->shape, card.badge->shadow, card.width, card.height);
  }

  void paintRow(int y, std::uint8_t* to) {
    to_ = to;
    done_ = 0;
    pictureRow_ = picture_.touches(y) ? picture_.row(y) : nullptr;
    openingRow_ = &opening_.row(y);
    badgeRow_ = badge_ ? &badge_->row(y) : openingRow_;
    const bool onBadge = badge_ && isSolid(*badgeRow_);
    shadowRow_ =
        shadow_ ? shadow_->row(y, onBadge ? badgeRow_->innerBegin() : half_ + 1) : clear_.data();

    paintSides(&CardPainter::paintShadow, badgeRow_->begin);
    if (onBadge) {
      paintSides(&CardPainter::paintAll, badgeRow_->innerBegin());
      paintSides(&CardPainter::paintBadge, openingRow_->begin);
    }
    Paint middle = &CardPainter::paintAll;
    if (isSolid(*openingRow_) && (onBadge || !badge_)) {
      paintSides(&CardPainter::paintAll, openingRow_->innerBegin());
      middle = onBadge ? &CardPainter::paintPictureOnBadge : &CardPainter::paintPicture;
    }
    (this->*middle)(done_, card_.width - done_);
  }

 private:
  using Paint = void (CardPainter::*)(std::int64_t begin, std::int64_t end);

  // Whether it covers the pixels between its edges wholly, but for what adding up floats loses:
  // less than a quarter of a level.
  bool isSolid(const Coverage::Row& row) const {
    return row.inner > 0.999f && row.innerBegin() <= half_;
  }

  // From where the left half is done to `end`, and the same on the right.
  void paintSides(Paint paint, std::int64_t end) {
    end = std::clamp(end, done_, half_);
    (this->*paint)(done_, end);
    (this->*paint)(card_.width - end, card_.width - done_);
    done_ = end;
  }

  void paintShadow(std::int64_t begin, std::int64_t end) {
    shadePixels(shadowRow_ + begin, to_ + 4 * begin, end - begin);
  }
  void paintBadge(std::int64_t begin, std::int64_t end) {
    fillPixels(card_.badge->color, to_ + 4 * begin, end - begin);
  }
  void paintPicture(std::int64_t begin, std::int64_t end) {
    copyPixels(pictureAt(begin), to_ + 4 * begin, end - begin);
  }
  void paintPictureOnBadge(std::int64_t begin, std::int64_t end) {
    drawPixelsOver(card_.badge->color, pictureAt(begin), to_ + 4 * begin, end - begin);
  }
  // The shadow, the badge and the picture, each as far as it covers a pixel.
  void paintAll(std::int64_t begin, std::int64_t end) {
    for (std::int64_t x = begin; x < end; ++x) {
      Levels levels{0, 0, 0, static_cast<float>(shadowRow_[x])};
      if (badge_) {
        const PixelColor color = card_.badge->color;
        levels = drawnOver(std::array{color.red, color.green, color.blue, std::uint8_t{255}},
                           badgeRow_->at(x, card_.width), levels);
      }
      const float shown = openingRow_->at(x, card_.width);
      if (shown > 0) levels = drawnOver(pictureAt(x), shown, levels);
      std::transform(levels.begin(), levels.end(), to_ + 4 * x, [](float level) {
        const float above = std::min(level, 255.0f) + 0.5f;
        return static_cast<std::uint8_t>(above);
      });
    }
  }

  const std::uint8_t* pictureAt(std::int64_t x) const {
    return pictureRow_ + 4 * (x - picture_.left());
  }

  const Card& card_;
  std::int64_t half_;  // of the width
  PlacedPicture picture_;
  Coverage opening_;
  std::optional<Coverage> badge_;
  std::optional<SoftShadow> shadow_;
  std::vector<std::uint8_t> clear_;

  // Of the row that is painted.
  std::uint8_t* to_ = nullptr;
  std::int64_t done_ = 0;  // columns from the left, and as many from the right
  const std::uint8_t* pictureRow_ = nullptr;
  const Coverage::Row* openingRow_ = nullptr;
  const Coverage::Row* badgeRow_ = nullptr;  // the opening's when there is no badge
  const std::uint8_t* shadowRow_ = nullptr;  // alpha levels
};

}  // namespace

Result drawCard(const Bitmap& picture, const Card& card) {
  Result result = Result::canvas(card.width, card.height);
  if (!result) return result;
  inBands(result->height(), card.width * card.height, [&](int begin, int end) {
    CardPainter painter(picture, card);
    for (int y = begin; y < end; ++y) painter.paintRow(y, result->row(y));
    finishStreaming();
  });
  return result;
}

}  // namespace marbelot
