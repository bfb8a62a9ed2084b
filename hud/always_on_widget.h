// The small window that always shows what is on the clipboard.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "hud/hud_view.h"
#include "hud/placement.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"
#include "text/text_analysis.h"

namespace marbelot {

// The widget's view: dragged anywhere, but for its close button; what it contains gets no mouse.
class HUDWidgetView : public CanvasDelegate {
 public:
  std::function<std::shared_ptr<Menu>()> menuProvider;
  std::function<void()> onDoubleClick;
  std::function<void()> onDrag;
  std::function<void(const MenuItem&)> onChosen;
  // A click on the button that moves the widget, which it hands on.
  std::function<void()> onCornerButton;
  std::string closeButton;  // the id of that view
  Rect closeButtonFrame, cornerButtonFrame;

  void draw(Painter&, Size bounds) override { shownSize = bounds; }
  std::optional<std::string> hitTest(Point point) override;
  std::shared_ptr<Menu> menuForEvent(Point) override;
  void menuItemChosen(const MenuItem& item) override;
  void mouseDown(const MouseEvent& event) override;
  void mouseDragged(const MouseEvent& event) override;
  void mouseUp(const MouseEvent& event) override;

  Size shownSize;

 private:
  bool isOnCorner(Point point) const;

  Point down_;
  bool onCorner_ = false;  // the button went down there
};

// Where the widget stands. Pure geometry.
inline constexpr int freeWidgetPosition = -1;
Point widgetCornerOrigin(int corner, Size size, const Rect& area);
// Pulled back inside the area; its upper bounds win where both cannot be kept.
Point freeWidgetOrigin(Point stored, Size size, const Rect& area);
// The corner after it clockwise. A free position counts as the top right one.
int nextWidgetCorner(int corner);

// Main thread only; everything it is given outlives it.
class AlwaysOnWidget {
  Platform& platform_;

 public:
  AlwaysOnWidget(Platform& platform, Shell& shell, ActionTable& actions, TextAnalyses& analyses,
                 std::function<bool(const PasteboardContents&)> withheld, ContentItems contentItems,
                 std::function<void()> openBigPreview);
  ~AlwaysOnWidget() { storeMove(); }

  Setting<bool> alwaysOnPreview{
      platform_.defaults,
      "alwaysOnPreview",
      false,
      {.toggle = {"Always show a small preview widget", "toggleAlwaysOnPreview"}}};
  Setting<std::int64_t> alwaysHUDCorner{platform_.defaults, "alwaysHUDCorner", 1};
  Setting<double> alwaysHUDX{platform_.defaults, "alwaysHUDOriginX"};
  Setting<double> alwaysHUDY{platform_.defaults, "alwaysHUDOriginY"};

  // Shows what the clipboard holds now; does nothing while it has not changed.
  void refresh();
  // What it shows may read differently now.
  void analysesChanged();

  // None while it is hidden.
  std::optional<Rect> frame() const;

  void hideAlwaysOnWidget();
  void snapAlwaysHUD(int corner);
  void cycleAlwaysHUDCorner();

  // The application's state, open to its tests.
  std::unique_ptr<Window> alwaysHUDWindow;  // made on first use, and kept
  std::int64_t alwaysLastCount = -1;
  bool suppressHUDMoveSave = false;

 private:
  void makeWindow();
  void fill(const PasteboardContents& contents);
  void setViews(HUDLayout content);
  HUDLayout note(const std::string& text);
  void place();
  void moveTo(Point origin);
  void windowDidMove();
  void storeMove();
  void screensChanged();
  Rect area() const;
  int corner() const;
  std::optional<Point> storedOrigin() const;
  std::shared_ptr<Menu> contextMenu();
  double scale() const;

  Shell& shell_;
  ActionTable& actions_;
  TextAnalyses& analyses_;
  const std::function<bool(const PasteboardContents&)> withheld_;
  const ContentItems contentItems_;

  HUDWidgetView view_;
  HUDClickView face_;
  Thumbnails thumbnails_;
  std::array<bool, 3> known_{};  // of what it shows: a text, an image, that it is concealed
  bool provisional_ = false;
  std::optional<Point> put_;    // where the program put it last
  std::optional<Point> moved_;  // where the user dragged it, until that is stored
  Task storing_, screens_;
};

}  // namespace marbelot
