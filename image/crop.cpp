#include "image/crop.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "image/pixel_operations.h"
#include "platform/image_codec.h"

namespace marbelot {
namespace {

constexpr const char* viewId = "cropView";
constexpr const char* cropId = "crop";
constexpr const char* cancelId = "cancel";
constexpr const char* unreadable = "Couldn't read that image";
constexpr double lineWidth = 1.5;
constexpr double badgeHeight = 20;
constexpr double badgeMargin = 6;

View barButton(const char* id, const char* title, double x, bool isDefault) {
  Button button;
  button.title = title;
  button.defaultKey = isDefault;
  return {id, {x, 8, 90, 28}, {}, std::move(button)};
}

}  // namespace

void CropView::draw(Painter& painter, Size size) {
  bounds = size;
  painter.fill({0, 0, size.width, size.height}, Color::of(Color::Role::windowBackground));
  const Rect shown = imageRectangle();
  if (image) painter.draw(*image, shown);
  if (selection.isEmpty()) return;
  const Rect selected = selection.intersection(shown);
  painter.fillBetween(shown, selected, Color::black(0.5));
  if (selected.isEmpty()) return;
  painter.stroke(selected, Color::white(), lineWidth);
  drawSize(painter, selected);
}

// The size in pixels, beside the selection or, where there is no room, in it.
void CropView::drawSize(Painter& painter, const Rect& selected) const {
  const auto pixels = selectedPixels(selection, imageRectangle(), width, height);
  if (!pixels) return;
  const std::string text =
      std::to_string(pixels->width) + " × " + std::to_string(pixels->height) + " px";
  const Font font{.size = 12, .weight = Font::Weight::semibold};
  const double badgeWidth = std::ceil(painter.width(text, font)) + 16;
  Rect badge{selected.midX() - badgeWidth / 2, selected.y - badgeMargin - badgeHeight, badgeWidth,
             badgeHeight};
  if (badge.y < 0) badge.y = selected.maxY() + badgeMargin;
  if (badge.maxY() > bounds.height) badge.y = selected.y + badgeMargin;
  badge.x = std::max(0.0, std::min(badge.x, bounds.width - badgeWidth));
  painter.fill(badge, Color::black(0.75), badgeHeight / 2);
  painter.draw(text, badge, font, Color::white(), Alignment::centre);
}

void CropView::mouseDown(const MouseEvent& event) {
  dragStart = event.point;
  selection = {dragStart.x, dragStart.y, 0, 0};
  if (changed) changed();
}

void CropView::mouseDragged(const MouseEvent& event) {
  selection = spanned(dragStart, event.point);
  if (changed) changed();
}

Crop::Crop(Platform& platform, Shell& shell, ActionTable& actions, HistoryImage historyImage,
           std::function<Rect()> area)
    : platform_(platform),
      shell_(shell),
      historyImage_(std::move(historyImage)),
      area_(std::move(area)) {
  actions.add("cropClipImage:", [this](const MenuItem& sender) { cropClipImage(sender); });
  actions.add("applyCrop", [this](const MenuItem&) { applyCrop(); });
  actions.add("cancelCrop", [this](const MenuItem&) { cancelCrop(); });
  cropView.changed = [this] {
    if (cropWindow) cropWindow->redraw(viewId);
  };
}

void Crop::cropClipImage(const MenuItem& sender) {
  const auto request = editRequest(sender);
  if (const auto* file = std::get_if<EditFile>(&request->source))
    return load([path = file->path] { return Image::fromFile(path); }, unreadable, {});
  if (!std::holds_alternative<EditClipboard>(request->source))
    return load([image = historyImage_(sender)] { return image; }, unreadable, {});
  const PasteboardContents contents = platform_.pasteboard.contents();
  load([image = contents.image] { return image; }, "No image on clipboard",
       {.concealed = contents.concealed});
}

void Crop::cropForEditor(const Image& image, bool concealed) {
  load([image]() -> std::optional<Image> { return image; }, unreadable,
       {.returnsToEditor = true, .concealed = concealed});
}

// What is being cropped makes way for the new picture once that can be shown.
void Crop::load(Source source, const std::string& failure, const Purpose& purpose) {
  // When the editor asks again, it is hidden for the new picture.
  const bool returned = std::exchange(loadingForEditor_, purpose.returnsToEditor);
  if (returned && !purpose.returnsToEditor && onCancelled) onCancelled();
  double scale = 1;
  for (const Screen& screen : platform_.screens.all()) scale = std::max(scale, screen.scale);
  loading_ = platform_.queue.inBackground(
      [source = std::move(source), area = area_(), scale]() -> Loaded {
        Loaded loaded;
        const auto image = source();
        loaded.pixels = image ? decode(*image) : nullptr;
        if (!loaded.pixels) return loaded;
        const int width = loaded.pixels->width(), height = loaded.pixels->height();
        loaded.view = cropViewSize(width, height, area);
        const Rect rect = cropImageRectangle(width, height, loaded.view);
        const auto pixels = [&](double points) {
          return std::max<std::int64_t>(1, std::lround(points * scale));
        };
        const std::int64_t w = pixels(rect.width), h = pixels(rect.height);
        loaded.shown = Image::fromPixels(loaded.pixels);
        if (w >= width || h >= height) return loaded;
        if (Result small = resizeTo(*loaded.pixels, w, h))
          loaded.shown = Image::fromPixels(std::make_shared<const Bitmap>(std::move(*small)));
        return loaded;
      },
      [this, failure, purpose](const Loaded& loaded) {
        loadingForEditor_ = false;
        if (!loaded.pixels) {
          shell_.notify(failure);
          if (purpose.returnsToEditor && onCancelled) onCancelled();
          return;
        }
        // The editor would come to the front in place of this window.
        purpose.returnsToEditor ? close() : cancelCrop();
        cropReturnsToEditor = purpose.returnsToEditor;
        concealed_ = purpose.concealed;
        openWindow(loaded);
      });
}

void Crop::openWindow(const Loaded& loaded) {
  pixels_ = loaded.pixels;
  cropView.width = pixels_->width();
  cropView.height = pixels_->height();
  cropView.image = loaded.shown;
  cropView.selection = {};
  cropView.bounds = loaded.view;

  WindowDescription window;
  window.id = "crop";
  window.title = "Crop — drag to select, then Crop";
  window.contentSize = {loaded.view.width, loaded.view.height + cropBarHeight};
  window.views.push_back({viewId,
                          {0, cropBarHeight, loaded.view.width, loaded.view.height},
                          {},
                          Canvas{&cropView, {}}});
  window.views.push_back(barButton(cancelId, "Cancel", 12, false));
  window.views.push_back(barButton(cropId, "Crop", loaded.view.width - 102, true));
  window.pressed = [this](const std::string& id) { id == cropId ? applyCrop() : cancelCrop(); };
  window.closed = [this] { cancelCrop(); };
  cropWindow = platform_.windows.create(std::move(window));
  cropWindow->center();
  cropWindow->show();
}

// The window may be in the middle of telling of a click.
void Crop::close() {
  if (!cropWindow) return;
  cropWindow->hide();
  closing_ = platform_.queue.after(
      0, [window = std::shared_ptr<Window>(std::move(cropWindow))]() mutable { window.reset(); });
  cropView.image.reset();
}

void Crop::applyCrop() {
  if (!cropWindow) return;
  const auto part = selectedPixels(cropView.selection, cropView.imageRectangle(), cropView.width,
                                   cropView.height);
  if (!part) return shell_.notify("Drag a rectangle to select the crop area");
  close();
  cutting_ = platform_.queue.inBackground(
      [pixels = std::exchange(pixels_, nullptr), part = *part]() -> std::optional<Image> {
        Result result = cut(*pixels, part);
        if (!result) return std::nullopt;
        return Image::fromPixels(std::make_shared<const Bitmap>(std::move(*result)));
      },
      [this, purpose = Purpose{std::exchange(cropReturnsToEditor, false), concealed_}](
          const std::optional<Image>& cropped) {
        if (cropped) return deliver(*cropped, purpose);
        shell_.notify(unreadable);
        if (purpose.returnsToEditor && onCancelled) onCancelled();
      });
}

void Crop::deliver(const Image& cropped, const Purpose& purpose) {
  if (purpose.returnsToEditor && onReturn && onReturn(cropped)) return shell_.notify("Cropped");
  shell_.confirmCopy(platform_.pasteboard.write(cropped, purpose.concealed).has_value(), "Cropped");
}

void Crop::cancelCrop() {
  if (!cropWindow) return;
  close();
  pixels_.reset();
  if (std::exchange(cropReturnsToEditor, false) && onCancelled) onCancelled();
}

}  // namespace marbelot
