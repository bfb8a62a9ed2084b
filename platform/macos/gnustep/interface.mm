// Alerts, menus, views and windows.
#import <AppKit/AppKit.h>

#import "platform/macos/gnustep/gaps.h"

// --- Alerts ----------------------------------------------------------------------------------

static char accessoryKey, hiddenKey, buttonKey, identifierKey;

@interface NSAlert (GNUstepPrivate)
- (void)_setupPanel;
@end

namespace {

// The system's alert has its window from the start, GNUstep's only while it runs, and in it other
// buttons than those that it tells of.
id (*madeAlertWindow)(id, SEL);
id alertWindow(NSAlert* self, SEL name) {
  if (madeAlertWindow(self, name) != nil) return madeAlertWindow(self, name);
  [self _setupPanel];
  NSWindow* const window = madeAlertWindow(self, name);
  NSMutableArray<NSButton*>* const buttons = static_cast<NSMutableArray*>(self.buttons);
  for (NSUInteger i = 0; i < buttons.count; ++i)
    for (NSView* view in [window.contentView subviews])
      if ([view isKindOfClass:[NSButton class]] && view.tag == buttons[i].tag)
        buttons[i] = static_cast<NSButton*>(view);
  return window;
}

NSInteger runAlert(NSAlert* self, SEL) {
  NSWindow* const window = [self window];
  if (window.initialFirstResponder != nil) [window makeFirstResponder:window.initialFirstResponder];
  const NSInteger response = [NSApp runModalForWindow:window];
  [window orderOut:self];
  return response;
}

}  // namespace

@implementation NSAlert (MarbelotGaps)
- (void)setAccessoryView:(NSView*)view {
  attach(self, &accessoryKey, view);
}
- (NSView*)accessoryView {
  return objc_getAssociatedObject(self, &accessoryKey);
}
// Between the message and the buttons.
- (void)layout {
  NSView* const accessory = self.accessoryView;
  NSWindow* const window = [self window];
  if (accessory == nil || accessory.window == window) return;
  constexpr CGFloat gap = 8;
  CGFloat top = 0;
  for (NSButton* button in self.buttons) top = MAX(top, NSMaxY(button.frame));
  NSRect frame = window.frame;
  frame.size.height += NSHeight(accessory.frame) + gap;
  [window setFrame:frame display:NO];
  NSView* const content = window.contentView;
  const CGFloat left = (NSWidth(content.frame) - NSWidth(accessory.frame)) / 2;
  [accessory setFrameOrigin:NSMakePoint(left, top + gap)];
  [content addSubview:accessory];
}
@end

// --- Menus and the menu bar ------------------------------------------------------------------

namespace {

// On macOS the menu tells its delegate and lasts until it is closed; here it is shown, and the call
// returns at once.
BOOL popUpMenu(NSMenu* self, SEL, NSMenuItem*, NSPoint, NSView*) {
  id<NSMenuDelegate> const delegate = self.delegate;
  if ([delegate respondsToSelector:@selector(menuNeedsUpdate:)]) [delegate menuNeedsUpdate:self];
  if ([delegate respondsToSelector:@selector(menuWillOpen:)]) [delegate menuWillOpen:self];
  [self displayTransient];
  return YES;
}

// GNUstep asks the delegate at every change of an item, macOS before it shows the menu.
void (*updateWithDelegate)(id, SEL);
void updateMenu(NSMenu* self, SEL name) {
  id<NSMenuDelegate> const delegate = self.delegate;
  self.delegate = nil;
  updateWithDelegate(self, name);
  self.delegate = delegate;
}

// GNUstep has no menu bar to put items into.
id systemStatusBar(id, SEL) {
  static NSStatusBar* const bar = [[NSStatusBar alloc] init];
  return bar;
}

}  // namespace

