#include "hud/hud_editor.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "hud/arrow_panel.h"
#include "image/image_file.h"
#include "image/operations.h"
#include "platform/files.h"
#include "platform/image_codec.h"
#include "platform/text.h"
#include "shell/pending_copy.h"
#include "text/masked_title.h"

namespace marbelot {
namespace {

constexpr const char* textView = "hudEditorText";
// Masking more would be felt.
constexpr std::size_t maskedBytes = std::size_t{256} << 10;

SharedText shownText(const SharedText& text) {
  std::string masked = text->size() <= maskedBytes ? maskedForDisplay(*text) : maskedWindow(*text);
  if (masked == *text) return text;
  if (text->size() > maskedBytes) masked += "…";
  return share(std::move(masked));
}

struct Edited {
  SharedBitmap before;
  std::optional<EditedPicture> picture;
};

}  // namespace

HUDEditor::HUDEditor(Platform& platform, Shell& shell, ActionTable& actions,
                     HUDPlacement& placement, TextAnalyses& analyses)
    : platform_(platform),
      shell_(shell),
      actions_(actions),
      placement_(placement),
      analyses_(analyses),
      watch_(platform.queue, platform.screens, [this] { pointerAway(); }) {
  actions.addOn<std::string>("hudBarClicked:", [this](const std::string& spec) {
    if (isOpen()) press(spec);
  });
  actions.addOn<std::string>("hudMenuPicked:", [this](const std::string& op) {
    if (!hudEditorImage) return;
    afterEdits([this, op] {
      startEdit([op](const Bitmap& before) -> std::optional<Image> {
        auto made = marbelot::apply(op, before);
        if (!made) return std::nullopt;
        return Image::fromPixels(std::make_shared<const Bitmap>(std::move(*made)));
      });
    });
  });
  hudEditorImageView.onDrag = [this] { hudEditorPanel->performDrag(); };
  hudEditorImageView.menuProvider = [this] {
    watch_.hold();
    auto menu = std::make_shared<Menu>();
    addPanelItems(*menu, hudEditorImage.has_value());
    return menu;
  };
  hudEditorImageView.onChosen = [this](const MenuItem& item) { actions_.perform(item); };
}

Measure HUDEditor::measure() const {
  return [this](const std::string& text, const Font& font) {
    return platform_.windows.textWidth(text, font);
  };
}

BarAbilities HUDEditor::abilities() const {
  return {.crop = static_cast<bool>(hooks.crop),
          .recognize = static_cast<bool>(hooks.recognize),
          .openIn = static_cast<bool>(hooks.openInMenu),
          .textActions = static_cast<bool>(hooks.actionsMenu),
          .saveText = static_cast<bool>(hooks.saveText),
          .append = static_cast<bool>(hooks.append)};
}

void HUDEditor::makePanel() {
  HUDArrowPanel window("editor", "Clipboard editor", [this](KeyCode code) {
    if (code == KeyCode::escape) return finish(), true;
    return placement_.onArrow(code);
  });
  window.pressed = [this](const std::string& spec) { press(spec); };
  hudEditorPanel = platform_.windows.create(std::move(window));
}

void HUDEditor::open(const Content& content, const std::optional<Rect>& former,
                     const std::optional<Image>& thumbnail, const std::string& spec) {
  // Asked now, because the steps before it may write to the clipboard.
  const PasteboardContents clipboard = platform_.pasteboard.contents();
  const auto* image = std::get_if<Image>(&content);
  const bool concealed = image ? clipboard.conceals(*image)
                               : clipboard.concealed && clipboard.text &&
                                     *clipboard.text == *std::get<SharedText>(content);
  opening_ = [this, content, concealed, former, thumbnail, spec] {
    show(content, concealed, former, thumbnail, spec);
  };
  runSteps();
}

void HUDEditor::show(const Content& content, bool concealed, const std::optional<Rect>& former,
                     const std::optional<Image>& thumbnail, const std::string& spec) {
  keepEdit();
  close();
  forget_.cancel();
  if (!hudEditorPanel) makePanel();
  concealed_ = concealed;
  if (const auto* image = std::get_if<Image>(&content)) {
    hudEditorImage = *image;
    if (concealed) source_ = *image;
    shown_ = thumbnail;
  } else {
    hudEditorText = std::get<SharedText>(content);
  }
  HUDLayout layout = hudEditorImage ? imagePanel() : textPanel();
  hudEditorPanel->setContent(layout.size, std::move(layout.views));
  if (hudEditorText) hudEditorPanel->setText(textView, shownText(hudEditorText), concealed_);
  hudEditorPanel->setOrigin(former ? originWithin(screenAreaOf(platform_.screens.all(), *former),
                                                  layout.size, former->origin())
                                   : placement_.origin(layout.size));
  hudEditorPanel->showWithoutActivating();
  open_ = placement_.follow(*hudEditorPanel);
  if (hudEditorImage) readPicture();
  watch();
  // The event that opened it may be a menu's that is still closing.
  if (!spec.empty()) pressing_ = platform_.queue.after(0, [this, spec] { press(spec); });
}

// Whoever opens something else, or quits, does not mean to lose what was edited.
void HUDEditor::keepEdit() {
  if (!hudEditorImage || !hudEditorEdited || hudEditorCopied) return;
  if (!concealed_) {
    if (hooks.keep) hooks.keep(*hudEditorImage);
  } else if (!source_ || !platform_.pasteboard.contents().conceals(*source_)) {
    // Made of a secret, it is kept nowhere but on the clipboard.
    shell_.notify(overtakenMessage);
  } else {
    shell_.confirmCopy(copyImage(), "Copied image");
  }
}

void HUDEditor::finishSaving(std::chrono::steady_clock::time_point deadline) {
  keepEdit();
  close();
  saves_.finish(deadline);
}

ImageRoom HUDEditor::imageRoom() const {
  ImageRoom room;
  room.leastHeight = std::max(room.leastHeight, wellHeight_);
  return room;
}

HUDLayout HUDEditor::imagePanel() {
  hudEditorBar = imageBarButtons(pinned_, abilities());
  HUDLayout layout = imageLayout(hudEditorImage->width(), hudEditorImage->height(),
                                 pixelSizeTitle(hudEditorImage->width(), hudEditorImage->height()) +
                                     (hudEditorEdited ? " — edited" : ""),
                                 imageRoom(), hudEditorBar, measure(), hudEditorImageView);
  auto& face = std::get<ImageFace>(hudEditorImageView.face);
  wellHeight_ = face.well.height;
  face.thumbnail = shown_;
  return layout;
}

HUDLayout HUDEditor::textPanel() {
  hudEditorBar = textBarButtons(*hudEditorText, pinned_, abilities());
  return textAreaLayout(
      textFace(hudEditorText, *analyses_.of(hudEditorText), editorTextRoom, measure()), textView,
      hudEditorBar, measure(), hudEditorImageView);
}

// The corner at the screen's edge stays where it is.
void HUDEditor::rebuild() {
  if (!hudEditorPanel) return;
  HUDLayout layout = hudEditorImage ? imagePanel() : textPanel();
  const Rect old = hudEditorPanel->frame();
  // The pointer may be on another screen by now.
  const Rect area = screenAreaOf(platform_.screens.all(), old);
  const int place = placement_.placement();
  const double wider = layout.size.width - old.width, higher = layout.size.height - old.height;
  hudEditorPanel->setContent(layout.size, std::move(layout.views));
  if (hudEditorText) hudEditorPanel->setText(textView, shownText(hudEditorText), concealed_);
  if (wider != 0 || higher != 0) {
    const int column = place % 3, rowFromBelow = 2 - place / 3;
    hudEditorPanel->setOrigin(originWithin(
        area, layout.size, {old.x - wider * column / 2, old.y - higher * rowFromBelow / 2}));
  }
}

// As large as it will be shown, for the sharpest of the screens. For another thread.
std::function<std::optional<Image>(const SharedBitmap&)> HUDEditor::thumbnailMaker() const {
  double scale = 1;
  for (const Screen& screen : platform_.screens.all()) scale = std::max(scale, screen.scale);
  return [scale, room = imageRoom()](const SharedBitmap& pixels) -> std::optional<Image> {
    if (!pixels) return std::nullopt;
    const Size size = shownImageSize(pixels->width(), pixels->height(), room);
    return thumbnail(pixels, static_cast<int>(std::ceil(size.width * scale)),
                     static_cast<int>(std::ceil(size.height * scale)));
  };
}

// Once, and before somebody asks for an edit, which shall not take longer for it.
void HUDEditor::readPicture() {
  reading_ = true;
  working_ = platform_.queue.inBackground(
      [image = *hudEditorImage, shown = shown_, make = thumbnailMaker()] {
        const SharedBitmap pixels = decode(image);
        return EditedPicture{image, pixels, shown ? shown : make(pixels)};
      },
      [this](const EditedPicture& read) {
        reading_ = false;
        pixels_ = read.pixels;
        shown_ = read.thumbnail;
        showThumbnail();
        if (const Edit edit = std::exchange(waiting_, nullptr)) runEdit(edit);
      });
}

void HUDEditor::showThumbnail() {
  auto& face = std::get<ImageFace>(hudEditorImageView.face);
  face.thumbnail = shown_;
  face.unreadable = !shown_;
  hudEditorPanel->redraw(hudFace);
}

void HUDEditor::press(const std::string& spec) {
  if (!hudEditorImage && !hudEditorText) return;  // it is fading away
  if (spec == "pin") return togglePin();
  if (spec == "done") return finish();
  if (spec == "copy") return afterEdits([this] { copy(); });
  if (hudEditorImage) {
    if (spec == "undo") return afterEdits([this] { undo(); });
    if (spec == "save") return afterEdits([this] { save(); });
    if (spec == "crop" && hooks.crop) return afterEdits([this] { startCropping(); });
    if (spec == "ocr" && hooks.recognize)
      return afterEdits([this] { hooks.recognize(*hudEditorImage, concealed_); });
    return popUp(spec, editGroupMenu(spec));
  }
  if (spec == "open") {
    if (const auto link = webLink(*hudEditorText)) platform_.workspace.openUrl(*link);
  } else if (spec == "openin" && hooks.openInMenu) {
    popUp(spec, hooks.openInMenu(hudEditorText));
  } else if (spec == "actions" && hooks.actionsMenu) {
    popUp(spec, hooks.actionsMenu(hudEditorText));
  } else if (spec == "savetxt" && hooks.saveText) {
    watch_.hold();
    hooks.saveText(hudEditorText);
  } else if (spec == "append" && hooks.append) {
    hooks.append(hudEditorText);
  }
}

void HUDEditor::popUp(const std::string& spec, const std::shared_ptr<Menu>& menu) {
  if (!menu || menu->items.empty()) return;
  watch_.hold();
  hudEditorPanel->popUpMenu(spec, menu, [this](const MenuItem& item) { actions_.perform(item); });
}

// Steps are taken in the order in which they were asked for, each on what the one before it made.
void HUDEditor::afterEdits(std::function<void()> step) {
  steps_.push_back(std::move(step));
  runSteps();
}

void HUDEditor::runSteps() {
  while (!editing_ && !steps_.empty()) {
    const auto step = std::move(steps_.front());
    steps_.pop_front();
    step();
  }
  if (editing_) return;
  if (const auto opening = std::exchange(opening_, nullptr)) opening();
}

void HUDEditor::startEdit(Edit edit) {
  editing_ = true;
  if (reading_) {
    waiting_ = std::move(edit);
  } else {
    runEdit(edit);
  }
}

void HUDEditor::runEdit(const Edit& edit) {
  working_ = platform_.queue.inBackground(
      [image = *hudEditorImage, before = pixels_, edit, make = thumbnailMaker()]() -> Edited {
        Edited edited{before ? before : decode(image), {}};
        const auto made = edited.before ? edit(*edited.before) : std::nullopt;
        if (!made) return edited;
        const SharedBitmap pixels = decode(*made);
        edited.picture = EditedPicture{*made, pixels, make(pixels)};
        return edited;
      },
      [this](const Edited& edited) {
        editing_ = false;
        pixels_ = edited.before;
        if (edited.picture) {
          hudEditorUndo.push({*hudEditorImage, pixels_, shown_});
          ++edits_;
          replacePicture(*edited.picture);
        } else {
          shell_.notify("Couldn't apply that edit");
        }
        if (cropping_) bringToFront();
        runSteps();
      });
}

void HUDEditor::replacePicture(EditedPicture picture) {
  hudEditorImage = std::move(picture.image);
  pixels_ = std::move(picture.pixels);
  shown_ = std::move(picture.thumbnail);
  hudEditorEdited = edits_ > 0;
  hudEditorCopied = false;
  rebuild();
}

void HUDEditor::startCropping() {
  // It would stand on the window in which the picture is cropped.
  cropping_ = true;
  watch_.stop();
  open_.cancel();
  hudEditorPanel->hide();
  hooks.crop(*hudEditorImage, concealed_);
}

bool HUDEditor::cropped(const Image& image) {
  if (!hudEditorImage || !cropping_) return false;
  afterEdits([this, image] { startEdit([image](const Bitmap&) { return image; }); });
  return true;
}

void HUDEditor::bringToFront() {
  cropping_ = false;
  if (!hudEditorImage || !hudEditorPanel) return;
  hudEditorPanel->showWithoutActivating();
  open_ = placement_.follow(*hudEditorPanel);
  watch();
}

void HUDEditor::undo() {
  auto before = hudEditorUndo.pop();
  if (!before) return shell_.notify("Nothing to undo");
  --edits_;
  replacePicture(std::move(*before));
}

bool HUDEditor::copyImage() {
  // What has not been edited is in the history already.
  if (!hudEditorEdited) return shell_.copyWithoutRecording(*hudEditorImage, concealed_);
  const auto count = platform_.pasteboard.write(*hudEditorImage, concealed_);
  if (count) copiedCount_ = *count;
  if (count && concealed_) source_ = *hudEditorImage;
  return count.has_value();
}

void HUDEditor::copy() {
  const bool written =
      hudEditorImage ? copyImage() : shell_.copyWithoutRecording(hudEditorText, concealed_);
  if (shell_.confirmCopy(written, hudEditorImage ? "Copied image" : "Copied text"))
    hudEditorCopied = true;
}

void HUDEditor::save() {
  const std::string folder = files::join(files::picturesFolder(), "Marbelot");
  saves_.run(
      platform_.queue,
      [folder, base = "Edit " + text::fileTimestamp(platform_.queue.now()),
       image = *hudEditorImage] {
        files::makeFolder(folder);
        return writeImageFile(folder, base, image);
      },
      [this](const std::optional<ImageFile>& file) {
        shell_.notify(file ? "Saved " + text::sanitized(files::lastComponent(file->path))
                           : "Couldn't save the image");
      });
}

void HUDEditor::togglePin() {
  pinned_ = !pinned_;
  rebuild();
  watch();
}

void HUDEditor::watch() {
  if (pinned_) {
    watch_.stop();
  } else {
    watch_.start(*hudEditorPanel, std::nullopt);
  }
}

void HUDEditor::pointerAway() {
  if (editing_ || (hudEditorEdited && !hudEditorCopied)) return watch();
  open_.cancel();
  hudEditorPanel->fadeOut();
  close();
}

void HUDEditor::finish() {
  afterEdits([this] {
    // Nobody means to lose an edit.
    if (hudEditorImage && hudEditorEdited && !hudEditorCopied) {
      copy();
      if (!hudEditorCopied) return;
    }
    if (hudEditorPanel) hudEditorPanel->hide();
    close();
  });
}

// Lets go of the content.
void HUDEditor::close() {
  watch_.stop();
  open_.cancel();
  working_.cancel();
  pressing_.cancel();
  steps_.clear();
  waiting_ = nullptr;
  editing_ = reading_ = cropping_ = false;
  hudEditorImage.reset();
  hudEditorText.reset();
  source_.reset();
  pixels_.reset();
  shown_.reset();
  hudEditorUndo.clear();
  hudEditorBar.clear();
  hudEditorEdited = hudEditorCopied = concealed_ = pinned_ = false;
  edits_ = 0;
  wellHeight_ = 0;
  forget_ = platform_.queue.after(fadedSeconds, [this] {
    hudEditorImageView.face = TextFace{};
    if (hudEditorPanel) hudEditorPanel->setContent(hudEditorPanel->frame().size(), {});
  });
}

}  // namespace marbelot
