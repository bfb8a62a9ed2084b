// A painter that notes what is drawn.
#pragma once

#include <string>
#include <vector>

#include "platform/canvas.h"
#include "platform/text.h"

namespace marbelot {

class RecordedPainter : public Painter {
 public:
  struct Between {
    Rect outer, inner;
  };
  void fill(const Rect& rect, const Color&, double) override { fills.push_back(rect); }
  void fillBetween(const Rect& outer, const Rect& inner, const Color&) override {
    between.push_back({outer, inner});
  }
  void stroke(const Rect& rect, const Color&, double, double) override { strokes.push_back(rect); }
  void draw(const Image& image, const Rect& rect) override {
    images.push_back(rect);
    lastImage = image;
  }
  void draw(const std::string& text, const Rect&, const Font&, const Color&,
            Alignment alignment) override {
    texts.push_back(text);
    alignments.push_back(alignment);
  }
  bool drawSymbol(const std::string& name, const Rect&, const Color&) override {
    texts.push_back(name);
    return true;
  }
  void clip(const Rect&) override {}
  double width(const std::string& text, const Font& font) const override {
    return static_cast<double>(text::characterCount(text)) * font.size * 0.6;
  }
  std::string all() const {
    std::string joined;
    for (const std::string& text : texts) joined += text + "\n";
    return joined;
  }

  std::vector<Rect> fills, strokes, images;
  std::vector<Between> between;
  std::vector<std::string> texts;
  std::vector<Alignment> alignments;
  std::optional<Image> lastImage;
};

// What the canvas draws now.
inline RecordedPainter drawn(CanvasDelegate& canvas, Size bounds) {
  RecordedPainter painter;
  canvas.draw(painter, bounds);
  return painter;
}

}  // namespace marbelot
