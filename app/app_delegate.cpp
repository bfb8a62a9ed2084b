#include "app/app_delegate.h"

#include <array>
#include <cstdlib>
#include <utility>

#include "platform/pixel_memory.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr const char* idleSymbol = "camera.on.rectangle.fill";
constexpr const char* copiedSymbol = "checkmark.circle.fill";
constexpr double flashSeconds = 0.9;
constexpr double promptSeconds = 2.5;
// After which the memory of pictures goes back; seldom enough not to be felt on an idle machine.
constexpr double idleSeconds = 60;

}  // namespace

AppDelegate::AppDelegate(Platform& platform)
    : platform_(platform),
      access_(platform, *this, actions_),
      watched_(platform, [this](const std::string& name) { screenshotCopied(name, name); }),
      captureCommands_(platform, *this, actions_),
      captureHistory_(platform, *this, actions_),
      history_(platform, *this, actions_),
      analyses_(platform.queue),
      textActions_(platform, *this, actions_,
                   [this](const SharedText& text) { return analyses_.of(text)->targets; }),
      historyMenus_(platform, *this, actions_, history_, analyses_),
      imageHistory_(platform, *this, history_),
      imageEditing_(
          platform, *this, actions_,
          [this](const MenuItem& sender) { return historyMenus_.imageFor(sender); },
          [this](const Image& result) { history_.recordOvertaken(result); }),
      imageExport_(
          platform, *this, actions_,
          [this](const MenuItem& sender) { return historyMenus_.imageFor(sender); },
          [this](const SharedText& tag) { history_.recordOvertaken(tag); },
          [this] { return history_.clipImagesFolder(); }),
      flattenTrim_(
          platform, *this, actions_,
          [this](const PasteboardContents& contents) { return history_.withheld(contents); }),
      viewer_(platform, actions_),
      editor_(platform, *this, actions_,
              [this](const MenuItem& sender) { return historyMenus_.textFor(sender); }),
      collectCopies_(platform, *this, actions_,
                     [this](const SharedText& text) { panels_.editor.open(text); }),
      cannedResponses_(platform, *this, actions_,
                       [this](const MenuItem& sender) { return historyMenus_.textFor(sender); }),
      panels_(platform, *this, actions_, history_, historyMenus_, analyses_, imageExport_, viewer_),
      keyboardCleaning_(platform, *this, actions_),
      textSaving_(platform, *this),
      scannedTextPanel_(platform, *this, actions_, textSaving_,
                        {[this](Size panel) { return panels_.placement.origin(panel); },
                         [this](Window& panel) { return panels_.placement.follow(panel); }},
                        [this](const SharedText& text, const std::string& title, bool concealed) {
                          editor_.openEditor(text, title, concealed);
                        }),
      textRecognition_(
          platform, *this, actions_,
          [this](const MenuItem& sender) { return historyMenus_.imageFor(sender); },
          [this](const SharedText& text, const Image& image, bool concealed) {
            scannedTextPanel_.show(text, image, concealed);
          }),
      updates_(platform, *this, actions_),
      menu_(platform, *this, actions_,
            {
                .state = state_,
                .access = access_,
                .watched = watched_,
                .captureCommands = captureCommands_,
                .captureHistory = captureHistory_,
                .history = history_,
                .analyses = analyses_,
                .textActions = textActions_,
                .historyMenus = historyMenus_,
                .imageHistory = imageHistory_,
                .flattenTrim = flattenTrim_,
                .collectCopies = collectCopies_,
                .cannedResponses = cannedResponses_,
                .textRecognition = textRecognition_,
                .hud = panels_.hud,
                .widget = panels_.widget,
                .updates = updates_,
                .keyboardCleaning = keyboardCleaning_,
            }),
      historyRequests_(historyMenus_, history_),
      requests_(platform, actions_, menu_.menu(), historyRequests_,
                [this] { bringMenuUpToDate(); }) {
  actions_.add("quit", [this](const MenuItem&) { platform_.application.terminate(); });
  history_.onTextRecorded = [this](const SharedText& text) {
    analyses_.of(text);  // known when the menu opens
    if (collectCopies_.concatEnabled) collectCopies_.append(text, true);
    panels_.recorded(text);
  };
  history_.onImageRecorded = [this](const Image& image, bool concealed) {
    panels_.recorded(image);
    textRecognition_.imageCopied(image, concealed);
  };
  history_.onRecorded = [this] {
    // The panel offers them at once.
    if (panels_.hud.showClipboardHUD) textActions_.refreshApplications();
    panels_.showRecorded();
  };
  history_.onTick = [this] { panels_.widget.refresh(); };
  panels_.editor.hooks.openInMenu = [this](const SharedText& text) {
    return textActions_.openInMenu(text);
  };
  panels_.editor.hooks.actionsMenu = [this](const SharedText& text) {
    return textActions_.actionMenu(text);
  };
  panels_.editor.hooks.recognize = [this](const Image& image, bool concealed) {
    textRecognition_.recognize(image, false, concealed);
  };
  panels_.editor.hooks.saveText = [this](const SharedText& text) { textSaving_.save(text, *text); };
  panels_.editor.hooks.append = [this](const SharedText& text) {
    collectCopies_.append(text, false);
  };
  watched_.isCapturing = [this] { return captureCommands_.isCapturing(); };
  captureCommands_.onStart = [this](const std::string& path) { watched_.ignore(path); };
  captureCommands_.onCaptured = [this](const std::string& name, const std::string& message) {
    captureHistory_.refresh();
    screenshotCopied(name, message);
  };
  captureHistory_.onTrashed = [this] { imageHistory_.refresh(); };
  access_.onProbed = [this] { watched_.check(); };
  watched_.onChange = [this] { watchedFolderChanged(); };
  historyMenus_.addTextActions = [this](Menu& menu, const SharedText& text) {
    menu.addSubmenu(textActions_.submenuLabel(text), textActions_.actionMenu(text));
  };
  analyses_.onArrival = [this] {
    rebuildMenu();
    panels_.analysesChanged();
  };
}

