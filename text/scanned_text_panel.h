// The panel that shows the text read in an image.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "shell/shell.h"
#include "text/save_text.h"

namespace marbelot {

// Where panels stand, which is settled for all of them at once.
struct PanelPlace {
  std::function<Point(Size panel)> origin;
  // While the handle lives, the window moves with the other panels.
  std::function<Task(Window& panel)> follow;
};

// Main thread only; everything it is given outlives it.
class ScannedTextPanel {
 public:
  using OpenEditor =
      std::function<void(const SharedText& text, const std::string& title, bool concealed)>;

  ScannedTextPanel(Platform& platform, Shell& shell, ActionTable& actions, TextSaving& saving,
                   PanelPlace place, OpenEditor openEditor);

  // Shows the text in place of the one that is shown; whoever has the keys keeps them. What is made
  // of a `concealed` text stays concealed.
  void show(const SharedText& text, const Image& image, bool concealed);

  // The application's state, open to its tests.
  std::unique_ptr<Window> ocrHUDWindow;  // made on first use, hidden when closed
  std::optional<Image> ocrHUDImage;      // while it is shown
  const std::string ocrHUDTextView = "ocrHUDTextView";

 private:
  void makeWindow();
  bool isShown() const { return ocrHUDWindow && ocrHUDWindow->isVisible(); }
  void pressed(const std::string& button);
  void copyOCRText();
  void saveOCRText();
  void openOCRInEditor();
  void closeOCRHUD();

  Platform& platform_;
  Shell& shell_;
  ActionTable& actions_;
  TextSaving& saving_;
  const PanelPlace place_;
  const OpenEditor openEditor_;
  Task open_;
  bool concealed_ = false;
};

}  // namespace marbelot
