#include "hud/clipboard_hud.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/text.h"

namespace marbelot {
namespace {

// Long enough to be read and to be reached with the pointer.
constexpr double shownSeconds = 3;
constexpr double leavingSeconds = 0.4;
constexpr double firstLookSeconds = 0.6;
constexpr double lookSeconds = 0.25;
constexpr double menuGap = 8;

constexpr FaceRoom revealRoom{520, 24};
constexpr std::size_t revealedBytes = 8192;
constexpr double revealSeconds = 6;
constexpr double besidePointer = 18;

}  // namespace

ClipboardHUD::ClipboardHUD(Platform& platform, Shell& shell, ActionTable& actions,
                           HUDPlacement& placement, TextAnalyses& analyses,
                           std::function<BarAbilities()> abilities, OpenEditor openEditor)
    : platform_(platform),
      placement_(placement),
      analyses_(analyses),
      abilities_(std::move(abilities)),
      openEditor_(std::move(openEditor)),
      previewHUD_(platform.queue),
      previewWatch_(platform.queue, platform.screens, [this] { hide(previewHUD_, true); }),
      hud_(platform.queue),
      hudWatch_(platform.queue, platform.screens, [this] { hide(hud_, true); }) {
  showClipboardHUD.offerToggle(actions, shell, [this] {
    showClipboardHUD ? show(share("Clipboard preview enabled")) : hide();
  });
}

Measure ClipboardHUD::measure() const {
  return [this](const std::string& text, const Font& font) {
    return platform_.windows.textWidth(text, font);
  };
}

double ClipboardHUD::scale() const {
  double largest = 1;
  for (const Screen& screen : platform_.screens.all()) largest = std::max(largest, screen.scale);
  return largest;
}

void ClipboardHUD::contentChanged(const Content& content) {
  if (showClipboardHUD) show(content);
}

void ClipboardHUD::makeWindow(Panel& panel) {
  WindowDescription window;
  window.id = "hud";
  window.title = "Clipboard preview";
  window.titled = false;
  window.panel = true;
  window.level = WindowLevel::overlay;
  window.everySpace = true;
  window.pressed = [this, &panel](const std::string& spec) { handOver(panel, spec); };
  window.keyDown = [this](const KeyEvent& key) { return placement_.onArrow(key); };
  panel.window = platform_.windows.create(std::move(window));
  panel.view.onClick = [this, &panel] { handOver(panel, {}); };
  panel.view.onDrag = [&panel] { panel.window->performDrag(); };
}

HUDLayout ClipboardHUD::layoutFor(Panel& panel, const Content& content) {
  if (const auto* text = std::get_if<SharedText>(&content)) {
    const auto analysis = analyses_.of(*text);
    panel.provisional = analysis->provisional;
    return textLayout(textFace(*text, *analysis, hudTextRoom, measure()), hudTextRoom.width,
                      textBarButtons(**text, false, abilities_()), measure(), panel.view);
  }
  const Image& image = std::get<Image>(content);
  panel.provisional = false;
  return imageLayout(image.width(), image.height(), pixelSizeTitle(image.width(), image.height()),
                     {}, imageBarButtons(false, abilities_()), measure(), panel.view);
}

void ClipboardHUD::fill(Panel& panel, const Content& content) {
  panel.content = content;
  panel.thumbnails.cancel();
  HUDLayout layout = layoutFor(panel, content);
  panel.window->setContent(layout.size, std::move(layout.views));
  const auto* face = std::get_if<ImageFace>(&panel.view.face);
  if (!face) return;
  panel.thumbnails.make(std::get<Image>(content),
                        static_cast<int>(std::ceil(face->frame.width * scale())),
                        static_cast<int>(std::ceil(face->frame.height * scale())),
                        [&panel](const std::optional<Image>& made) {
                          auto* shown = std::get_if<ImageFace>(&panel.view.face);
                          if (!shown) return;
                          shown->thumbnail = made;
                          shown->unreadable = !made;
                          panel.window->redraw(hudFace);
                        });
}

void ClipboardHUD::show(const Content& content) {
  if (!previewHUD_.window) makeWindow(previewHUD_);
  fill(previewHUD_, content);
  Window& window = *previewHUD_.window;
  place();
  window.showWithoutActivating();
  previewHUD_.open = placement_.follow(window);
  previewWatch_.start(window, shownSeconds);
}

void ClipboardHUD::place() {
  const Size size = previewHUD_.window->frame().size();
  previewHUD_.window->setOrigin(besideOccupied(placement_.origin(size), size));
}

Point ClipboardHUD::besideOccupied(Point origin, Size size) const {
  const auto taken = occupied ? occupied() : std::nullopt;
  const Rect frame{origin.x, origin.y, size.width, size.height};
  if (!taken || taken->intersection(frame).isEmpty()) return origin;
  const Rect area = placement_.area();
  const double below = taken->y - menuGap - size.height, above = taken->maxY() + menuGap;
  if (below >= area.y) return {origin.x, below};
  if (above + size.height <= area.maxY()) return {origin.x, above};
  return origin;
}

void ClipboardHUD::hide() {
  hide(previewHUD_, false);
  hide(hud_, false);
}

void ClipboardHUD::hide(Panel& panel, bool fades) {
  (&panel == &hud_ ? hudWatch_ : previewWatch_).stop();
  if (&panel == &hud_) {
    hudHideTimer.cancel();
    highlighted_.reset();
  }
  panel.open.cancel();
  panel.thumbnails.cancel();
  panel.content.reset();
  if (!panel.window || !panel.window->isVisible()) return;
  fades ? panel.window->fadeOut() : panel.window->hide();
}

void ClipboardHUD::handOver(Panel& panel, const std::string& spec) {
  if (!panel.content) return;
  const Content content = *panel.content;
  const Point origin = panel.window->frame().origin();
  hide(panel, false);
  if (spec != "done") openEditor_(content, origin, spec);
}

void ClipboardHUD::menuWillHighlight(const MenuItem* item) {
  if (item && item->payload) {
    hudHideTimer.cancel();
    hudWatch_.stop();
    if (hud_.content && highlighted_ == item->payload) return;
    highlighted_ = item->payload;
    if (!hud_.window) makeWindow(hud_);
    fill(hud_, item->payload->content);
    hud_.window->setOrigin(besideMenu(hud_.window->frame().size()));
    hud_.window->showWithoutActivating();
    hud_.open = placement_.follow(*hud_.window);
    return;
  }
  hudHideTimer.cancel();
  if (!hud_.content) return;
  const auto look = [this] {
    if (!PointerWatch::isOn(*hud_.window, platform_.screens)) hide(hud_, true);
  };
  hudHideTimer = platform_.queue.after(firstLookSeconds, [this, look] {
    hudHideTimer = platform_.queue.every(lookSeconds, look);
    look();
  });
}

void ClipboardHUD::menuDidClose() {
  const Point pointer = platform_.screens.pointer();
  for (Panel* panel : {&hud_, &previewHUD_}) {
    if (!panel->content || !panel->window->isVisible()) continue;
    if (!panel->window->frame().contains(pointer)) continue;
    const std::string id = panel->window->viewAt(pointer);
    handOver(*panel, id == hudFace || id == hudCard ? std::string() : id);
    return;
  }
  hudHideTimer.cancel();
  if (hud_.content) hudWatch_.start(*hud_.window, leavingSeconds);
}

Point ClipboardHUD::besideMenu(Size size) const {
  const auto menu = platform_.statusItem.openMenuFrame();
  if (!menu) return placement_.origin(size);
  const Rect area = placement_.area();
  // A submenu opens where there is room; the menus before it are on its other side.
  const double left = menu->x - menuGap - size.width, right = menu->maxX() + menuGap;
  const bool onRight = area.maxX() - menu->maxX() >= menu->x - area.x;
  const double y = platform_.screens.pointer().y - size.height / 2;
  return originWithin(area, size, {onRight ? right : left, y});
}

bool ClipboardHUD::reveal(const SharedText& text) {
  if (text->size() > revealedBytes) return false;
  TextFace face;
  face.font = {.size = 13, .monospaced = true};
  face.heading = "Full value";
  FaceRoom room = revealRoom;
  ++room.lines;
  face.lines = wrapped(*text, face.font, room, measure());
  if (face.lines.size() == room.lines) return false;
  double width = 160;
  for (const std::string& line : face.lines)
    width = std::max(width, std::ceil(measure()(line, face.font)) + 1);
  if (!revealWindow_) {
    WindowDescription window;
    window.id = "hud";
    window.title = "Full value";
    window.titled = false;
    window.panel = true;
    window.level = WindowLevel::overlay;
    window.everySpace = true;
    window.ignoresMouse = true;
    revealWindow_ = platform_.windows.create(std::move(window));
  }
  HUDLayout layout = textLayout(std::move(face), width, {}, measure(), revealView_);
  revealWindow_->setContent(layout.size, std::move(layout.views));
  const Point pointer = platform_.screens.pointer();
  revealWindow_->setOrigin(
      originWithin(placement_.area(), layout.size,
                   {pointer.x + besidePointer, pointer.y - besidePointer - layout.size.height}));
  revealWindow_->showWithoutActivating();
  revealHide_ = platform_.queue.after(revealSeconds, [this] {
    revealView_.face = TextFace{};
    revealWindow_->fadeOut();
  });
  return true;
}

void ClipboardHUD::analysesChanged() {
  for (Panel* panel : {&hud_, &previewHUD_}) {
    if (!panel->content || !panel->provisional) continue;
    fill(*panel, Content(*panel->content));
    if (panel == &previewHUD_) place();
  }
}

}  // namespace marbelot
