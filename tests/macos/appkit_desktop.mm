#import <AppKit/AppKit.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <cstdio>
#include <map>

#include "platform/backend.h"
#include "platform/macos/conversions.h"
#include "tests/platform/conformance.h"

namespace marbelot {
namespace {

Platform* running = nullptr;  // the application's, made once for all cases
NSMenu* statusMenu = nil;
bool statusMenuIsOpen = false;
std::vector<std::string> openedByWorkspace, revealedByWorkspace;
int notesMade = 0;

NSString* pathOrLink(NSURL* url) { return url.isFileURL ? url.path : url.absoluteString; }

// As the system opens it: what a menu shows is what stands in it before it is told so.
void openMenu(NSMenu* menu) {
  [menu.delegate menuNeedsUpdate:menu];
  NSArray* const titles = [menu.itemArray valueForKey:@"title"];
  [menu.delegate menuWillOpen:menu];
  EXPECT_TRUE([titles isEqualToArray:[menu.itemArray valueForKey:@"title"]]);
}

// What would wait for the user, or trouble one, is noted instead.
void replaceWhatNeedsAUser() {
  const auto replace = [](Class owner, SEL name, id block) {
    method_setImplementation(class_getInstanceMethod(owner, name),
                             imp_implementationWithBlock(block));
  };
  static void (*setMenu)(id, SEL, NSMenu*);
  Method const method = class_getInstanceMethod([NSStatusItem class], @selector(setMenu:));
  setMenu = reinterpret_cast<decltype(setMenu)>(
      reinterpret_cast<void*>(method_getImplementation(method)));
  replace([NSStatusItem class], @selector(setMenu:), ^(id self, NSMenu* menu) {
    statusMenu = menu;
    setMenu(self, @selector(setMenu:), menu);
  });
  replace([NSMenu class], @selector(popUpMenuPositioningItem:atLocation:inView:),
          ^BOOL(NSMenu* self, NSMenuItem*, NSPoint, NSView*) {
            openMenu(self);
            statusMenuIsOpen = true;
            return YES;
          });
  replace([NSWorkspace class], @selector(openURL:), ^BOOL(id, NSURL* url) {
    openedByWorkspace.push_back(utf8(pathOrLink(url)));
    return YES;
  });
  replace([NSWorkspace class], @selector(activateFileViewerSelectingURLs:),
          ^(id, NSArray<NSURL*>* urls) {
            for (NSURL* url in urls) revealedByWorkspace.push_back(utf8(pathOrLink(url)));
          });
  const auto bundle = [](const char* path) { return fileUrl(path); };
  replace([NSWorkspace class], @selector(URLForApplicationToOpenURL:), ^NSURL*(id, NSURL* url) {
    return [url.scheme isEqualToString:@"marbelot-test"] ? bundle("/Applications/Quarry.app") : nil;
  });
  replace([NSWorkspace class], @selector(URLsForApplicationsToOpenURL:),
          ^NSArray<NSURL*>*(id, NSURL* url) {
            if (![url.scheme isEqualToString:@"marbelot-test"]) return @[];
            return @[
              bundle("/Applications/Chisel.app"), bundle("/Applications/Quarry.app"),
              bundle("/Applications/Marbelot.app"), bundle("/Applications/Old/Chisel.app")
            ];
          });
  replace([NSAppleScript class], @selector(executeAndReturnError:), ^id(id, NSDictionary**) {
    ++notesMade;
    return @"";
  });
}

// The first view of the class, in the order that they were added.
template <class Kind>
NSMutableArray* viewsOf(NSView* view, Class kind, Kind* into) {
  if ([view isKindOfClass:kind]) [into addObject:view];
  for (NSView* inner in view.subviews) viewsOf(inner, kind, into);
  return into;
}

class AppKitDesktop : public TestDesktop {
 public:
  AppKitDesktop() : noticesBefore_(delivered().count) {
    openedByWorkspace.clear();
    revealedByWorkspace.clear();
  }
  Platform& platform() override { return *running; }
  bool wait(const std::function<bool()>& done) override {
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:20];
    while (!done() && limit.timeIntervalSinceNow > 0) {
      @autoreleasepool {
        NSEvent* const event =
            [NSApp nextEventMatchingMask:NSEventMaskAny
                               untilDate:[NSDate dateWithTimeIntervalSinceNow:0.02]
                                  inMode:NSDefaultRunLoopMode
                                 dequeue:YES];
        if (event != nil) [NSApp sendEvent:event];
        [NSApp updateWindows];
      }
    }
    return done();
  }

#ifdef __APPLE__
  static constexpr const char *copies = "pbcopy", *pastes = "pbpaste";
#else
  static constexpr const char *copies = "xclip -selection clipboard -i >/dev/null 2>&1",
                              *pastes = "xclip -selection clipboard -o -t UTF8_STRING";
#endif
  void copyElsewhere(const std::string& text) override {
    FILE* const program = popen(copies, "w");
    fwrite(text.data(), 1, text.size(), program);
    EXPECT_EQ(pclose(program), 0);
  }
  std::string pasteElsewhere() override {
    FILE* const program = popen(pastes, "r");
    std::string text(1 << 16, '\0');
    text.resize(fread(text.data(), 1, text.size(), program));
    EXPECT_EQ(pclose(program), 0);
    return text;
  }

