// Cropping a picture in a window of its own.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "image/crop_selection.h"
#include "image/edit_request.h"
#include "platform/canvas.h"
#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// Shows a picture, and the rectangle that the user draws over it.
class CropView : public CanvasDelegate {
 public:
  // At least one pixel each way.
  int width = 1, height = 1;   // of the picture
  std::optional<Image> image;  // the picture as it is shown
  Rect selection;              // in the view; empty until something is drawn
  Point dragStart;
  Size bounds;

  std::function<void()> changed;  // it is to be drawn again

  Rect imageRectangle() const { return cropImageRectangle(width, height, bounds); }

  void draw(Painter& painter, Size size) override;
  void mouseDown(const MouseEvent& event) override;
  void mouseDragged(const MouseEvent& event) override;

 private:
  void drawSize(Painter& painter, const Rect& selected) const;
};

// Main thread only; everything it is given outlives it.
class Crop {
 public:
  // The picture in the history entry that the sender was made for, none when it is no picture.
  using HistoryImage = std::function<std::optional<Image>(const MenuItem& sender)>;

  // `area` gives the part of the screen that windows may fill.
  Crop(Platform& platform, Shell& shell, ActionTable& actions, HistoryImage historyImage,
       std::function<Rect()> area);

  bool cropReturnsToEditor = false;  // rather than to the clipboard
  // Takes a cropped picture back. False when nobody waits for it any more.
  std::function<bool(const Image& cropped)> onReturn;
  std::function<void()> onCancelled;

  // Crops a picture for onReturn. `concealed`: its owner marked it as secret.
  void cropForEditor(const Image& image, bool concealed);

  // The application's state, open to its tests.
  std::unique_ptr<Window> cropWindow;  // while it is open
  CropView cropView;

 private:
  // A picture read, and what is shown of it.
  struct Loaded {
    SharedBitmap pixels;
    std::optional<Image> shown;
    Size view;
  };

  // What is made of the part that is cut out.
  struct Purpose {
    bool returnsToEditor = false;
    bool concealed = false;  // a secret
  };

  void cropClipImage(const MenuItem& sender);
  using Source = std::function<std::optional<Image>()>;
  void load(Source source, const std::string& failure, const Purpose& purpose);
  void openWindow(const Loaded& loaded);
  void applyCrop();
  void deliver(const Image& cropped, const Purpose& purpose);
  void cancelCrop();
  void close();

  Platform& platform_;
  Shell& shell_;
  const HistoryImage historyImage_;
  const std::function<Rect()> area_;
  SharedBitmap pixels_;
  bool concealed_ = false;         // what is being cropped
  bool loadingForEditor_ = false;  // which waits
  Task loading_, cutting_, closing_;
};

}  // namespace marbelot
