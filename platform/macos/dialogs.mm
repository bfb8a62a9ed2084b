// Modal alerts.
#import <AppKit/AppKit.h>
#include <objc/runtime.h>

#include <map>
#include <vector>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"
#import "platform/macos/views.h"

// Holds an alert's accessory and hears the keys that AppKit leaves without a button: Command and
// Return beside a text, and Escape, which a text would take for itself.
@interface MarbelotAlertKeys : NSView <NSTextViewDelegate>
@property(nonatomic, weak) NSButton* first;
@property(nonatomic, weak) NSButton* last;
@end

@implementation MarbelotAlertKeys
- (BOOL)performKeyEquivalent:(NSEvent*)event {
  const BOOL command = (event.modifierFlags & NSEventModifierFlagCommand) != 0;
  NSString* const key = event.charactersIgnoringModifiers;
  NSButton* const pressed = command && [key isEqualToString:@"\r"]      ? self.first
                            : !command && [key isEqualToString:@"\033"] ? self.last
                                                                        : nil;
  if (pressed == nil) return [super performKeyEquivalent:event];
  [pressed performClick:self];
  return YES;
}

- (BOOL)textView:(NSTextView*)textView doCommandBySelector:(SEL)selector {
  if (!sel_isEqual(selector, @selector(cancelOperation:))) return NO;
  [self.last performClick:self];
  return YES;
}
@end

namespace marbelot {
namespace {

// The open alerts by their ids; nil until the alert's window is there.
using OpenAlerts = std::map<std::string, NSWindow*>;

AlertAnswer run(const Alert& alert, OpenAlerts& open) {
  NSAlert* const panel = [[NSAlert alloc] init];
  panel.messageText = nsString(alert.message);
  panel.informativeText = nsString(alert.informative);
  MarbelotAlertKeys* const keys = [[MarbelotAlertKeys alloc] initWithFrame:NSZeroRect];
  for (const std::string& title : alert.buttons) [panel addButtonWithTitle:nsString(title)];
  NSWindow* const window = panel.window;
  keys.first = panel.buttons.firstObject;
  keys.last = panel.buttons.lastObject;
  if (!alert.toolTip.empty()) keys.first.toolTip = nsString(alert.toolTip);
  // AppKit itself does this only for a button that is called "Cancel".
  if (alert.buttons.size() > 1) keys.last.keyEquivalent = @"\033";
  NSView* text = nil;
  if (!alert.accessory.empty()) {
    const View& view = alert.accessory.front();
    const MadeView made = makeView(view, nil, nullptr, nullptr);
    keys.frame = NSMakeRect(0, 0, NSWidth(made.outer.frame), NSHeight(made.outer.frame));
    [made.outer setFrameOrigin:NSZeroPoint];
    [keys addSubview:made.outer];
    text = made.inner;
    if (std::holds_alternative<TextArea>(view.content))
      static_cast<NSTextView*>(text).delegate = keys;
  }
  if (text != nil || alert.buttons.size() == 1) {
    panel.accessoryView = keys;
    [panel layout];  // only now is the accessory in the alert's window
    if (text != nil) window.initialFirstResponder = text;
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
  if (text != nil) answer.text = *viewText(text);
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

  void saveFile(FilePanel panel, std::function<void(const std::string& path)> chosen) override {
    const auto task = std::make_shared<Task>();
    *task = queue_.after(0, [task, panel = std::move(panel), chosen = std::move(chosen)] {
      task->cancel();
      @autoreleasepool {
        NSSavePanel* const save = [NSSavePanel savePanel];
        save.canCreateDirectories = YES;
        save.allowedFileTypes = @[ nsString(panel.extension) ];
        save.directoryURL = [NSURL fileURLWithPath:nsString(panel.folder)];
        save.nameFieldStringValue = nsString(panel.name);
        [NSApp activateIgnoringOtherApps:YES];
        if ([save runModal] != NSModalResponseOK) return;
        NSURL* const file = save.URL;
        if (file != nil) chosen(file.path.fileSystemRepresentation);
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
