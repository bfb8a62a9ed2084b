// Windows from their descriptions.
#import <AppKit/AppKit.h>
#include <objc/runtime.h>

#include <algorithm>
#include <chrono>
#include <vector>

#import "platform/macos/canvas.h"
#include "platform/macos/conversions.h"
#import "platform/macos/menus.h"
#include "platform/macos/services.h"
#import "platform/macos/views.h"

// Closes on Escape where it is told to, and lets Command and Return press the default button from a
// text that keeps Return for itself. Windows and panels alike: one that is not a panel is an
// NSPanel that behaves like a window.
@interface MarbelotWindow : NSPanel <NSTextViewDelegate, NSWindowDelegate>
@property(nonatomic, weak) NSButton* defaultButton;
@property(nonatomic) BOOL escapeCloses;
@property(nonatomic) BOOL isAuxiliary;
@property(nonatomic, copy) void (^closedHandler)(void);
@property(nonatomic, copy) void (^movedHandler)(void);
@property(nonatomic, copy) void (^lostKeysHandler)(void);
@property(nonatomic, copy) BOOL (^keyHandler)(NSEvent*);
@end

@implementation MarbelotWindow
- (BOOL)canBecomeKeyWindow {
  return YES;
}

- (BOOL)canBecomeMainWindow {
  return !self.isAuxiliary;
}

- (void)close {
  [super close];
  if (self.closedHandler != nil) self.closedHandler();
}

- (void)windowDidMove:(NSNotification*)notification {
  if (self.movedHandler != nil) self.movedHandler();
}

- (void)windowDidResignKey:(NSNotification*)notification {
  if (self.lostKeysHandler != nil) self.lostKeysHandler();
}

// Also what a text with the keys leaves to its window.
- (void)cancelOperation:(id)sender {
  if (self.escapeCloses) {
    [self performClose:sender];
  } else if (self.keyHandler != nil && NSApp.currentEvent.type == NSEventTypeKeyDown) {
    self.keyHandler(NSApp.currentEvent);
  }
}

- (void)keyDown:(NSEvent*)event {
  if (self.keyHandler == nil || !self.keyHandler(event)) [super keyDown:event];
}

// A text offers completions on Escape unless its delegate takes the key.
- (BOOL)textView:(NSTextView*)textView doCommandBySelector:(SEL)selector {
  if (!sel_isEqual(selector, @selector(cancelOperation:))) return NO;
  [self cancelOperation:textView];
  return YES;
}

- (BOOL)performKeyEquivalent:(NSEvent*)event {
  const NSEventModifierFlags modifiers =
      event.modifierFlags & (NSEventModifierFlagCommand | NSEventModifierFlagShift |
                             NSEventModifierFlagOption | NSEventModifierFlagControl);
  if (modifiers == NSEventModifierFlagCommand && self.defaultButton != nil &&
      [event.charactersIgnoringModifiers isEqualToString:@"\r"]) {
    [self.defaultButton performClick:self];
    return YES;
  }
  return [super performKeyEquivalent:event];
}
@end

// The target of a window's buttons.
@interface MarbelotButtonTarget : NSObject
- (instancetype)initWithHandler:(std::function<void(const std::string&)>)handler;
- (void)pressed:(NSButton*)sender;
- (void)drop;  // the handler
@end

@implementation MarbelotButtonTarget {
  std::function<void(const std::string&)> _handler;
}

- (instancetype)initWithHandler:(std::function<void(const std::string&)>)handler {
  self = [super init];
  if (self != nil) _handler = std::move(handler);
  return self;
}

- (void)drop {
  _handler = nullptr;
}

- (void)pressed:(NSButton*)sender {
  // A copy, because the callee may drop the window.
  if (const auto handler = _handler) handler(marbelot::utf8(sender.identifier));
}
@end

