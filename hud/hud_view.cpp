#include "hud/hud_view.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace marbelot {
namespace {

constexpr double cardRadius = 12;
constexpr double padding = 12;
constexpr double headingHeight = 16;
constexpr double gap = 8;
constexpr double wellRadius = 6;
constexpr double squareSide = 8;  // of the pattern behind what is transparent
constexpr double dragDistance = 4;

constexpr Font headingFont{.size = 11, .weight = Font::Weight::semibold};

double lineHeight(const Font& font) { return std::ceil(font.size * 1.35); }

double textHeight(const TextFace& face) {
  return lineHeight(face.font) * static_cast<double>(std::max<std::size_t>(face.lines.size(), 1));
}

void drawPattern(Painter& painter, const Rect& frame) {
  painter.fill(frame, Color::white());
  const Color gray{0.82, 0.82, 0.82};
  for (int row = 0; row * squareSide < frame.height; ++row) {
    for (int column = row % 2; column * squareSide < frame.width; column += 2) {
      painter.fill(
          Rect{frame.x + column * squareSide, frame.y + row * squareSide, squareSide, squareSide}
              .intersection(frame),
          gray);
    }
  }
}

Rect onPixels(const Rect& rect) {
  return {std::round(rect.x), std::round(rect.y), std::max(std::round(rect.width), 1.0),
          std::max(std::round(rect.height), 1.0)};
}

struct ImagePlace {
  Rect well, frame;
};

// Above `below`, the distance to the panel's lower edge.
ImagePlace imagePlace(int width, int height, const ImageRoom& room, double below) {
  const Rect fitted = fittedFrame(width, height, {0, 0, room.most.width, room.most.height});
  const Rect well{padding, below, std::max(leastImageBarWidth, room.most.width),
                  std::max(std::ceil(fitted.height), room.leastHeight)};
  return {well, onPixels(fittedFrame(width, height, well))};
}

View faceView(Size size, HUDClickView& view, std::vector<View> views) {
  return {hudFace,
          {0, 0, size.width, size.height},
          {.width = true, .height = true},
          Canvas{&view, std::move(views)}};
}

HUDLayout onCard(Size size, HUDClickView& view, EditBar bar) {
  for (View& button : bar.views) {
    button.frame.x += padding;
    button.frame.y += padding;
  }
  std::vector<View> views;
  views.push_back(faceView(size, view, std::move(bar.views)));
  HUDLayout layout{size, {}};
  layout.views.push_back(cardView(size, std::move(views)));
  return layout;
}

}  // namespace

void HUDClickView::draw(Painter& painter, Size bounds) {
  if (const auto* text = std::get_if<TextFace>(&face)) {
    drawText(painter, bounds, *text);
  } else {
    drawImage(painter, std::get<ImageFace>(face));
  }
}

void HUDClickView::drawText(Painter& painter, Size bounds, const TextFace& text) const {
  const double width = bounds.width - 2 * padding;
  double y = bounds.height - padding - headingHeight;
  painter.draw(text.heading, {padding, y, width - cornerSpace, headingHeight}, headingFont,
               Color::of(Color::Role::secondaryLabel), Alignment::left);
  y -= gap / 2;
  for (const std::string& line : text.lines) {
    y -= lineHeight(text.font);
    painter.draw(line, {padding, y, width, lineHeight(text.font)}, text.font,
                 Color::of(Color::Role::label),
                 startsRightToLeft(line) ? Alignment::right : Alignment::left);
  }
}

void HUDClickView::drawImage(Painter& painter, const ImageFace& image) const {
  painter.fill(image.well, Color::of(Color::Role::label, 0.06), wellRadius);
  if (image.thumbnail) {
    drawPattern(painter, image.frame);
    painter.draw(*image.thumbnail, image.frame);
  } else if (image.unreadable) {
    painter.draw("This image can't be read", image.well, {.size = 12},
                 Color::of(Color::Role::secondaryLabel), Alignment::centre);
  }
  if (!image.caption.empty()) {
    painter.draw(
        image.caption,
        {image.well.x, image.well.y - gap / 2 - headingHeight, image.well.width, headingHeight},
        headingFont, Color::of(Color::Role::secondaryLabel), Alignment::centre);
  }
}

void HUDClickView::mouseDown(const MouseEvent& event) {
  down_ = event.point;
  dragged_ = false;
}

bool isDrag(Point from, Point to) {
  return std::hypot(to.x - from.x, to.y - from.y) >= dragDistance;
}

