// The panel that shows for a moment what was copied, and what a menu item stands for.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "hud/edit_bar.h"
#include "hud/hud_placement.h"
#include "hud/hud_view.h"
#include "hud/pointer_watch.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"
#include "text/text_analysis.h"

namespace marbelot {

// Main thread only; everything it is given outlives it.
class ClipboardHUD {
  Platform& platform_;

 public:
  // Opens the editor for what a panel shows, in its place, with its thumbnail, to carry out what
  // `spec` names unless it is empty.
  using OpenEditor =
      std::function<void(const Content& content, const Rect& panel,
                         const std::optional<Image>& thumbnail, const std::string& spec)>;

  ClipboardHUD(Platform& platform, Shell& shell, ActionTable& actions, HUDPlacement& placement,
               TextAnalyses& analyses, std::function<BarAbilities()> abilities,
               ContentItems contentItems, OpenEditor openEditor);

  Setting<bool> showClipboardHUD{
      platform_.defaults,
      "showClipboardHUD",
      false,
      {.toggle = {"Flash on-screen preview when clipboard changes", "toggleClipboardHUD"}}};
  // Something was copied.
  void contentChanged(const Content& content);
  // Shows the content at the panels' place. Whoever has the keys keeps them.
  void show(const Content& content);
  void hide();

  // The status menu tells what happens in it.
  void menuWillOpen();
  void menuWillHighlight(const MenuItem* item);
  void menuDidClose();
  void menuItemChosen() { handOver_.cancel(); }

  // Shows a whole text near the pointer for a while, unmasked. False when there is no room for it.
  [[nodiscard]] bool reveal(const SharedText& text);

  // An analysis that was provisional may have arrived.
  void analysesChanged();

  // A panel with what it shows.
  struct Panel {
    Panel(MainQueue& queue, const Screens& screens, std::function<void()> away)
        : thumbnails(queue), watch(queue, screens, std::move(away)) {}
    std::unique_ptr<Window> previewHUDWindow;  // made on first use
    std::optional<Content> hudContent;         // while it is shown
    bool provisional = false;
    HUDClickView view;
    Thumbnails thumbnails;
    PointerWatch watch;
    Task open;    // keeps it among the open panels
    Task forget;  // what is drawn
  };

  // The application's state, open to its tests.
  Panel previewHUD;  // of what was copied
  Panel menuHUD;     // beside the menu
  Task hudHideTimer;

 private:
  void fill(Panel& panel, const Content& content);
  HUDLayout layoutFor(Panel& panel, const Content& content);
  void makeWindow(Panel& panel);
  void place();
  void handOver(Panel& panel, const std::string& spec);
  void handOverAt(Point pointer);
  void hide(Panel& panel, bool fades);
  Point besideMenu(Size size) const;
  Measure measure() const;
  double scale() const;

  ActionTable& actions_;
  HUDPlacement& placement_;
  TextAnalyses& analyses_;
  const std::function<BarAbilities()> abilities_;
  const ContentItems contentItems_;
  const OpenEditor openEditor_;

  std::shared_ptr<const HUDPayload> highlighted_;  // what menuHUD shows
  std::optional<Rect> menuFrame_;                  // of the menu in which something is highlighted
  bool keyPressed_ = false;                        // in the menu, and nothing highlighted since
  Task menuKeys_, handOver_;
  std::unique_ptr<Window> revealWindow_;
  HUDClickView revealView_;
  Task revealHide_;
};

}  // namespace marbelot