namespace marbelot {
namespace {

constexpr double animationSeconds = 0.25;
constexpr double frameSeconds = 1. / 60;
constexpr double activationSeconds = 2;  // within which the program is in front, if at all

NSWindowStyleMask styleOf(const WindowDescription& description) {
  NSWindowStyleMask style =
      description.titled ? NSWindowStyleMaskTitled : NSWindowStyleMaskBorderless;
  if (description.titled && description.closable) style |= NSWindowStyleMaskClosable;
  if (description.miniaturizable) style |= NSWindowStyleMaskMiniaturizable;
  if (description.resizable) style |= NSWindowStyleMaskResizable;
  if (description.panel) style |= NSWindowStyleMaskNonactivatingPanel;
  return style;
}

NSInteger levelOf(WindowLevel level) {
  constexpr NSInteger aboveEverything = 1000;
  switch (level) {
    case WindowLevel::normal:
      return NSNormalWindowLevel;
    case WindowLevel::floating:
      return NSFloatingWindowLevel;
    case WindowLevel::raised:
      return NSStatusWindowLevel;
    case WindowLevel::overlay:
      return aboveEverything;
  }
}

Rect rectOf(NSRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

// Calls `step` with what part of the way is done, the last time with 1.
class Animation {
 public:
  explicit Animation(MainQueue& queue) : queue_(queue) {}
  void start(std::function<void(double)> step) {
    const auto begun = std::chrono::steady_clock::now();
    task_ = queue_.every(frameSeconds, [this, begun, step = std::move(step)] {
      const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begun;
      const double part = std::min(passed.count() / animationSeconds, 1.);
      const auto last = step;  // the task holds the other one
      if (part >= 1) task_.cancel();
      last(part);
    });
  }
  void stop() { task_.cancel(); }
  bool isRunning() const { return static_cast<bool>(task_); }

 private:
  MainQueue& queue_;
  Task task_;
};

class DescribedWindow;
using WindowList = std::vector<DescribedWindow*>;

class DescribedWindow final : public Window {
 public:
  DescribedWindow(WindowDescription description, MainQueue& queue, Pictures& pictures,
                  WindowList& list)
      : queue_(queue),
        pictures_(pictures),
        list_(list),
        alpha_(description.alpha),
        moving_(queue),
        fading_(queue),
        target_([[MarbelotButtonTarget alloc] initWithHandler:std::move(description.pressed)]) {
    window_ = [[MarbelotWindow alloc] initWithContentRect:contentOf(description.contentSize)
                                                styleMask:styleOf(description)
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    window_.releasedWhenClosed = NO;
    window_.title = nsString(description.title);
    window_.identifier = nsString(description.id);
    window_.escapeCloses = description.titled && description.escapeCloses;
    window_.isAuxiliary = description.panel;
    window_.delegate = window_;
    behave(description);
    listen(description);
    addViews(description.views);
    list_.push_back(this);
  }
  ~DescribedWindow() override {
    std::erase(list_, this);
    [target_ drop];
    detachCanvases(window_.contentView);
    window_.closedHandler = nil;
    window_.movedHandler = nil;
    window_.keyHandler = nil;
    releaseKeyboard();
    [window_ close];
  }
  DescribedWindow(const DescribedWindow&) = delete;
  DescribedWindow& operator=(const DescribedWindow&) = delete;

  void show() override {
    stay();
    [NSApp activateIgnoringOtherApps:YES];
    [window_ makeKeyAndOrderFront:nil];
  }
  void showWithoutActivating() override {
    stay();
    [window_ orderFrontRegardless];
  }
  void hide() override {
    moving_.stop();
    releaseKeyboard();
    [window_ orderOut:nil];
    stay();  // only now, or what has faded out would flash
  }
  void fadeOut() override {
    if (!window_.isVisible || fading_.isRunning()) return;
    fading_.start([this](double part) {
      window_.alphaValue = alpha_ * (1 - part);
      if (part >= 1) hide();
    });
  }
  void center() override {
    // Every window that cannot be resized says that it is zoomed.
    if ((window_.styleMask & NSWindowStyleMaskResizable) != 0 && [window_ isZoomed]) return;
    NSScreen* screen = NSScreen.mainScreen;
    for (NSScreen* each in NSScreen.screens)
      if (NSMouseInRect(NSEvent.mouseLocation, each.frame, NO)) screen = each;
    if (screen == nil) return;
    const NSRect area = screen.visibleFrame, now = window_.frame;
    setOrigin({NSMidX(area) - NSWidth(now) / 2, NSMidY(area) - NSHeight(now) / 2}, false);
  }
  bool isVisible() const override { return window_.isVisible; }
  bool isKey() const override { return window_.isVisible && window_.isKeyWindow; }

  Rect frame() const override {
    Rect frame = rectOf(window_.frame);
    if (moving_.isRunning()) {
      frame.x = goal_.x;
      frame.y = goal_.y;
    }
    return frame;
  }
  void setOrigin(Point origin, bool animated) override {
    stay();
    moving_.stop();
    const NSPoint from = window_.frame.origin;
    goal_ = origin;
    if (animated && window_.isVisible) {
      moving_.start([this, from, origin](double part) {
        const double eased = 1 - (1 - part) * (1 - part);
        [window_ setFrameOrigin:NSMakePoint(from.x + (origin.x - from.x) * eased,
                                            from.y + (origin.y - from.y) * eased)];
      });
    } else {
      [window_ setFrameOrigin:NSMakePoint(origin.x, origin.y)];
    }
  }
  void setFrame(const Rect& frame) override {
    stay();
    moving_.stop();
    [window_ setFrame:nsRect(frame) display:YES];
  }
  // Others' keys are kept from nobody, but nobody can switch away while the window has the keys.
  bool grabKeyboard(std::string& leftOut) override {
    leftOut =
        "The power key, the media keys and shortcuts such as Spotlight's, screenshots' and other "
        "programs' still work";
    constexpr NSUInteger options = NSUInteger{NSApplicationPresentationHideDock} |
                                   NSApplicationPresentationHideMenuBar |
                                   NSApplicationPresentationDisableProcessSwitching |
                                   NSApplicationPresentationDisableForceQuit |
                                   NSApplicationPresentationDisableSessionTermination |
                                   NSApplicationPresentationDisableHideApplication;
    NSApp.presentationOptions = static_cast<NSApplicationPresentationOptions>(options);
    grabs_ = true;
    window_.lostKeysHandler = ^{
      closeUnlessKey(0);
    };
    // The system may refuse to bring the program to the front, which it never tells.
    closeUnlessKey(activationSeconds);
    return true;
  }
  void performDrag() override {
    if (NSApp.currentEvent != nil) [window_ performWindowDragWithEvent:NSApp.currentEvent];
  }

  void setTitle(const std::string& title) override { window_.title = nsString(title); }
  void setContent(Size contentSize, std::vector<View> views) override {
    @autoreleasepool {
      detachCanvases(window_.contentView);
      NSView* const content = window_.contentView;
      NSArray<NSView*>* const former = [content.subviews copy];
      for (NSView* view in former) [view removeFromSuperview];
      window_.defaultButton = nil;
      NSRect frame = [window_ frameRectForContentRect:contentOf(contentSize)];
      frame.origin = window_.frame.origin;
      [window_ setFrame:frame display:NO];
      addViews(views);
      [window_.contentView setNeedsDisplay:YES];
    }
  }
  void redraw(const std::string& viewId) override { [viewOf(viewId) setNeedsDisplay:YES]; }
  using Window::setText;
  void setText(const std::string& viewId, const SharedText& text, bool concealed) override {
    @autoreleasepool {
      setViewText(viewOf(viewId), text ? text : share({}), concealed);
    }
  }
  SharedText text(const std::string& viewId) const override {
    @autoreleasepool {
      return viewText(viewOf(viewId));
    }
  }
  void focus(const std::string& viewId) override { [window_ makeFirstResponder:viewOf(viewId)]; }
  bool press(const std::string& viewId) override {
    NSView* const view = viewOf(viewId);
    if (![view isKindOfClass:[NSButton class]] || !static_cast<NSButton*>(view).isEnabled)
      return false;
    [static_cast<NSButton*>(view) performClick:nil];
    return true;
  }
  void popUpMenu(const std::string& viewId, std::shared_ptr<Menu> menu,
                 std::function<void(const MenuItem&)> chosen) override {
    NSView* const view = viewOf(viewId);
    if (view == nil || menu == nullptr) return;
    popped_ = [[MarbelotMenuRenderer alloc] init];
    [popped_ fillWithTree:std::move(menu) chosen:std::move(chosen)];
    // From the run loop, as the call lasts until the menu closes.
    popping_ = queue_.after(0, [popped = popped_.menu, view] {
      const CGFloat below = view.isFlipped ? NSMaxY(view.bounds) : NSMinY(view.bounds);
      [popped popUpMenuPositioningItem:nil atLocation:NSMakePoint(0, below) inView:view];
    });
  }
  std::string viewAt(Point point) const override {
    const NSPoint inWindow =
        NSMakePoint(point.x - window_.frame.origin.x, point.y - window_.frame.origin.y);
    NSView* found = [window_.contentView hitTest:inWindow];
    while (found != nil && found.identifier.length == 0) found = found.superview;
    return found != nil ? utf8(found.identifier) : std::string();
  }

  WindowInfo info() {
    std::vector<ButtonInfo> buttons;
    appendButtons(window_.contentView, buttons);
    return {
        utf8(window_.identifier), utf8(window_.title), frame(), isKey(), std::move(buttons), this};
  }

 private:
  static NSRect contentOf(Size size) { return NSMakeRect(0, 0, size.width, size.height); }

  void behave(const WindowDescription& description) {
    window_.level = levelOf(description.level);
    window_.hidesOnDeactivate = NO;
    window_.becomesKeyOnlyIfNeeded = description.panel;
    if (description.everySpace) {
      NSUInteger behavior = NSUInteger{NSWindowCollectionBehaviorCanJoinAllSpaces} |
                            NSWindowCollectionBehaviorStationary;
      if (description.besideFullScreen) behavior |= NSWindowCollectionBehaviorFullScreenAuxiliary;
      if (description.panel) behavior |= NSWindowCollectionBehaviorIgnoresCycle;
      window_.collectionBehavior = behavior;
    }
    [window_ setHasShadow:description.shadow];
    [window_ setIgnoresMouseEvents:description.ignoresMouse];
    [window_ setMovableByWindowBackground:description.movableByBackground];
    window_.alphaValue = description.alpha;
    if (!description.titled) {
      [window_ setOpaque:NO];
      window_.backgroundColor = NSColor.clearColor;
    }
  }
  void listen(WindowDescription& description) {
    window_.closedHandler = ^{
      releaseKeyboard();
    };
    if (const auto closed = std::move(description.closed))
      window_.closedHandler = ^{
        releaseKeyboard();
        closed();
      };
    if (const auto moved = std::move(description.moved))
      window_.movedHandler = ^{
        // Of an animation, the end is told.
        if (!moving_.isRunning()) moved();
      };
    if (const auto keyDown = std::move(description.keyDown))
      window_.keyHandler = ^BOOL(NSEvent* event) {
        return keyDown(keyEvent(event));
      };
  }
  void addViews(const std::vector<View>& views) {
    for (const View& view : views)
      [window_.contentView
          addSubview:makeView(view, target_, @selector(pressed:), &pictures_).outer];
    prepare(window_.contentView);
  }
  // Texts leave Escape to the window, canvases take keys for it, and a button that Return presses
  // is known to it.
  void prepare(NSView* view) {
    for (NSView* inside in view.subviews) {
      if ([inside isKindOfClass:[MarbelotCanvas class]])
        static_cast<MarbelotCanvas*>(inside).wantsKeys = window_.keyHandler != nil;
      if ([inside isKindOfClass:[NSTextView class]])
        static_cast<NSTextView*>(inside).delegate = window_;
      if ([inside isKindOfClass:[NSButton class]] &&
          [static_cast<NSButton*>(inside).keyEquivalent isEqualToString:@"\r"])
        window_.defaultButton = static_cast<NSButton*>(inside);
      prepare(inside);
    }
  }
  void stay() {
    fading_.stop();
    window_.alphaValue = alpha_;
  }
  // Later, as the keys may be on their way to it.
  void closeUnlessKey(double seconds) {
    losing_ = queue_.after(seconds, [this] {
      if (!isKey()) [window_ close];
    });
  }
  void releaseKeyboard() {
    if (!std::exchange(grabs_, false)) return;
    NSApp.presentationOptions = NSApplicationPresentationDefault;
    window_.lostKeysHandler = nil;
    losing_.cancel();
  }
  NSView* viewOf(const std::string& id) const {
    return viewNamed(window_.contentView, nsString(id));
  }

  MainQueue& queue_;
  Pictures& pictures_;
  WindowList& list_;
  MarbelotMenuRenderer* popped_ = nil;
  Task popping_;
  const double alpha_;
  Animation moving_;
  Animation fading_;
  Point goal_;
  bool grabs_ = false;
  Task losing_;
  MarbelotButtonTarget* const target_;
  MarbelotWindow* window_;
};

class DescribedWindows final : public Windows {
 public:
  explicit DescribedWindows(MainQueue& queue) : queue_(queue), pictures_(queue) {}

  std::unique_ptr<Window> create(WindowDescription description) override {
    @autoreleasepool {
      return std::make_unique<DescribedWindow>(std::move(description), queue_, pictures_, ours_);
    }
  }

  double textWidth(const std::string& text, const Font& font) const override {
    return marbelot::textWidth(text, font);
  }

  std::vector<WindowInfo> visible() const override {
    std::vector<WindowInfo> found;
    @autoreleasepool {
      for (DescribedWindow* window : ours_)
        if (window->isVisible()) found.push_back(window->info());
      for (NSWindow* window in NSApp.windows) {
        // The system's own, such as the status item's, have no identifier of ours.
        if (!window.isVisible || window.identifier.length == 0 ||
            [window isKindOfClass:[MarbelotWindow class]])
          continue;
        std::vector<ButtonInfo> buttons;
        appendButtons(window.contentView, buttons);
        found.push_back({utf8(window.identifier), utf8(window.title), rectOf(window.frame),
                         window.isKeyWindow != NO, std::move(buttons), nullptr});
      }
    }
    return found;
  }

 private:
  MainQueue& queue_;
  Pictures pictures_;
  mutable WindowList ours_;
};

}  // namespace

std::unique_ptr<Windows> makeWindows(MainQueue& queue) {
  return std::make_unique<DescribedWindows>(queue);
}

}  // namespace marbelot