  std::vector<ShownItem> shown(const Path& path) override {
    std::vector<ShownItem> items;
    for (NSMenuItem* item in level(path).itemArray) {
      if (item.isHidden) continue;
      items.push_back({item.isSeparatorItem ? "—" : utf8(item.title), item.isEnabled != NO,
                       item.state == NSControlStateValueOn, item.submenu != nil});
    }
    return items;
  }
  void highlight(const Path& path) override {
    NSMenu* const menu = level({path.begin(), path.end() - 1});
    const NSInteger index = [menu indexOfItemWithTitle:nsString(path.back())];
    [menu.delegate menu:menu willHighlightItem:[menu itemAtIndex:index]];
  }
  void choose(const Path& path) override {
    NSMenu* const menu = level({path.begin(), path.end() - 1});
    const NSInteger index = [menu indexOfItemWithTitle:nsString(path.back())];
    ASSERT_GE(index, 0) << path.back();
    closeMenu();
    [menu performActionForItemAtIndex:index];
  }
  void closeMenu() override {
    if (!statusMenuIsOpen) return;
    closeBelow(0);
    [statusMenu.delegate menuDidClose:statusMenu];
    statusMenuIsOpen = false;
  }

  void press(const std::string& window, const std::string& button) override {
    NSArray<NSButton*>* const buttons =
        viewsOf(find(window).contentView, [NSButton class], [NSMutableArray array]);
    for (NSButton* each in buttons) {
      if (![each.title isEqualToString:nsString(button)]) continue;
      [each performClick:nil];
      return wakeModalLoop();
    }
    ADD_FAILURE() << "no button " << button;
  }
  void press(const std::string& window, Key key) override {
    NSWindow* const into = find(window);
    const bool command = key != Key::escape;
    NSString* const characters = key == Key::escape          ? @"\033"
                                 : key == Key::commandReturn ? @"\r"
                                                             : @"w";
    const unsigned short code = key == Key::escape ? 53 : key == Key::commandReturn ? 36 : 13;
    NSEvent* const event = [NSEvent keyEventWithType:NSEventTypeKeyDown
                                            location:NSZeroPoint
                                       modifierFlags:command ? NSEventModifierFlagCommand : 0
                                           timestamp:0
                                        windowNumber:into.windowNumber
                                             context:nil
                                          characters:characters
                         charactersIgnoringModifiers:characters
                                           isARepeat:NO
                                             keyCode:code];
    // As the application does with the events of its key window, which on a bare X server may be
    // another one than the modal one.
    if (!command ||
        !([into performKeyEquivalent:event] || [NSApp.mainMenu performKeyEquivalent:event]))
      [into sendEvent:event];
    wakeModalLoop();
  }
  void type(const std::string& window, const std::string& text) override {
    NSArray<NSTextView*>* const texts =
        viewsOf(find(window).contentView, [NSTextView class], [NSMutableArray array]);
    for (NSTextView* view in texts) {
      if (!view.isEditable || view.isFieldEditor) continue;
      view.selectedRange = NSMakeRange(view.string.length, 0);
      [view insertText:nsString(text)];
      return;
    }
    ADD_FAILURE() << "no text";
  }

