// What canvases draw with.
#pragma once

#include <QPainter>

#include "platform/canvas.h"
#include "platform/linux/picture_cache.h"

namespace marbelot {

class QtPainter : public Painter {
 public:
  // `painter` draws into `view`, which is as high as what is drawn.
  QtPainter(QPainter& painter, QWidget& view, PictureCache& pictures);

  void fill(const Rect& rect, const Color& color, double cornerRadius) override;
  void fillBetween(const Rect& outer, const Rect& inner, const Color& color) override;
  void stroke(const Rect& rect, const Color& color, double lineWidth, double cornerRadius) override;
  void draw(const Image& image, const Rect& rect) override;
  void draw(const std::string& text, const Rect& rect, const Font& font, const Color& color,
            Alignment alignment) override;
  bool drawSymbol(const std::string& name, const Rect& rect, const Color& color) override;
  void clip(const Rect& rect) override;
  double width(const std::string& text, const Font& font) const override;

 private:
  QRectF flipped(const Rect& rect) const;
  QColor colour(const Color& color) const;

  QPainter& painter_;
  QWidget& view_;
  PictureCache& pictures_;
};

}  // namespace marbelot