void HUDClickView::mouseDragged(const MouseEvent& event) {
  if (dragged_ || !isDrag(down_, event.point)) return;
  dragged_ = true;
  if (onDrag) onDrag();
}

void HUDClickView::mouseUp(const MouseEvent&) {
  // The click may take the panel away.
  const auto click = onClick;
  if (!std::exchange(dragged_, true) && click) click();
}

std::shared_ptr<Menu> HUDClickView::menuForEvent(Point) {
  return menuProvider ? menuProvider() : nullptr;
}

void HUDClickView::menuItemChosen(const MenuItem& item) {
  if (onChosen) onChosen(item);
}

void addPanelItems(Menu& menu, bool showsImage) {
  menu.add("Move to next corner", "cycleHUDPlacement");
  if (showsImage) menu.add("Open copied-images folder", "openClipImagesFolder");
}

View cardView(Size size, std::vector<View> views) {
  return {hudCard,
          {0, 0, size.width, size.height},
          {.width = true, .height = true},
          Container{Color::of(Color::Role::windowBackground, 0.94), cardRadius, std::move(views)}};
}

std::string pixelSizeTitle(int width, int height) {
  return std::to_string(width) + " × " + std::to_string(height);
}

Size shownImageSize(int width, int height, const ImageRoom& room) {
  return imagePlace(width, height, room, 0).frame.size();
}

HUDLayout imageLayout(int width, int height, std::string caption, const ImageRoom& room,
                      const std::vector<EditBarButton>& buttons, const Measure& measure,
                      HUDClickView& view) {
  EditBar bar;
  if (!buttons.empty())
    bar = layOutBar(buttons, std::max(leastImageBarWidth, room.most.width), true, measure);
  const double barSpace = bar.height > 0 ? bar.height + gap : 0;
  const auto [well, frame] =
      imagePlace(width, height, room, padding + barSpace + headingHeight + gap / 2);
  ImageFace face;
  face.caption = std::move(caption);
  face.well = well;
  face.frame = frame;
  view.face = std::move(face);
  return onCard({well.maxX() + padding, well.maxY() + padding}, view, std::move(bar));
}

HUDLayout textLayout(TextFace face, double width, const std::vector<EditBarButton>& buttons,
                     const Measure& measure, HUDClickView& view) {
  EditBar bar;
  if (!buttons.empty()) bar = layOutBar(buttons, width, false, measure);
  const double barSpace = bar.height > 0 ? bar.height + gap + 2 : 0;
  const double height = 2 * padding + headingHeight + gap / 2 + textHeight(face) + barSpace;
  view.face = std::move(face);
  return onCard({width + 2 * padding, height}, view, std::move(bar));
}

HUDLayout textAreaLayout(TextFace face, const std::string& textView,
                         const std::vector<EditBarButton>& buttons, const Measure& measure,
                         HUDClickView& view) {
  constexpr double inset = 4;
  const double width = editorTextRoom.width + 2 * inset;
  const double areaHeight = textHeight(face) + lineHeight(face.font) + 2 * inset;
  EditBar bar = layOutBar(buttons, width, false, measure);
  const double below = padding + bar.height + gap;
  const Font font = face.font;
  face.lines.clear();
  view.face = std::move(face);
  HUDLayout layout =
      onCard({width + 2 * padding, below + areaHeight + gap / 2 + headingHeight + padding}, view,
             std::move(bar));
  auto& card = std::get<Container>(layout.views.front().content);
  card.views.push_back({textView,
                        {padding, below, width, areaHeight},
                        {},
                        TextArea{.font = font, .transparent = true, .inset = {inset, inset}}});
  return layout;
}

HUDLayout compactImageLayout(int width, int height, HUDClickView& view) {
  constexpr Size most{200, 130};
  constexpr Size least{96, 54};
  constexpr double margin = 6;
  const Rect fitted = fittedFrame(width, height, {0, 0, most.width, most.height});
  ImageFace face;
  face.well = {margin, margin, std::max(std::ceil(fitted.width), least.width),
               std::max(std::ceil(fitted.height), least.height)};
  face.frame = onPixels(fittedFrame(width, height, face.well));
  const Size size{face.well.width + 2 * margin, face.well.height + 2 * margin};
  view.face = std::move(face);
  return onCard(size, view, {});
}

HUDLayout compactTextLayout(TextFace face, const Measure& measure, HUDClickView& view) {
  return textLayout(std::move(face), compactTextRoom.width, {}, measure, view);
}

}  // namespace marbelot
