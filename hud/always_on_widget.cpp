#include "hud/always_on_widget.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace marbelot {
namespace {

constexpr double cornerMargin = 12;
constexpr double buttonSide = 15;
constexpr double buttonMargin = 2;
// A drag is many moves, and each that is stored writes a file.
constexpr double restSeconds = 0.2;

constexpr const char* widgetView = "widget";
constexpr const char* closeId = "close";
constexpr const char* cornerId = "corner";

// On a picture, which may have any colour, there is something behind it.
View iconButton(const char* id, Button button, const Rect& frame, bool onPicture) {
  button.flat = true;
  if (onPicture) button.background = Color::of(Color::Role::windowBackground, 0.7);
  button.tint = Color::of(Color::Role::secondaryLabel);
  return {id, frame, {.leftMargin = true, .bottomMargin = true}, std::move(button)};
}

}  // namespace

std::optional<std::string> HUDWidgetView::hitTest(Point point) {
  const bool within = Rect{0, 0, shownSize.width, shownSize.height}.contains(point);
  if (!within) return std::nullopt;
  return closeButtonFrame.contains(point) ? closeButton : std::string();
}

std::shared_ptr<Menu> HUDWidgetView::menuForEvent(Point) {
  return menuProvider ? menuProvider() : nullptr;
}

void HUDWidgetView::menuItemChosen(const MenuItem& item) {
  if (onChosen) onChosen(item);
}

// The point is a pixel's upper edge, which at the top is not within.
bool HUDWidgetView::isOnCorner(Point point) const {
  return cornerButtonFrame.contains({point.x, point.y - 0.5});
}

void HUDWidgetView::mouseDown(const MouseEvent& event) {
  down_ = event.point;
  onCorner_ = isOnCorner(event.point);
  if (event.clickCount == 2 && onDoubleClick && !onCorner_) onDoubleClick();
}

void HUDWidgetView::mouseDragged(const MouseEvent& event) {
  if (onCorner_ && !isDrag(down_, event.point)) return;
  onCorner_ = false;
  if (onDrag) onDrag();
}

void HUDWidgetView::mouseUp(const MouseEvent& event) {
  if (std::exchange(onCorner_, false) && isOnCorner(event.point) && onCornerButton)
    onCornerButton();
}

Point widgetCornerOrigin(int corner, Size size, const Rect& area) {
  const bool left = corner == 0 || corner == 2, bottom = corner == 2 || corner == 3;
  return {left ? area.x + cornerMargin : area.maxX() - size.width - cornerMargin,
          bottom ? area.y + cornerMargin : area.maxY() - size.height - cornerMargin};
}

Point freeWidgetOrigin(Point stored, Size size, const Rect& area) {
  return {std::min(std::max(stored.x, area.x), area.maxX() - size.width),
          std::min(std::max(stored.y, area.y), area.maxY() - size.height)};
}

int nextWidgetCorner(int corner) {
  constexpr std::array<int, 4> clockwise{0, 1, 3, 2};
  const auto at = std::find(clockwise.begin(), clockwise.end(), corner);
  const std::size_t index =
      at == clockwise.end() ? 1 : static_cast<std::size_t>(at - clockwise.begin());
  return clockwise[(index + 1) % clockwise.size()];
}

AlwaysOnWidget::AlwaysOnWidget(Platform& platform, Shell& shell, ActionTable& actions,
                               TextAnalyses& analyses,
                               std::function<bool(const PasteboardContents&)> withheld,
                               ContentItems contentItems, std::function<void()> openBigPreview)
    : platform_(platform),
      shell_(shell),
      actions_(actions),
      analyses_(analyses),
      withheld_(std::move(withheld)),
      contentItems_(std::move(contentItems)),
      thumbnails_(platform.queue) {
  alwaysOnPreview.offerToggle(actions, shell, [this] {
    alwaysLastCount = -1;
    refresh();
  });
  actions.add("hideAlwaysOnWidget", [this](const MenuItem&) { hideAlwaysOnWidget(); });
  actions.add("cycleAlwaysHUDCorner", [this](const MenuItem&) { cycleAlwaysHUDCorner(); });
  actions.addOn<std::int64_t>("snapAlwaysHUD:", [this](std::int64_t corner) {
    if (corner >= 0 && corner <= 3) snapAlwaysHUD(static_cast<int>(corner));
  });
  view_.closeButton = closeId;
  view_.menuProvider = [this] { return contextMenu(); };
  view_.onChosen = [this](const MenuItem& item) { actions_.perform(item); };
  view_.onDoubleClick = std::move(openBigPreview);
  view_.onDrag = [this] { alwaysHUDWindow->performDrag(); };
  view_.onCornerButton = [this] { cycleAlwaysHUDCorner(); };
  face_.cornerSpace = 2 * (buttonSide + buttonMargin);
  screens_ = platform_.screens.onChange([this] { screensChanged(); });
}

