#include "clipboard/clip_preview.h"

#include "clipboard/history_menus.h"

namespace marbelot {

std::string clipPreviewTitle(const PasteboardContents& contents, bool withheld,
                             TextAnalyses& analyses) {
  if (withheld && (contents.image || contents.text)) return "(hidden by its owner)";
  if (contents.image) return imageTitle(*contents.image);
  if (contents.text) return analyses.of(contents.text)->title;
  return "(empty)";
}

}  // namespace marbelot
