// What a window shows, as data.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "platform/canvas.h"
#include "platform/geometry.h"
#include "platform/image.h"

namespace marbelot {

// What follows the growth of what a view stands in; the sides that are not flexible keep their
// distance.
struct Resizing {
  bool width = false;
  bool height = false;
  bool leftMargin = false;
  bool bottomMargin = false;
  bool topMargin = false;  // with bottomMargin: both alike, so that it stays centred
};

// Text that is not editable.
struct Label {
  std::string text{};
  Font font{};
  Color color = Color::of(Color::Role::label);
  Alignment alignment = Alignment::left;
  bool multiline =
      false;  // breaks at line breaks and where it is full; else one line, cut with "…"
};

struct Button {
  std::string title{};        // may be empty when there is a symbol
  std::string symbol{};       // a system symbol before the title; empty: none
  std::string otherSymbol{};  // where the system has none of that name
  std::string toolTip{};
  // What screen readers say where there is no title; empty: the tool tip.
  std::string spoken{};
  Font font{};
  // A flat one of a bar: no border, `background` behind it with a corner radius of 5 points, symbol
  // and title in `tint`. A click works without activating the application. Else a push button.
  bool flat = false;
  Color tint = Color::of(Color::Role::label);
  Color background = Color::of(Color::Role::label, 0);
  bool enabled = true;
  bool small = false;       // a push button of the small size
  bool defaultKey = false;  // pressed by Return while no text takes it; see WindowDescription
};

// Plain text that scrolls vertically.
struct TextArea {
  std::string text{};
  Font font{};
  bool editable = false;     // undone by words and pauses. One only to be read has no caret
  bool bordered = false;     // a bezel around it
  bool transparent = false;  // what lies behind shows
  Size inset{};              // blank space around it
};

// Shown as large as fits, in its own proportions, never enlarged beyond one point a pixel.
struct Picture {
  Image image;
};

struct View;

// Draws a background and holds views, whose frames are in its own coordinates.
struct Container {
  Color background = Color::of(Color::Role::windowBackground, 0);
  double cornerRadius = 0;
  std::vector<View> views;
};

// Drawn by its delegate, which outlives the view; the views that it contains lie on it.
struct Canvas {
  CanvasDelegate* delegate = nullptr;
  std::vector<View> views;
};

using ViewContent = std::variant<Label, Button, TextArea, Picture, Container, Canvas>;

struct View {
  std::string id;  // unique in its window; of a button, also what `marbelotctl press` calls it
  Rect frame{};
  Resizing resizing{};
  ViewContent content;
};

}  // namespace marbelot
