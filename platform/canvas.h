// A view that a feature draws and that hands it the mouse and the keys.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/geometry.h"
#include "platform/image.h"
#include "platform/keyboard.h"
#include "platform/menu.h"

namespace marbelot {

// A colour of its own, or one that follows the system's light or dark appearance.
struct Color {
  enum class Role { fixed, label, secondaryLabel, windowBackground, accent };
  double red = 0;  // components of sRGB, 0 to 1; for Role::fixed
  double green = 0;
  double blue = 0;
  double alpha = 1;  // with every role
  Role role = Role::fixed;
  bool operator==(const Color&) const = default;

  static Color white(double alpha = 1) { return {1, 1, 1, alpha}; }
  static Color black(double alpha = 1) { return {0, 0, 0, alpha}; }
  static Color of(Role role, double alpha = 1) { return {0, 0, 0, alpha, role}; }
};

enum class Alignment { left, centre, right };

struct Font {
  double size = 13;  // points
  bool monospaced = false;
  enum class Weight { regular, semibold, bold } weight = Weight::regular;
  bool operator==(const Font&) const = default;
};

// Draws in the coordinates of the view: points, origin at the bottom left. Edges are smooth.
class Painter {
 public:
  virtual ~Painter() = default;
  virtual void fill(const Rect& rect, const Color& color, double cornerRadius = 0) = 0;
  // Fills what lies in exactly one of both (the even-odd rule).
  virtual void fillBetween(const Rect& outer, const Rect& inner, const Color& color) = 0;
  // The line runs along the rectangle's edge, half of its width on either side.
  virtual void stroke(const Rect& rect, const Color& color, double lineWidth,
                      double cornerRadius = 0) = 0;
  // Fills `rect`; high-quality when it has to be resized. Nothing while the image is being decoded
  // for the first time: the view is drawn again then.
  virtual void draw(const Image& image, const Rect& rect) = 0;
  // One line, vertically centred in `rect`; cut with "…" where it does not fit.
  virtual void draw(const std::string& text, const Rect& rect, const Font& font, const Color& color,
                    Alignment alignment) = 0;
  // A system symbol, as large as fits into `rect`. False when there is none of that name.
  virtual bool drawSymbol(const std::string& name, const Rect& rect, const Color& color) = 0;
  // What is drawn later shows only within `rect`, until the drawing ends.
  virtual void clip(const Rect& rect) = 0;
  // The width of `text` on one line, in points.
  virtual double width(const std::string& text, const Font& font) const = 0;
};

struct MouseEvent {
  Point point;  // in the view: the upper left corner of the pixel
  int clickCount = 1;
};

// What a canvas is. Outlives its view. Main thread only.
class CanvasDelegate {
 public:
  virtual ~CanvasDelegate() = default;
  virtual void draw(Painter& painter, Size bounds) = 0;

  virtual void mouseDown(const MouseEvent&) {}
  virtual void mouseDragged(const MouseEvent&) {}
  virtual void mouseUp(const MouseEvent&) {}
  // Who gets the mouse at `point`, which lies within the canvas: the id of a view that it contains,
  // or empty for the canvas itself. None: as it lies on top of each other.
  virtual std::optional<std::string> hitTest(Point) { return std::nullopt; }
  // A right click. Null: no menu.
  virtual std::shared_ptr<Menu> menuForEvent(Point) { return nullptr; }
  // An item of that menu was chosen.
  virtual void menuItemChosen(const MenuItem&) {}

  // While the canvas has the focus. True: the key goes no further.
  virtual bool keyDown(const KeyEvent&) { return false; }
  // Keys with Command (Control), before shortcuts see them. True: they never do.
  virtual bool performKeyEquivalent(const KeyEvent&) { return false; }
};

}  // namespace marbelot
