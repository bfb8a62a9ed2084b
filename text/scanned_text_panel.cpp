#include "text/scanned_text_panel.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/text.h"

namespace marbelot {
namespace {

// Points.
constexpr Size panelSize{420, 220};
constexpr double margin = 12, gap = 6;
constexpr double headerHeight = 16, buttonHeight = 24;

constexpr const char* header = "ocrHeader";

// From left to right: what each button sends, its title and its width.
struct PanelButton {
  const char* action;
  const char* title;
  double width;  // points
};
constexpr std::array<PanelButton, 5> buttons{{{"cycleHUDPlacement", "Move", 62},
                                              {"copyOCRText", "Copy text", 92},
                                              {"saveOCRText", "Save…", 68},
                                              {"openOCRInEditor", "Notepad", 82},
                                              {"closeOCRHUD", "Close", 66}}};

std::string headerFor(std::string_view text) {
  return "Scanned text — " + std::to_string(text::characterCount(text)) +
         " characters   ·   ← → ↑ ↓ moves this panel";
}

std::vector<View> content() {
  Label title;
  title.font = {.size = 11};
  title.color = Color::of(Color::Role::secondaryLabel);
  TextArea area;
  area.font = {.size = 12};
  area.inset = {6, 6};
  area.bordered = true;

  const double inner = panelSize.width - 2 * margin;
  const double textBottom = margin + buttonHeight + gap;
  const double headerBottom = panelSize.height - margin - headerHeight;
  Container ground;
  ground.background = Color::of(Color::Role::windowBackground);
  ground.cornerRadius = 10;
  ground.views.push_back({header, {margin, headerBottom, inner, headerHeight}, {}, title});
  ground.views.push_back(
      {"ocrHUDTextView", {margin, textBottom, inner, headerBottom - gap - textBottom}, {}, area});
  double x = margin;
  for (const PanelButton& each : buttons) {
    Button button;
    button.title = each.title;
    button.small = true;
    ground.views.push_back({each.action, {x, margin, each.width, buttonHeight}, {}, button});
    x += each.width + gap;
  }
  return {{"", {0, 0, panelSize.width, panelSize.height}, {}, std::move(ground)}};
}

}  // namespace

ScannedTextPanel::ScannedTextPanel(Platform& platform, Shell& shell, ActionTable& actions,
                                   TextSaving& saving, PanelPlace place, OpenEditor openEditor)
    : platform_(platform),
      shell_(shell),
      actions_(actions),
      saving_(saving),
      place_(std::move(place)),
      openEditor_(std::move(openEditor)) {
  actions.add("copyOCRText", [this](const MenuItem&) { copyOCRText(); });
  actions.add("saveOCRText", [this](const MenuItem&) { saveOCRText(); });
  actions.add("openOCRInEditor", [this](const MenuItem&) { openOCRInEditor(); });
  actions.add("closeOCRHUD", [this](const MenuItem&) { closeOCRHUD(); });
}

void ScannedTextPanel::makeWindow() {
  WindowDescription window;
  window.id = "ocr";
  window.title = "Scanned text";
  window.contentSize = panelSize;
  window.views = content();
  window.titled = false;
  window.level = WindowLevel::floating;
  window.panel = true;
  window.everySpace = true;
  window.movableByBackground = true;
  window.pressed = [this](const std::string& button) { pressed(button); };
  window.keyDown = [this](const KeyEvent& key) {
    if (key.code != KeyCode::escape) return false;
    closeOCRHUD();
    return true;
  };
  window.closed = [this] { closeOCRHUD(); };
  ocrHUDWindow = platform_.windows.create(std::move(window));
}

void ScannedTextPanel::pressed(const std::string& button) {
  MenuItem sender;
  sender.action = button;
  actions_.perform(sender);
}

void ScannedTextPanel::show(const SharedText& text, const Image& image, bool concealed) {
  if (!ocrHUDWindow) makeWindow();
  ocrHUDImage = image;
  concealed_ = concealed;
  ocrHUDWindow->setText(header, share(headerFor(*text)));
  ocrHUDWindow->setText(ocrHUDTextView, text, concealed);
  if (!isShown()) ocrHUDWindow->setOrigin(place_.origin(panelSize));
  ocrHUDWindow->showWithoutActivating();
  open_ = place_.follow(*ocrHUDWindow);
}

void ScannedTextPanel::copyOCRText() {
  if (!isShown()) return;
  shell_.confirmCopy(shell_.copyWithoutRecording(ocrHUDWindow->text(ocrHUDTextView), concealed_),
                     "Copied the scanned text");
}

void ScannedTextPanel::saveOCRText() {
  if (isShown()) saving_.save(ocrHUDWindow->text(ocrHUDTextView), "Scanned text");
}

void ScannedTextPanel::openOCRInEditor() {
  if (!isShown()) return;
  const SharedText text = ocrHUDWindow->text(ocrHUDTextView);
  closeOCRHUD();
  openEditor_(text, "Text in image (OCR)", concealed_);
}

// What was read is let go of: a screen may have shown a password.
void ScannedTextPanel::closeOCRHUD() {
  if (!ocrHUDWindow) return;
  open_.cancel();
  ocrHUDWindow->hide();
  ocrHUDWindow->setText(ocrHUDTextView, share({}));
  ocrHUDImage.reset();
}

}  // namespace marbelot