@implementation NSMenuItem (MarbelotGaps)
- (BOOL)isHidden {
  return [objc_getAssociatedObject(self, &hiddenKey) boolValue];
}
- (void)setHidden:(BOOL)hidden {
  attach(self, &hiddenKey, @(hidden));
}
@end

@implementation NSStatusItem (MarbelotGaps)
- (NSStatusBarButton*)button {
  NSStatusBarButton* button = objc_getAssociatedObject(self, &buttonKey);
  if (button == nil) {
    button = [[NSStatusBarButton alloc] initWithFrame:NSMakeRect(0, 0, 24, 24)];
    attach(self, &buttonKey, button);
  }
  return button;
}
@end

// --- Views and windows -----------------------------------------------------------------------

@implementation NSApplication (MarbelotGaps)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  return YES;
}
@end

@implementation NSControl (MarbelotGaps)
- (void)setLineBreakMode:(NSLineBreakMode)mode {
  [self.cell setLineBreakMode:mode];
}
- (NSLineBreakMode)lineBreakMode {
  return [self.cell lineBreakMode];
}
@end

@implementation NSColor (MarbelotGaps)
+ (NSColor*)controlAccentColor {
  return NSColor.alternateSelectedControlColor;
}
@end

// Of the weights there are two here.
@implementation NSFont (MarbelotGaps)
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
  return weight >= NSFontWeightSemibold ? [NSFont boldSystemFontOfSize:size]
                                        : [NSFont systemFontOfSize:size];
}
+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
  return [NSFont userFixedPitchFontOfSize:size];
}
@end

// GNUstep's texts replace nothing by themselves.
@implementation NSTextView (MarbelotGaps)
- (BOOL)isAutomaticQuoteSubstitutionEnabled {
  return NO;
}
- (void)setAutomaticQuoteSubstitutionEnabled:(BOOL)enabled {
}
- (BOOL)isAutomaticDashSubstitutionEnabled {
  return NO;
}
- (void)setAutomaticDashSubstitutionEnabled:(BOOL)enabled {
}
- (BOOL)isAutomaticTextReplacementEnabled {
  return NO;
}
- (void)setAutomaticTextReplacementEnabled:(BOOL)enabled {
}
- (BOOL)isAutomaticSpellingCorrectionEnabled {
  return NO;
}
- (void)setAutomaticSpellingCorrectionEnabled:(BOOL)enabled {
}
@end

@implementation NSWindow (MarbelotGaps)
- (NSString*)identifier {
  return objc_getAssociatedObject(self, &identifierKey);
}
- (void)setIdentifier:(NSString*)identifier {
  attach(self, &identifierKey, [identifier copy]);
}
@end

// GNUstep binds Escape to completing a word, and nothing to giving up.
namespace {
void (*doBoundCommand)(id, SEL, SEL);
void doCommand(id self, SEL name, SEL command) {
  doBoundCommand(
      self, name,
      sel_isEqual(command, @selector(complete:)) ? @selector(cancelOperation:) : command);
}
}  // namespace

// There is no Finder.
@implementation NSWorkspace (MarbelotGaps)
- (void)activateFileViewerSelectingURLs:(NSArray*)urls {
}
@end

// --- The methods that GNUstep has, but otherwise ---------------------------------------------

@interface InterfaceReplacements : NSObject
@end

@implementation InterfaceReplacements
+ (void)load {
  madeAlertWindow = replace([NSAlert class], @selector(window), (id(*)(id, SEL))alertWindow);
  replace([NSAlert class], @selector(runModal), runAlert);
  replace([NSMenu class], @selector(popUpMenuPositioningItem:atLocation:inView:), popUpMenu);
  updateWithDelegate = replace([NSMenu class], @selector(update), (void (*)(id, SEL))updateMenu);
  replace(object_getClass([NSStatusBar class]), @selector(systemStatusBar), systemStatusBar);
  doBoundCommand = replace([NSTextView class], @selector(doCommandBySelector:), doCommand);
}
@end
