// Windows made from their descriptions.
#pragma once

#include <vector>

#include "platform/linux/picture_cache.h"
#include "platform/window.h"

namespace marbelot {

// Names every window and dialog of ours among those of the toolkit.
inline constexpr const char* windowIdProperty = "marbelotWindow";

class QtWindow;

class QtWindows : public Windows {
 public:
  explicit QtWindows(PictureCache& pictures) : pictures_(pictures) {}
  std::unique_ptr<Window> create(WindowDescription description) override;
  std::vector<WindowInfo> visible() const override;
  double textWidth(const std::string& text, const Font& font) const override;

 private:
  PictureCache& pictures_;
};

void bringToFront(QWidget& window);
// In the middle of the screen with the pointer. All in Qt's coordinates.
QRect centred(QRect frame);

}  // namespace marbelot