void AlwaysOnWidget::hideAlwaysOnWidget() {
  alwaysOnPreview = false;
  refresh();
  shell_.rebuildMenu();
}

void AlwaysOnWidget::refresh() {
  if (!alwaysOnPreview) {
    storeMove();
    if (!alwaysHUDWindow || !alwaysHUDWindow->isVisible()) return;
    alwaysHUDWindow->hide();
    thumbnails_.cancel();
    face_.face = TextFace{};
    return;
  }
  const std::int64_t count = platform_.pasteboard.changeCount();
  const PasteboardContents contents = platform_.pasteboard.contents();
  // What was there at the start may come late, and counts as no change.
  const std::array<bool, 3> known{contents.text != nullptr, contents.image.has_value(),
                                  contents.concealed};
  const bool asBefore = count == alwaysLastCount && known == known_;
  if (asBefore && alwaysHUDWindow && alwaysHUDWindow->isVisible()) return;
  alwaysLastCount = count;
  known_ = known;
  if (!alwaysHUDWindow) makeWindow();
  fill(contents);
  place();
  alwaysHUDWindow->showWithoutActivating();
}

std::optional<Rect> AlwaysOnWidget::frame() const {
  if (!alwaysHUDWindow || !alwaysHUDWindow->isVisible()) return std::nullopt;
  return alwaysHUDWindow->frame();
}

void AlwaysOnWidget::analysesChanged() {
  if (!provisional_) return;
  alwaysLastCount = -1;
  refresh();
}

void AlwaysOnWidget::makeWindow() {
  WindowDescription window;
  window.id = "widget";
  window.title = "Clipboard";
  window.titled = false;
  window.panel = true;
  window.level = WindowLevel::floating;
  window.everySpace = true;
  window.movableByBackground = true;
  window.pressed = [this](const std::string& id) {
    id == closeId ? hideAlwaysOnWidget() : cycleAlwaysHUDCorner();
  };
  window.moved = [this] { windowDidMove(); };
  alwaysHUDWindow = platform_.windows.create(std::move(window));
}

HUDLayout AlwaysOnWidget::note(const std::string& text) {
  TextFace face;
  face.heading = text;
  face.font = {.size = 2};
  return compactTextLayout(std::move(face), {}, face_);
}

void AlwaysOnWidget::fill(const PasteboardContents& contents) {
  const Measure measure = [this](const std::string& text, const Font& font) {
    return platform_.windows.textWidth(text, font);
  };
  provisional_ = false;
  thumbnails_.cancel();
  if (withheld_(contents)) return setViews(note("Hidden by its owner"));
  if (contents.image) {
    setViews(compactImageLayout(contents.image->width(), contents.image->height(), face_));
    const Size shown = std::get<ImageFace>(face_.face).frame.size();
    thumbnails_.make(*contents.image, static_cast<int>(std::ceil(shown.width * scale())),
                     static_cast<int>(std::ceil(shown.height * scale())),
                     [this](const std::optional<Image>& made) {
                       auto* face = std::get_if<ImageFace>(&face_.face);
                       if (!face) return;
                       face->thumbnail = made;
                       face->unreadable = !made;
                       alwaysHUDWindow->redraw(hudFace);
                     });
  } else if (contents.text && !contents.text->empty()) {
    const auto analysis = analyses_.of(contents.text);
    provisional_ = analysis->provisional;
    setViews(compactTextLayout(textFace(contents.text, *analysis, compactTextRoom, measure),
                               measure, face_));
  } else {
    setViews(note("The clipboard is empty"));
  }
}

void AlwaysOnWidget::setViews(HUDLayout content) {
  const Size size = content.size;
  const auto button = [&](int place) {
    return Rect{size.width - (buttonSide + buttonMargin) * place,
                size.height - buttonSide - buttonMargin, buttonSide, buttonSide};
  };
  const bool onPicture = std::holds_alternative<ImageFace>(face_.face);
  view_.shownSize = size;
  view_.closeButtonFrame = button(1);
  view_.cornerButtonFrame = button(2);
  content.views.push_back(iconButton(closeId,
                                     {.symbol = "xmark.circle.fill",
                                      .toolTip = "Hide the clipboard widget",
                                      .spoken = "Hide widget"},
                                     view_.closeButtonFrame, onPicture));
  content.views.push_back(iconButton(cornerId,
                                     {.symbol = "arrow.up.left.and.arrow.down.right",
                                      .otherSymbol = "arrow.2.squarepath",
                                      .toolTip = "Move the widget to the next corner",
                                      .spoken = "Move to next corner"},
                                     view_.cornerButtonFrame, onPicture));
  std::vector<View> views;
  views.push_back({widgetView,
                   {0, 0, size.width, size.height},
                   {.width = true, .height = true},
                   Canvas{&view_, std::move(content.views)}});
  alwaysHUDWindow->setContent(size, std::move(views));
}

