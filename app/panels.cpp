#include "app/panels.h"

#include <utility>

#include "image/edit_request.h"

namespace marbelot {

Panels::Panels(Platform& platform, Shell& shell, ActionTable& actions, ClipboardHistory& history,
               HistoryMenus& historyMenus, TextAnalyses& analyses, const ImageExport& imageExport,
               ClipboardViewer& viewer)
    : placement(platform, actions),
      editor(platform, shell, actions, placement, analyses),
      hud(
          platform, shell, actions, placement, analyses, [this] { return editor.abilities(); },
          [this](Menu& menu) { addContentItems(menu); },
          [this](const Content& content, const Rect& panel, const std::optional<Image>& thumbnail,
                 const std::string& spec) { editor.open(content, panel, thumbnail, spec); }),
      bigPreview(
          platform,
          [&history](const PasteboardContents& contents) { return history.withheld(contents); },
          [&viewer] { viewer.showClipboardViewer(); }),
      widget(
          platform, shell, actions, analyses,
          [&history](const PasteboardContents& contents) { return history.withheld(contents); },
          [this](Menu& menu) { addContentItems(menu); }, [this] { bigPreview.openBigPreview(); }),
      crop(
          platform, shell, actions,
          [&historyMenus](const MenuItem& sender) { return historyMenus.imageFor(sender); },
          [this] { return placement.area(); }),
      platform_(platform),
      imageExport_(imageExport) {
  placement.standing = [this] { return widget.frame(); };
  editor.hooks.crop = [this](const Image& image, bool concealed) {
    crop.cropForEditor(image, concealed);
  };
  editor.hooks.keep = [&history](const Image& image) { history.recordOvertaken(image); };
  crop.onReturn = [this](const Image& image) { return editor.cropped(image); };
  crop.onCancelled = [this] { editor.bringToFront(); };
  historyMenus.onReveal = [this, &viewer](const SharedText& text) {
    if (!hud.reveal(text)) viewer.showText(text, "Full value");
  };
}

void Panels::recorded(const Content& content) { recorded_ = content; }

void Panels::showRecorded() {
  const auto newest = std::exchange(recorded_, std::nullopt);
  // What the editor has copied stands in its panel, or did so a moment ago.
  if (newest && !editor.madeChange(platform_.pasteboard.changeCount())) hud.contentChanged(*newest);
}

void Panels::analysesChanged() {
  hud.analysesChanged();
  widget.analysesChanged();
}

void Panels::addContentItems(Menu& menu) const {
  if (!platform_.pasteboard.contents().image) return;
  menu.addSubmenu("Edit image", editMenu(EditClipboard{}));
  imageExport_.addSaveItems(menu);
}

}  // namespace marbelot
