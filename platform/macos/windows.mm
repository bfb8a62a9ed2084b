// Windows from their descriptions.
#import <AppKit/AppKit.h>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"
#import "platform/macos/views.h"

// Closes on Escape where it is told to, and lets Command and Return press the default button from a
// text that keeps Return for itself.
@interface MarbelotWindow : NSWindow <NSTextViewDelegate>
@property(nonatomic, weak) NSButton* defaultButton;
@property(nonatomic) BOOL escapeCloses;
@property(nonatomic, copy) void (^closedHandler)(void);
@end

@implementation MarbelotWindow
- (void)close {
  [super close];
  if (self.closedHandler != nil) self.closedHandler();
}

- (void)cancelOperation:(id)sender {
  if (self.escapeCloses) [self performClose:sender];
}

// A text offers completions on Escape unless its delegate takes the key.
- (BOOL)textView:(NSTextView*)textView doCommandBySelector:(SEL)selector {
  if (selector != @selector(cancelOperation:)) return NO;
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
@end

@implementation MarbelotButtonTarget {
  std::function<void(const std::string&)> _handler;
}

- (instancetype)initWithHandler:(std::function<void(const std::string&)>)handler {
  self = [super init];
  if (self != nil) _handler = std::move(handler);
  return self;
}

- (void)pressed:(NSButton*)sender {
  // A copy, because the callee may drop the window.
  if (const auto handler = _handler) handler(marbelot::utf8(sender.identifier));
}
@end

namespace marbelot {
namespace {

NSWindowStyleMask styleOf(const WindowDescription& description) {
  NSWindowStyleMask style = NSWindowStyleMaskTitled;
  if (description.closable) style |= NSWindowStyleMaskClosable;
  if (description.miniaturizable) style |= NSWindowStyleMaskMiniaturizable;
  if (description.resizable) style |= NSWindowStyleMaskResizable;
  return style;
}

class DescribedWindow final : public Window {
 public:
  explicit DescribedWindow(WindowDescription description)
      : target_([[MarbelotButtonTarget alloc] initWithHandler:std::move(description.pressed)]) {
    const NSRect content =
        NSMakeRect(0, 0, description.contentSize.width, description.contentSize.height);
    window_ = [[MarbelotWindow alloc] initWithContentRect:content
                                                styleMask:styleOf(description)
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    window_.releasedWhenClosed = NO;
    if (const auto closed = std::move(description.closed)) {
      window_.closedHandler = ^{
        closed();
      };
    }
    window_.escapeCloses = description.escapeCloses;
    window_.title = nsString(description.title);
    window_.identifier = nsString(description.id);
    for (const View& view : description.views) {
      const MadeView made = makeView(view, target_, @selector(pressed:));
      [window_.contentView addSubview:made.outer];
      views_[made.inner.identifier] = made.inner;
      if (view.kind == ViewKind::button && view.defaultKey)
        window_.defaultButton = static_cast<NSButton*>(made.inner);
      if (view.kind == ViewKind::text) static_cast<NSTextView*>(made.inner).delegate = window_;
    }
  }
  ~DescribedWindow() override {
    window_.closedHandler = nil;
    [window_ close];
  }
  DescribedWindow(const DescribedWindow&) = delete;
  DescribedWindow& operator=(const DescribedWindow&) = delete;

  void show() override {
    [NSApp activateIgnoringOtherApps:YES];
    [window_ makeKeyAndOrderFront:nil];
  }
  void center() override {
    if (![window_ isZoomed]) [window_ center];
  }
  bool isVisible() const override { return window_.isVisible; }
  void setTitle(const std::string& title) override { window_.title = nsString(title); }
  using Window::setText;
  void setText(const std::string& viewId, const SharedText& text, bool concealed) override {
    @autoreleasepool {
      setViewText(viewOf(viewId), text ? nsString(*text) : @"", concealed);
    }
  }
  SharedText text(const std::string& viewId) const override {
    @autoreleasepool {
      NSView* const view = viewOf(viewId);
      return share(view != nil ? utf8(viewText(view)) : std::string());
    }
  }
  void focus(const std::string& viewId) override { [window_ makeFirstResponder:viewOf(viewId)]; }

 private:
  NSView* viewOf(const std::string& id) const { return views_[nsString(id)]; }

  MarbelotButtonTarget* const target_;
  MarbelotWindow* window_;
  NSMutableDictionary<NSString*, NSView*>* const views_ = [NSMutableDictionary dictionary];
};

class DescribedWindows final : public Windows {
 public:
  std::unique_ptr<Window> create(WindowDescription description) override {
    @autoreleasepool {
      return std::make_unique<DescribedWindow>(std::move(description));
    }
  }

  std::vector<WindowInfo> visible() const override {
    std::vector<WindowInfo> found;
    @autoreleasepool {
      // The first screen is the one whose bottom left corner is the origin.
      NSScreen* const first = NSScreen.screens.firstObject;
      const double top = first != nil ? NSMaxY(first.frame) : 0;
      for (NSWindow* window in NSApp.windows) {
        // The system's own, such as the status item's, have no identifier of ours.
        if (!window.isVisible || window.identifier.length == 0) continue;
        const NSRect frame = window.frame;
        found.push_back(
            {utf8(window.identifier),
             utf8(window.title),
             {frame.origin.x, top - NSMaxY(frame), frame.size.width, frame.size.height}});
      }
    }
    return found;
  }
};

}  // namespace

std::unique_ptr<Windows> makeWindows() { return std::make_unique<DescribedWindows>(); }

}  // namespace marbelot
