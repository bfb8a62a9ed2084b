// The panel in which a picture is edited, and a text is looked at, with a bar of buttons.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hud/edit_bar.h"
#include "hud/hud_placement.h"
#include "hud/hud_view.h"
#include "hud/pointer_watch.h"
#include "hud/undo_stack.h"
#include "platform/platform.h"
#include "shell/shell.h"
#include "text/text_analysis.h"

namespace marbelot {

// What other features do with a panel's content. A button without one is left out.
struct HUDHooks {
  // `concealed`: its owner marked it as secret.
  std::function<void(const Image&, bool concealed)> crop;
  std::function<void(const Image&, bool concealed)> recognize;
  // Menus whose items name actions; null when there is nothing to offer.
  std::function<std::shared_ptr<Menu>(const SharedText&)> openInMenu;
  std::function<std::shared_ptr<Menu>(const SharedText&)> actionsMenu;
  std::function<void(const SharedText&)> saveText;
  std::function<void(const SharedText&)> append;
  // Keeps a picture in the history without putting it on the clipboard.
  std::function<void(const Image&)> keep;
};

// Main thread only; everything it is given outlives it. It works on its own copy of the picture, in
// the background, one step after the other.
class HUDEditor {
 public:
  HUDEditor(Platform& platform, Shell& shell, ActionTable& actions, HUDPlacement& placement,
            TextAnalyses& analyses);

  HUDHooks hooks;

  BarAbilities abilities() const;

  // Shows the content where another panel was, its lower left corner there, or at the panels'
  // place, and presses the button `spec`, unless that is empty. `thumbnail`: of a picture as it was
  // shown already. What was asked for before is finished first.
  void open(const Content& content, const std::optional<Rect>& former = {},
            const std::optional<Image>& thumbnail = {}, const std::string& spec = {});
  // Whether the present contents of the clipboard were put there by the editor.
  bool madeChange(std::int64_t changeCount) const { return changeCount == copiedCount_; }

  // At the end of the application: an edit goes to the history, and what is being written is waited
  // for.
  void finishSaving(std::chrono::steady_clock::time_point deadline);

  // The picture came back from being cropped. False when the editor shows something else by now.
  bool cropped(const Image& image);
  void bringToFront();

  // The application's state, open to its tests.
  std::unique_ptr<Window> hudEditorPanel;  // made on first use
  HUDClickView hudEditorImageView;
  std::vector<EditBarButton> hudEditorBar;
  std::optional<Image> hudEditorImage;
  SharedText hudEditorText;
  UndoStack hudEditorUndo;
  bool hudEditorEdited = false;
  bool hudEditorCopied = false;

 private:
  void makePanel();
  void show(const Content& content, bool concealed, const std::optional<Rect>& former,
            const std::optional<Image>& thumbnail, const std::string& spec);
  void rebuild();
  ImageRoom imageRoom() const;
  HUDLayout imagePanel();
  HUDLayout textPanel();
  void readPicture();
  void showThumbnail();
  void press(const std::string& spec);
  void popUp(const std::string& spec, const std::shared_ptr<Menu>& menu);
  void afterEdits(std::function<void()> step);
  void runSteps();
  using Edit = std::function<std::optional<Image>(const Bitmap& before)>;
  void startEdit(Edit edit);
  void runEdit(const Edit& edit);
  void startCropping();
  void replacePicture(EditedPicture picture);
  std::function<std::optional<Image>(const SharedBitmap&)> thumbnailMaker() const;
  bool isOpen() const { return hudEditorPanel && hudEditorPanel->isVisible(); }
  void undo();
  void copy();
  bool copyImage();
  void keepEdit();
  void save();
  void togglePin();
  void watch();
  void pointerAway();
  void finish();
  void close();
  Measure measure() const;

  Platform& platform_;
  Shell& shell_;
  ActionTable& actions_;
  HUDPlacement& placement_;
  TextAnalyses& analyses_;

  std::size_t edits_ = 0;   // that the picture shows
  SharedBitmap pixels_;     // of the picture, once they are known
  bool concealed_ = false;  // the content's owner marked it as secret
  bool pinned_ = false;
  double wellHeight_ = 0;          // it never shrinks under the pointer
  std::optional<Image> shown_;     // the picture as large as it is shown
  bool reading_ = false;           // the picture is being decoded
  Edit waiting_;                   // until it is
  bool cropping_ = false;          // elsewhere, while the panel is hidden
  std::int64_t copiedCount_ = -1;  // the clipboard's, of the last copy
  std::optional<Image> source_;    // what was opened or copied last, while it is concealed
  std::deque<std::function<void()>> steps_;
  std::function<void()> opening_;  // of something else, when there are no more steps
  bool editing_ = false;
  Task working_, pressing_, open_, forget_;
  Tasks saves_;
  PointerWatch watch_;
};

}  // namespace marbelot
