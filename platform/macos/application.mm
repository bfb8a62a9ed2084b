// The application object, its delegate and the platform as a whole.
#import <AppKit/AppKit.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>

#include "platform/backend.h"
#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/macos/conversions.h"
#import "platform/macos/menus.h"
#include "platform/macos/services.h"

@interface MarbelotApplicationDelegate : NSObject <NSApplicationDelegate> {
 @public
  std::function<void()> launch;
  std::function<void()> end;
  std::function<std::shared_ptr<marbelot::Menu>()> buildDockMenu;
  std::function<void(const marbelot::MenuItem&)> dockItemChosen;
}
@end

@implementation MarbelotApplicationDelegate {
  MarbelotMenuRenderer* _dockRenderer;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  launch();
}

- (void)applicationWillTerminate:(NSNotification*)notification {
  end();
}

- (NSMenu*)applicationDockMenu:(NSApplication*)sender {
  if (!buildDockMenu) return nil;
  _dockRenderer = [[MarbelotMenuRenderer alloc] init];
  [_dockRenderer fillWithTree:buildDockMenu() chosen:dockItemChosen];
  return _dockRenderer.menu;
}
@end

namespace marbelot {
namespace {

void addItem(NSMenu* menu, NSString* title, SEL action, NSString* key) {
  [menu addItemWithTitle:title action:action keyEquivalent:key];
}

NSMenu* addMenu(NSMenu* bar, NSString* title) {
  NSMenuItem* const item = [[NSMenuItem alloc] initWithTitle:title
                                                      action:nullptr
                                               keyEquivalent:@""];
  [bar addItem:item];
  NSMenu* const menu = [[NSMenu alloc] initWithTitle:title];
  item.submenu = menu;
  return menu;
}

// Copy, paste and their like reach a text only through the main menu's key equivalents.
NSMenu* mainMenu() {
  NSMenu* const bar = [[NSMenu alloc] initWithTitle:@""];
  NSMenu* const program = addMenu(bar, @"Marbelot");
  addItem(program, @"Quit Marbelot", @selector(terminate:), @"q");
  NSMenu* const edit = addMenu(bar, @"Edit");
  // These two are implemented by whatever has an undo manager; no class declares them.
  addItem(edit, @"Undo", NSSelectorFromString(@"undo:"), @"z");
  addItem(edit, @"Redo", NSSelectorFromString(@"redo:"), @"Z");
  [edit addItem:[NSMenuItem separatorItem]];
  addItem(edit, @"Cut", @selector(cut:), @"x");
  addItem(edit, @"Copy", @selector(copy:), @"c");
  addItem(edit, @"Paste", @selector(paste:), @"v");
  addItem(edit, @"Select All", @selector(selectAll:), @"a");
  NSMenu* const window = addMenu(bar, @"Window");
  addItem(window, @"Close", @selector(performClose:), @"w");
  return bar;
}

class RunningApplication final : public Application {
 public:
  explicit RunningApplication(MarbelotApplicationDelegate* delegate) : delegate_(delegate) {}

  // From the run loop, because it ends the process and whoever asks for it should come to an end.
  void terminate() override {
    [NSApp performSelector:@selector(terminate:)
                withObject:nil
                afterDelay:0
                   inModes:@[ NSRunLoopCommonModes ]];
  }

  void setDockMenu(std::function<std::shared_ptr<Menu>()> build,
                   std::function<void(const MenuItem&)> chosen) override {
    delegate_->buildDockMenu = std::move(build);
    delegate_->dockItemChosen = std::move(chosen);
  }

  // Nothing asks from outside.
  void serve(RemoteRequests) override {}

 private:
  MarbelotApplicationDelegate* const delegate_;
};

// Every service of the platform, made once the event loop runs.
struct Services {
  explicit Services(MarbelotApplicationDelegate* delegate) : application(delegate) {}

