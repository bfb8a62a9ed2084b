// What shows beside the menus: the panels, the widget and their windows, wired to each other.
#pragma once

#include <functional>
#include <optional>

#include "clipboard/clipboard_history.h"
#include "clipboard/history_menus.h"
#include "hud/always_on_widget.h"
#include "hud/big_preview.h"
#include "hud/clipboard_hud.h"
#include "hud/hud_editor.h"
#include "hud/hud_placement.h"
#include "image/crop.h"
#include "image/image_export.h"
#include "platform/platform.h"
#include "shell/shell.h"
#include "text/clipboard_viewer.h"
#include "text/text_analysis.h"

namespace marbelot {

// Main thread only; everything it is given outlives it.
class Panels {
 public:
  Panels(Platform& platform, Shell& shell, ActionTable& actions, ClipboardHistory& history,
         HistoryMenus& historyMenus, TextAnalyses& analyses, const ImageExport& imageExport,
         ClipboardViewer& viewer);

  HUDPlacement placement;
  HUDEditor editor;
  ClipboardHUD hud;
  BigPreview bigPreview;
  AlwaysOnWidget widget;
  Crop crop;

  // A text or an image was recorded in the history; the last one is shown then.
  void recorded(const Content& content);
  void showRecorded();
  // Texts that were being analysed may read differently now.
  void analysesChanged();

 private:
  void addContentItems(Menu& menu) const;

  Platform& platform_;
  std::optional<Content> recorded_;
  const ImageExport& imageExport_;
};

}  // namespace marbelot
