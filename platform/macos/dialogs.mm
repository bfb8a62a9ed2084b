// Modal alerts.
#import <AppKit/AppKit.h>

#include <map>
#include <vector>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"
#import "platform/macos/views.h"

namespace marbelot {
namespace {

// The open alerts by their ids; nil until the alert's window is there.
using OpenAlerts = std::map<std::string, NSWindow*>;

AlertAnswer run(const Alert& alert, OpenAlerts& open) {
  NSAlert* const panel = [[NSAlert alloc] init];
  panel.messageText = nsString(alert.message);
  panel.informativeText = nsString(alert.informative);
  NSButton* last = nil;
  for (const std::string& title : alert.buttons) last = [panel addButtonWithTitle:nsString(title)];
  NSButton* const first = panel.buttons.firstObject;
  if (!alert.toolTip.empty()) first.toolTip = nsString(alert.toolTip);
  // AppKit itself does this only for a button that is called "Cancel".
  if (alert.buttons.size() > 1) last.keyEquivalent = @"\033";
  NSWindow* const window = panel.window;
  NSView* text = nil;
  if (!alert.accessory.empty()) {
    const View& view = alert.accessory.front();
    const MadeView made = makeView(view, nil, nullptr, nullptr);
    panel.accessoryView = made.outer;
    [panel layout];  // only now is the accessory in the alert's window
    text = made.inner;
    const auto* const area = std::get_if<TextArea>(&view.content);
    if (area != nullptr && area->editable) window.initialFirstResponder = text;
  }
  window.identifier = @"alert";
  window.title = panel.messageText;
  [NSApp activateIgnoringOtherApps:YES];
  if (!alert.id.empty()) open[alert.id] = window;
  const NSModalResponse response = [panel runModal];
  open.erase(alert.id);

  AlertAnswer answer;
  const NSInteger buttons = static_cast<NSInteger>(alert.buttons.size());
  const NSInteger pressed = response - NSAlertFirstButtonReturn;
  const NSInteger closed = buttons > 0 ? buttons - 1 : 0;
  answer.button = static_cast<std::size_t>(pressed >= 0 && pressed < buttons ? pressed : closed);
  if (text != nil) answer.text = utf8(viewText(text));
  return answer;
}

class ModalDialogs final : public Dialogs {
 public:
  explicit ModalDialogs(MainQueue& queue) : queue_(queue) {}

  void chooseFolder(FolderPanel panel,
                    std::function<void(const std::string& folder)> chosen) override {
    // While one is open, its modal loop lets nothing else ask for another.
    const auto task = std::make_shared<Task>();
    *task = queue_.after(0, [task, panel = std::move(panel), chosen = std::move(chosen)] {
      task->cancel();
      @autoreleasepool {
        NSOpenPanel* const open = [NSOpenPanel openPanel];
        open.canChooseFiles = NO;
        open.canChooseDirectories = YES;
        open.canCreateDirectories = YES;
        open.allowsMultipleSelection = NO;
        open.prompt = nsString(panel.prompt);
        open.message = nsString(panel.message);
        [NSApp activateIgnoringOtherApps:YES];
        if ([open runModal] != NSModalResponseOK) return;
        NSURL* const folder = open.URL;
        if (folder != nil) chosen(folder.path.fileSystemRepresentation);
      }
    });
  }

  // From a timer of its own: whoever asks for an alert goes on before it is answered, and so does
  // work that was posted in the meantime.
  void present(Alert alert, std::function<void(AlertAnswer)> answered) override {
    if (!alert.id.empty()) {
      const auto [found, isNew] = open_.emplace(alert.id, nil);
      if (!isNew) {
        [NSApp activateIgnoringOtherApps:YES];
        [found->second makeKeyAndOrderFront:nil];
        return;
      }
    }
    const auto task = std::make_shared<Task>();
    *task = queue_.after(0, [this, task, alert = std::move(alert), answered = std::move(answered)] {
      task->cancel();  // the closure would hold itself for ever
      @autoreleasepool {
        answered(run(alert, open_));
      }
    });
  }

 private:
  MainQueue& queue_;
  OpenAlerts open_;
};

}  // namespace

std::unique_ptr<Dialogs> makeDialogs(MainQueue& queue) {
  return std::make_unique<ModalDialogs>(queue);
}

}  // namespace marbelot
