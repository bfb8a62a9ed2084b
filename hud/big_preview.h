// The window that shows the clipboard's picture, or its text, at a larger size.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "hud/thumbnails.h"
#include "platform/platform.h"

namespace marbelot {

// A picture as large as its view allows, at the sharpness of the screen.
class BigPreviewView : public CanvasDelegate {
 public:
  std::optional<Image> image;
  std::string note;  // shown where there is no picture

  void draw(Painter& painter, Size bounds) override;
};

// Main thread only; everything it is given outlives it.
class BigPreview {
 public:
  BigPreview(Platform& platform, std::function<bool(const PasteboardContents&)> withheld,
             std::function<void()> showText);

  // Shows the clipboard as it is now; later changes are not followed. A text is shown by the
  // clipboard viewer.
  void openBigPreview();

  // The application's state, open to its tests.
  std::unique_ptr<Window> bigPreviewWindow;  // made on first use

 private:
  void makeWindow();

  Platform& platform_;
  const std::function<bool(const PasteboardContents&)> withheld_;
  const std::function<void()> showText_;
  BigPreviewView view_;
};

}  // namespace marbelot
