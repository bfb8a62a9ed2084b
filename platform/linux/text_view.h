// The plain-text view of windows and alerts.
#pragma once

#include <QPlainTextEdit>

#include "platform/window.h"

namespace marbelot {

// The desktop's own font of that kind; points are pixels here.
QFont qtFont(const Font& font);

class TextView : public QPlainTextEdit {
 public:
  explicit TextView(const View& view);
  void setContents(const SharedText& text);
  std::string contents() const;
};

}  // namespace marbelot