Rect AlwaysOnWidget::area() const {
  // Before it has been shown, its screen is the one on which it was left.
  const auto stored = storedOrigin();
  const bool known = alwaysHUDWindow && alwaysHUDWindow->isVisible();
  const Rect frame = known    ? alwaysHUDWindow->frame()
                     : stored ? Rect{stored->x, stored->y, 1, 1}
                              : Rect{};
  return screenAreaOf(platform_.screens.all(), frame);
}

int AlwaysOnWidget::corner() const {
  return *alwaysHUDCorner < 0 ? freeWidgetPosition
                              : static_cast<int>(std::min<std::int64_t>(*alwaysHUDCorner, 4));
}

std::optional<Point> AlwaysOnWidget::storedOrigin() const {
  const auto x = alwaysHUDX.stored(), y = alwaysHUDY.stored();
  return x && y ? std::optional(Point{*x, *y}) : std::nullopt;
}

void AlwaysOnWidget::place() {
  storeMove();
  const Size size = alwaysHUDWindow->frame().size();
  const int at = corner();
  const auto stored = storedOrigin();
  if (at == freeWidgetPosition && stored) return moveTo(freeWidgetOrigin(*stored, size, area()));
  moveTo(widgetCornerOrigin(at == freeWidgetPosition ? 1 : at, size, area()));
}

void AlwaysOnWidget::moveTo(Point origin) {
  put_ = origin;
  suppressHUDMoveSave = true;
  alwaysHUDWindow->setOrigin(origin);
  suppressHUDMoveSave = false;
}

void AlwaysOnWidget::snapAlwaysHUD(int corner) {
  storing_.cancel();
  moved_.reset();
  alwaysHUDCorner = corner;
  if (!alwaysHUDWindow) return;
  const Point origin = widgetCornerOrigin(corner, alwaysHUDWindow->frame().size(), area());
  moveTo(origin);
  alwaysHUDX = origin.x;
  alwaysHUDY = origin.y;
}

void AlwaysOnWidget::cycleAlwaysHUDCorner() {
  storeMove();
  snapAlwaysHUD(nextWidgetCorner(corner()));
}

void AlwaysOnWidget::windowDidMove() {
  if (suppressHUDMoveSave || !alwaysHUDWindow || !alwaysHUDWindow->isVisible()) return;
  const Point origin = alwaysHUDWindow->frame().origin();
  // The system may tell of the program's own moves later.
  if (put_ && std::abs(put_->x - origin.x) < 1 && std::abs(put_->y - origin.y) < 1) return;
  put_.reset();
  moved_ = origin;
  storing_ = platform_.queue.after(restSeconds, [this] { storeMove(); });
}

void AlwaysOnWidget::storeMove() {
  const auto origin = std::exchange(moved_, std::nullopt);
  if (!origin) return;
  alwaysHUDCorner = freeWidgetPosition;
  alwaysHUDX = origin->x;
  alwaysHUDY = origin->y;
}

void AlwaysOnWidget::screensChanged() {
  if (alwaysHUDWindow && alwaysHUDWindow->isVisible()) place();
}

std::shared_ptr<Menu> AlwaysOnWidget::contextMenu() {
  auto menu = std::make_shared<Menu>();
  contentItems_(*menu);
  if (!menu->items.empty()) menu->addSeparator();
  menu->add("Move to top-left", "snapAlwaysHUD:", std::int64_t{0});
  menu->add("Move to top-right", "snapAlwaysHUD:", std::int64_t{1});
  menu->add("Move to bottom-left", "snapAlwaysHUD:", std::int64_t{2});
  menu->add("Move to bottom-right", "snapAlwaysHUD:", std::int64_t{3});
  menu->addSeparator();
  menu->add("Hide widget", "hideAlwaysOnWidget");
  return menu;
}

double AlwaysOnWidget::scale() const {
  double largest = 1;
  for (const Screen& screen : platform_.screens.all()) largest = std::max(largest, screen.scale);
  return largest;
}

}  // namespace marbelot
