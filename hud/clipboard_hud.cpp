#include "hud/clipboard_hud.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "hud/arrow_panel.h"
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
                           std::function<BarAbilities()> abilities, ContentItems contentItems,
                           OpenEditor openEditor)
    : platform_(platform),
      previewHUD(platform.queue, platform.screens, [this] { hide(previewHUD, true); }),
      menuHUD(platform.queue, platform.screens, [this] { hide(menuHUD, true); }),
      actions_(actions),
      placement_(placement),
      analyses_(analyses),
      abilities_(std::move(abilities)),
      contentItems_(std::move(contentItems)),
      openEditor_(std::move(openEditor)) {
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
  HUDArrowPanel window("hud", "Clipboard preview",
                       [this](KeyCode code) { return placement_.onArrow(code); });
  window.pressed = [this, &panel](const std::string& spec) { handOver(panel, spec); };
  panel.previewHUDWindow = platform_.windows.create(std::move(window));
  panel.view.onClick = [this, &panel] { handOver(panel, {}); };
  panel.view.menuProvider = [this, &panel] {
    panel.watch.hold();
    auto menu = std::make_shared<Menu>();
    // Beside the menu stands what is not on the clipboard.
    if (&panel == &previewHUD) contentItems_(*menu);
    if (!menu->items.empty()) menu->addSeparator();
    addPanelItems(*menu, std::holds_alternative<ImageFace>(panel.view.face));
    return menu;
  };
  panel.view.onChosen = [this](const MenuItem& item) { actions_.perform(item); };
  panel.view.onDrag = [&panel] { panel.previewHUDWindow->performDrag(); };
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
  panel.forget.cancel();
  panel.hudContent = content;
  panel.thumbnails.cancel();
  HUDLayout layout = layoutFor(panel, content);
  panel.previewHUDWindow->setContent(layout.size, std::move(layout.views));
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
                          panel.previewHUDWindow->redraw(hudFace);
                        });
}

void ClipboardHUD::show(const Content& content) {
  if (!previewHUD.previewHUDWindow) makeWindow(previewHUD);
  fill(previewHUD, content);
  Window& window = *previewHUD.previewHUDWindow;
  place();
  window.showWithoutActivating();
  previewHUD.open = placement_.follow(window);
  previewHUD.watch.start(window, shownSeconds);
}

void ClipboardHUD::place() {
  Window& window = *previewHUD.previewHUDWindow;
  window.setOrigin(placement_.origin(window.frame().size(), &window));
}

void ClipboardHUD::hide() {
  hide(previewHUD, false);
  hide(menuHUD, false);
}

void ClipboardHUD::hide(Panel& panel, bool fades) {
  panel.watch.stop();
  if (&panel == &menuHUD) {
    hudHideTimer.cancel();
    highlighted_.reset();
  }
  panel.open.cancel();
  panel.thumbnails.cancel();
  panel.hudContent.reset();
  if (!panel.previewHUDWindow || !panel.previewHUDWindow->isVisible()) return;
  fades ? panel.previewHUDWindow->fadeOut() : panel.previewHUDWindow->hide();
  panel.forget = platform_.queue.after(fadedSeconds, [&panel] { panel.view.face = TextFace{}; });
}

void ClipboardHUD::handOver(Panel& panel, const std::string& spec) {
  if (!panel.hudContent) return;
  const Content content = *panel.hudContent;
  const Rect frame = panel.previewHUDWindow->frame();
  const auto* face = std::get_if<ImageFace>(&panel.view.face);
  const std::optional<Image> thumbnail = face ? face->thumbnail : std::nullopt;
  hide(panel, false);
  if (spec != "done") openEditor_(content, frame, thumbnail, spec);
}

void ClipboardHUD::menuWillOpen() {
  menuFrame_.reset();
  keyPressed_ = false;
  handOver_.cancel();
  menuKeys_ = platform_.keyMonitors.addLocal([this](const KeyEvent&) {
    keyPressed_ = true;
    return false;
  });
}

void ClipboardHUD::menuWillHighlight(const MenuItem* item) {
  if (item) {
    keyPressed_ = false;
    if (item->payload || menuHUD.hudContent || previewHUD.hudContent)
      menuFrame_ = platform_.statusItem.openMenuFrame();
  }
  if (item && item->payload) {
    hudHideTimer.cancel();
    menuHUD.watch.stop();
    if (menuHUD.hudContent && highlighted_ == item->payload) return;
    highlighted_ = item->payload;
    if (!menuHUD.previewHUDWindow) makeWindow(menuHUD);
    fill(menuHUD, item->payload->content);
    menuHUD.previewHUDWindow->setOrigin(besideMenu(menuHUD.previewHUDWindow->frame().size()));
    menuHUD.previewHUDWindow->showWithoutActivating();
    menuHUD.open = placement_.follow(*menuHUD.previewHUDWindow);
    return;
  }
  hudHideTimer.cancel();
  if (!menuHUD.hudContent) return;
  const auto look = [this] {
    if (!PointerWatch::isOn(*menuHUD.previewHUDWindow, platform_.screens)) hide(menuHUD, true);
  };
  hudHideTimer = platform_.queue.after(firstLookSeconds, [this, look] {
    hudHideTimer = platform_.queue.every(lookSeconds, look);
    look();
  });
}

// A click beside an open menu closes it, and reaches nothing else: it is handed over to the panel
// that was clicked. A key and an item that was chosen close the menu as well.
void ClipboardHUD::menuDidClose() {
  menuKeys_.cancel();
  hudHideTimer.cancel();
  if (menuHUD.hudContent) menuHUD.watch.start(*menuHUD.previewHUDWindow, leavingSeconds);
  const Point pointer = platform_.screens.pointer();
  const auto menu = std::exchange(menuFrame_, std::nullopt);
  if (keyPressed_ || platform_.statusItem.wasClosedByKey() || (menu && menu->contains(pointer)))
    return;
  // What was chosen is told after the closing.
  handOver_ = platform_.queue.after(0, [this, pointer] { handOverAt(pointer); });
}

void ClipboardHUD::handOverAt(Point pointer) {
  for (Panel* panel : {&menuHUD, &previewHUD}) {
    if (!panel->hudContent || !panel->previewHUDWindow->isVisible()) continue;
    if (!panel->previewHUDWindow->frame().contains(pointer)) continue;
    const std::string id = panel->previewHUDWindow->viewAt(pointer);
    handOver(*panel, id == hudFace || id == hudCard ? std::string() : id);
    return;
  }
}

Point ClipboardHUD::besideMenu(Size size) const {
  if (!menuFrame_) return placement_.origin(size);
  const Rect area = placement_.area();
  // A submenu opens where there is room; the menus before it are on its other side.
  const double left = menuFrame_->x - menuGap - size.width, right = menuFrame_->maxX() + menuGap;
  const bool onRight = area.maxX() - menuFrame_->maxX() >= menuFrame_->x - area.x;
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
    HUDArrowPanel window("hud", "Full value", {});
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
  for (Panel* panel : {&menuHUD, &previewHUD}) {
    if (!panel->hudContent || !panel->provisional) continue;
    fill(*panel, Content(*panel->hudContent));
    if (panel == &previewHUD) place();
  }
}

}  // namespace marbelot
