// The body of a panel: a text's or a picture's face, drawn, and the panel's views around it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "hud/edit_bar.h"
#include "hud/text_face.h"
#include "hud/thumbnails.h"
#include "platform/canvas.h"
#include "platform/view.h"

namespace marbelot {

// What a panel shows of a picture.
struct ImageFace {
  std::string caption;             // "3840 × 2160"
  Rect well;                       // in the panel; the picture stands in its middle
  Rect frame;                      // of the picture
  std::optional<Image> thumbnail;  // none until it is made
  bool unreadable = false;
};

// Whether the pointer went further from where the button went down than a hand trembles in a click.
bool isDrag(Point from, Point to);

// A click acts without activating the application; a drag moves the panel.
class HUDClickView : public CanvasDelegate {
 public:
  std::function<void()> onClick;
  std::function<void()> onDrag;
  std::function<std::shared_ptr<Menu>()> menuProvider;
  std::function<void(const MenuItem&)> onChosen;

  std::variant<TextFace, ImageFace> face;
  double cornerSpace = 0;  // what stands in the upper right corner needs this width

  void draw(Painter& painter, Size bounds) override;
  void mouseDown(const MouseEvent& event) override;
  void mouseDragged(const MouseEvent& event) override;
  void mouseUp(const MouseEvent& event) override;
  std::shared_ptr<Menu> menuForEvent(Point) override;
  void menuItemChosen(const MenuItem& item) override;

 private:
  void drawText(Painter& painter, Size bounds, const TextFace& text) const;
  void drawImage(Painter& painter, const ImageFace& image) const;

  Point down_;
  bool dragged_ = false;
};

// The ids of the views of every panel, besides those of its buttons.
inline constexpr const char* hudCard = "card";
inline constexpr const char* hudFace = "face";

struct HUDLayout {
  Size size;
  std::vector<View> views;
};

// How large a picture's face may be, and how small its room, in points.
struct ImageRoom {
  Size most{440, 290};
  double leastHeight = 96;
};

// The size in points at which `imageLayout` shows a picture.
Size shownImageSize(int width, int height, const ImageRoom& room);

// A panel of a picture or of a text with its bar; with no buttons there is no bar. The canvas is
// `view`, whose face is brought up to the layout.
HUDLayout imageLayout(int width, int height, std::string caption, const ImageRoom& room,
                      const std::vector<EditBarButton>& buttons, const Measure& measure,
                      HUDClickView& view);
HUDLayout textLayout(TextFace face, double width, const std::vector<EditBarButton>& buttons,
                     const Measure& measure, HUDClickView& view);
// The text's face with all of its text, to be scrolled, in a view of its own.
HUDLayout textAreaLayout(TextFace face, const std::string& textView,
                         const std::vector<EditBarButton>& buttons, const Measure& measure,
                         HUDClickView& view);
// The same, small: for what is always on the screen.
HUDLayout compactImageLayout(int width, int height, HUDClickView& view);
HUDLayout compactTextLayout(TextFace face, const Measure& measure, HUDClickView& view);

// The room of a text's face in a panel, and in a small one.
inline constexpr FaceRoom hudTextRoom{372, 9};
inline constexpr FaceRoom editorTextRoom{412, 14};
inline constexpr FaceRoom compactTextRoom{196, 3};

// Adds the items that other features offer for the clipboard's content.
using ContentItems = std::function<void(Menu& menu)>;
// Adds what a right click on every panel offers.
void addPanelItems(Menu& menu, bool showsImage);

// A rounded panel that views stand on. Translucent where the desktop allows.
View cardView(Size size, std::vector<View> views);

// "3840 × 2160", in pixels.
std::string pixelSizeTitle(int width, int height);

}  // namespace marbelot