  // A program without a window on the screen naps, and one that naps misses copies. The Mac itself
  // may still go to sleep.
  id const awake = [NSProcessInfo.processInfo
      beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                        reason:@"Watching the clipboard"];
  RunningApplication application;
  std::unique_ptr<MainQueue> queue = makeMainQueue();
  std::unique_ptr<Pasteboard> pasteboard = makePasteboard();
  std::unique_ptr<UserDefaults> defaults = makeUserDefaults(*queue);
  std::unique_ptr<FolderEvents> folderEvents = makeFolderEvents();
  std::unique_ptr<Notices> notices = makeNotices();
  std::unique_ptr<Workspace> workspace = makeWorkspace(*queue);
  std::unique_ptr<StatusItem> statusItem = makeStatusItem(*queue);
  std::unique_ptr<Windows> windows = makeWindows(*queue);
  std::unique_ptr<Dialogs> dialogs = makeDialogs(*queue);
  std::unique_ptr<Screens> screens = makeScreens();
  std::unique_ptr<KeyMonitors> keyMonitors = makeKeyMonitors();
  std::unique_ptr<ScreenCapture> screenCapture = makeScreenCapture(*queue);
  std::unique_ptr<TextRecognizer> recognizer = makeTextRecognizer(*queue);
  std::unique_ptr<WebWindows> webWindows = makeWebWindows();
  std::unique_ptr<Updates> updates = makeUpdates(*dialogs);
  Platform platform = {application,    *queue,      *pasteboard, *defaults,
                       *folderEvents,  *notices,    *workspace,  *statusItem,
                       *windows,       *dialogs,    *screens,    *keyMonitors,
                       *screenCapture, *recognizer, *webWindows, *updates};
};

// The system keeps only a bundle that is opened from being started twice, and not a program that is
// started by its path. A lock ends with its process, however that ends.
class OnlyOne {
 public:
  OnlyOne() {
    const std::string folder = supportFolder();
    files::makeFolder(folder);
    const std::string name = utf8(NSProcessInfo.processInfo.processName) + ".lock";
    lock_ = Descriptor(open(files::join(folder, name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    // Where there can be no lock, better two than none.
    if (!lock_) return;
    taken_ = flock(lock_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (taken_) return;
    const std::string pid = std::to_string(getpid()) + "\n";
    if (ftruncate(lock_.get(), 0) == 0) pwrite(lock_.get(), pid.data(), pid.size(), 0);
  }
  bool isTaken() const { return taken_; }
  void showOther() const {
    char text[32] = {};
    const ssize_t size = pread(lock_.get(), text, sizeof text, 0);
    pid_t pid = 0;
    if (size <= 0 || std::from_chars(text, text + size, pid).ec != std::errc()) return;
    [[NSRunningApplication runningApplicationWithProcessIdentifier:pid]
        activateWithOptions:NSApplicationActivateAllWindows];
  }

 private:
  Descriptor lock_;
  bool taken_ = false;
};

}  // namespace

int runApplication(int, char**, std::function<std::shared_ptr<void>(Platform&)> launch) {
  @autoreleasepool {
    const OnlyOne lock;
    if (lock.isTaken()) {
      std::fputs("marbelot: already running\n", stderr);
      lock.showOther();
      return 0;
    }
    NSApplication* const application = NSApplication.sharedApplication;
    MarbelotApplicationDelegate* const delegate = [[MarbelotApplicationDelegate alloc] init];
    std::unique_ptr<Services> services;
    std::shared_ptr<void> launched;
    delegate->launch = [&] {
      services = std::make_unique<Services>(delegate);
      launched = launch(services->platform);
    };
    // The process exits without coming back from the loop, so this is where things end.
    delegate->end = [&] {
      delegate->buildDockMenu = nullptr;
      launched.reset();
      services.reset();
    };
    application.delegate = delegate;
    application.mainMenu = mainMenu();
    [application setActivationPolicy:NSApplicationActivationPolicyRegular];
    [application run];
    delegate->end();
  }
  return 0;
}

}  // namespace marbelot
