// The line that says what is on the clipboard.
#pragma once

#include <string>

#include "platform/pasteboard.h"
#include "text/text_analysis.h"

namespace marbelot {

// `withheld`: the contents' owner asked that they be not shown (ClipboardHistory::withheld).
std::string clipPreviewTitle(const PasteboardContents& contents, bool withheld,
                             TextAnalyses& analyses);

}  // namespace marbelot
