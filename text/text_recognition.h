// Reading the text in images: on demand, and quietly in every image that is copied.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it. One image is read at a time, in the
// background. A quiet scan tells of nothing but text, makes way for any newer image, and lets a
// scan that was asked for finish first.
class TextRecognition {
  Platform& platform_;

 public:
  // The image in the history entry that the sender was made for, none when it is no image.
  using HistoryImage = std::function<std::optional<Image>(const MenuItem& sender)>;
  // Shows the text, which is not empty. `concealed`: the image's owner marked it as secret.
  using Show = std::function<void(const SharedText& text, const Image& image, bool concealed)>;

  TextRecognition(Platform& platform, Shell& shell, ActionTable& actions, HistoryImage historyImage,
                  Show show);

  Setting<bool> autoOCR{
      platform_.defaults,
      "autoOCRImages",
      true,
      {.registered = true, .toggle = {"Auto-scan copied images for text (OCR)", "toggleAutoOCR"}}};

  void recognize(const Image& image, bool quiet, bool concealed = false);
  // A new image came onto the clipboard.
  void imageCopied(const Image& image, bool concealed);

 private:
  struct Scan {
    Image image;
    bool quiet;
    bool concealed;
  };

  void startNext();
  void startReading(SharedBitmap pixels);
  void finish(const Recognition& recognition);
  void end(const std::string& message);

  Shell& shell_;
  const Show show_;
  std::optional<Scan> scan_;   // under way
  std::optional<Scan> asked_;  // comes next: the newest that was asked for
  std::optional<Scan> quiet_;  // comes then: the newest of the others
  // Decoding cannot be broken off, so that a newer image waits for its end: a burst of copies
  // would otherwise be decoded all at once.
  Task decoding_;
  bool isDecoding_ = false;
  Task reading_;
};

}  // namespace marbelot