  std::vector<std::string> notices() override {
    std::vector<std::string> texts;
    NSArray<NSUserNotification*>* const all = delivered();
    for (NSUInteger i = noticesBefore_; i < all.count; ++i)
      texts.push_back(utf8(all[i].informativeText));
    return texts;
  }
  std::vector<std::string> opened() override { return openedByWorkspace; }
  std::vector<std::string> revealed() override { return revealedByWorkspace; }
  int notes() override { return notesMade; }

 private:
  static NSArray<NSUserNotification*>* delivered() {
    return NSUserNotificationCenter.defaultUserNotificationCenter.deliveredNotifications;
  }
  // A modal loop that was ended from outside of its events goes on until the next one.
  static void wakeModalLoop() {
    [NSApp postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:0
                                         context:nil
                                         subtype:0
                                           data1:0
                                           data2:0]
             atStart:NO];
  }
  static NSWindow* find(const std::string& window) {
    for (NSWindow* each in NSApp.windows)
      if (each.isVisible && [each.identifier isEqualToString:nsString(window)]) return each;
    ADD_FAILURE() << "no window " << window;
    return nil;
  }
  // Opens and closes submenus as the system does while the user goes from item to item.
  NSMenu* level(const Path& path) {
    if (!statusMenuIsOpen) return nil;
    NSMenu* menu = statusMenu;
    for (std::size_t i = 0; i < path.size(); ++i) {
      const NSInteger index = [menu indexOfItemWithTitle:nsString(path[i])];
      NSMenu* const inner = index >= 0 ? [menu itemAtIndex:index].submenu : nil;
      if (inner == nil) return nil;
      if (i >= open_.count || open_[i] != inner) {
        closeBelow(i);
        openMenu(inner);
        [open_ addObject:inner];
      }
      menu = inner;
    }
    return menu;
  }
  void closeBelow(std::size_t depth) {
    while (open_.count > depth) {
      NSMenu* const last = open_.lastObject;
      [last.delegate menuDidClose:last];
      [open_ removeLastObject];
    }
  }

  const NSUInteger noticesBefore_;
  NSMutableArray<NSMenu*>* const open_ = [NSMutableArray array];
};

std::unique_ptr<TestDesktop> makeDesktop() { return std::make_unique<AppKitDesktop>(); }

const bool added = desktops().emplace("AppKit", &makeDesktop).second;

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  marbelot::replaceWhatNeedsAUser();
  // The system has no notice centre for programs without a bundle.
  if (NSUserNotificationCenter.defaultUserNotificationCenter == nil)
    GTEST_FLAG_SET(filter, GTEST_FLAG_GET(filter) + "-*Notice*");
  return marbelot::runApplication(argc, argv,
                                  [](marbelot::Platform& platform) -> std::shared_ptr<void> {
                                    marbelot::running = &platform;
                                    // From the event loop, which must run first.
                                    auto run = std::make_shared<marbelot::Task>();
                                    *run = platform.queue.after(0, [] {
                                      const int status = RUN_ALL_TESTS();
                                      std::fflush(stdout);
                                      _exit(status);
                                    });
                                    return run;
                                  });
}
