#include "hud/big_preview.h"

#include <utility>

namespace marbelot {
namespace {

constexpr Size size{560, 420};
constexpr double margin = 12;
constexpr const char* pictureView = "picture";

}  // namespace

void BigPreviewView::draw(Painter& painter, Size bounds) {
  const Rect all{0, 0, bounds.width, bounds.height};
  painter.fill(all, Color::of(Color::Role::windowBackground));
  if (!image)
    return painter.draw(note, all, {}, Color::of(Color::Role::secondaryLabel), Alignment::centre);
  painter.draw(*image, fittedFrame(image->width(), image->height(), all.enlarged(-margin)));
}

BigPreview::BigPreview(Platform& platform, std::function<bool(const PasteboardContents&)> withheld,
                       std::function<void()> showText)
    : platform_(platform), withheld_(std::move(withheld)), showText_(std::move(showText)) {}

void BigPreview::makeWindow() {
  WindowDescription window;
  window.id = "preview";
  window.contentSize = size;
  window.miniaturizable = true;
  window.resizable = true;
  window.views = {{pictureView,
                   {0, 0, size.width, size.height},
                   {.width = true, .height = true},
                   Canvas{&view_, {}}}};
  window.closed = [this] { view_.image.reset(); };
  bigPreviewWindow = platform_.windows.create(std::move(window));
}

void BigPreview::openBigPreview() {
  const PasteboardContents contents = platform_.pasteboard.contents();
  const bool withheld = withheld_(contents);
  if (contents.text && !contents.image && !withheld) return showText_();
  if (!bigPreviewWindow) makeWindow();
  view_.image = withheld ? std::nullopt : contents.image;
  view_.note = withheld ? "Hidden by its owner" : "The clipboard is empty";
  bigPreviewWindow->setTitle(view_.image ? "Clipboard — " + std::to_string(view_.image->width()) +
                                               " × " + std::to_string(view_.image->height())
                                         : "Clipboard");
  bigPreviewWindow->redraw(pictureView);
  if (!bigPreviewWindow->isVisible()) bigPreviewWindow->center();
  bigPreviewWindow->show();
}

}  // namespace marbelot