AppDelegate::~AppDelegate() {
  // Nobody wants to wait for longer at the end of a session.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  panels_.editor.finishSaving(deadline);
  imageExport_.finishSaving(deadline);
  textSaving_.finishSaving(deadline);
  history_.finishSaving(deadline);
}

void AppDelegate::applicationDidFinishLaunching() {
  if (!platform_.statusItem.setSymbol(idleSymbol, "Marbelot"))
    platform_.statusItem.setTitle("📸");
  cannedResponses_.cannedResponses.read();
  history_.loadClipHistory();
  registerAndReadSettings();
  refreshHistories();
  menu_.buildMenu();
  platform_.statusItem.setMenu(menu_.menu(), this);
  platform_.application.setDockMenu(
      [this] {
        refreshLists();
        return menu_.dockMenu();
      },
      [this](const MenuItem& item) { menuItemChosen(item); });
  requests_.serve();
  panels_.placement.installLocalMonitor();
  history_.startClipPoller();
  panels_.widget.refresh();
  tidying_ = platform_.queue.every(idleSeconds, [this] {
    releaseIdlePixelMemory();
    analyses_.forgetGone();
  });

  updates_.updaterController();
  updates_.updateFrequency.read();
  updates_.applyFrequency(true);
  watched_.start();
  access_.probe();
  prompt_ = platform_.queue.after(promptSeconds, [this] {
    if (!access_.screenshotFolderReadable) access_.openScreenshotAccessSettings();
  });

  platform_.defaults.setProblemHandler([this](const std::string& problem) { notify(problem); });
  platform_.statusItem.setNoHostHandler([this] {
    notify("This desktop shows no tray icons. Start Marbelot again to open its menu.");
  });
}

// The settings that are read at launch, in this order. Others are read when they are first asked
// for.
void AppDelegate::registerAndReadSettings() {
  const auto settings = std::to_array<LaunchSetting*>({
      &history_.autoSaveClipImages,
      &textRecognition_.autoOCR,
      &menu_.showClipboardPreview,
      &panels_.hud.showClipboardHUD,
      &panels_.widget.alwaysOnPreview,
      &imageExport_.favoriteSaveDirs,
      &history_.archiveToPictures,
      &captureCommands_.countdownEnabled,
      &collectCopies_.concatEnabled,
      &collectCopies_.concatBuffer,
      &collectCopies_.concatSeparator,
  });
  for (LaunchSetting* setting : settings) setting->registerDefault();
  for (LaunchSetting* setting : settings) setting->read();
}

void AppDelegate::screenshotCopied(const std::string& fileName, const std::string& message) {
  // 2^63 screenshots would be a sign of something worse.
  if (__builtin_add_overflow(state_.count, 1, &state_.count)) std::abort();
  state_.lastCopied = text::sanitized(fileName);
  flashStatusIcon();
  rebuildMenu();
  notify(text::sanitized(message));
}

void AppDelegate::watchedFolderChanged() {
  access_.probe();
  rebuildMenu();
  if (!watched_.isLookedAt() || std::exchange(refusalTold_, true)) return;
  notify(
      "The system has no means left to tell of new screenshots. Until it has, Marbelot looks for "
      "them every second.");
}

void AppDelegate::notify(const std::string& message) {
  platform_.notices.post(noticeTitle, message);
}

void AppDelegate::flashStatusIcon() {
  if (!platform_.statusItem.setSymbol(copiedSymbol, "")) return;
  flash_ = platform_.queue.after(
      flashSeconds, [this] { platform_.statusItem.setSymbol(idleSymbol, "Marbelot"); });
}

// At once only where somebody sees it.
void AppDelegate::rebuildMenu() {
  menuIsStale_ = true;
  if (!menuIsOpen_) return;
  rebuild_ = platform_.queue.after(0, [this] {
    if (!std::exchange(menuIsStale_, false)) return;
    menu_.buildMenu();
    platform_.statusItem.menuChanged();
  });
}

bool AppDelegate::copyWithoutRecording(SharedText text, bool concealed) {
  return history_.copyWithoutRecording(std::move(text), concealed);
}

bool AppDelegate::copyWithoutRecording(const Image& image, bool concealed) {
  return history_.copyWithoutRecording(image, concealed);
}

void AppDelegate::refreshHistories() {
  captureHistory_.refresh();
  imageHistory_.refresh();
}

// What the menus show of folders and other programs.
void AppDelegate::refreshLists() {
  textActions_.refreshApplications();
  captureCommands_.refresh();
  refreshHistories();
}

void AppDelegate::menuWillOpen() {
  menuIsOpen_ = true;
  panels_.hud.menuWillOpen();
  bringMenuUpToDate();
}

void AppDelegate::menuDidClose() {
  menuIsOpen_ = false;
  panels_.hud.menuDidClose();
}

void AppDelegate::bringMenuUpToDate() {
  access_.probe();
  refreshLists();
  if (std::exchange(menuIsStale_, false)) {
    menu_.buildMenu();
  } else {
    menu_.refresh();
  }
  analyses_.forgetGone();
}

void AppDelegate::menuItemChosen(const MenuItem& item) {
  panels_.hud.menuItemChosen();
  actions_.perform(item);
}

}  // namespace marbelot
