// Alerts, views and windows.
#import <AppKit/AppKit.h>

#import "platform/macos/gnustep/gaps.h"

// --- Alerts ----------------------------------------------------------------------------------

static char accessoryKey, identifierKey;

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
  NSView* const content = window.contentView;
  NSArray<NSView*>* const views = [content.subviews copy];
  NSMutableArray<NSNumber*>* const bottoms = [NSMutableArray array];
  for (NSView* view in views) [bottoms addObject:@(NSMinY(view.frame))];
  const CGFloat more = NSHeight(accessory.frame) + gap;
  NSRect frame = window.frame;
  frame.size.height += more;
  window.maxSize = frame.size;
  window.minSize = frame.size;
  [window setFrame:frame display:NO];
  for (NSUInteger i = 0; i < views.count; ++i) {
    const bool isButton = [views[i] isKindOfClass:[NSButton class]] && views[i].tag != 0;
    [views[i] setFrameOrigin:NSMakePoint(NSMinX(views[i].frame),
                                         bottoms[i].doubleValue + (isButton ? 0 : more))];
  }
  const CGFloat left = (NSWidth(content.frame) - NSWidth(accessory.frame)) / 2;
  [accessory setFrameOrigin:NSMakePoint(left, top + gap)];
  [content addSubview:accessory];
}
@end

// --- Views and windows -----------------------------------------------------------------------

@implementation NSApplication (MarbelotGaps)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  return YES;
}
@end

// GNUstep draws symbols as they are.
@implementation NSButton (MarbelotGaps)
- (void)setContentTintColor:(NSColor*)color {
  NSImage* const symbol = self.image;
  if (symbol == nil) return;
  [symbol lockFocus];
  [color set];
  NSRectFillUsingOperation(NSMakeRect(0, 0, symbol.size.width, symbol.size.height),
                           NSCompositingOperationSourceAtop);
  [symbol unlockFocus];
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

// GNUstep leaves the colours that it knows by name as they are.
namespace {
NSColor* withAlpha(NSColor* self, SEL, CGFloat alpha) {
  NSColor* const plain = [self colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
  return [NSColor colorWithCalibratedRed:plain.redComponent
                                   green:plain.greenComponent
                                    blue:plain.blueComponent
                                   alpha:alpha];
}
}  // namespace

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
  replace([NSColor class], @selector(colorWithAlphaComponent:), withAlpha);
  doBoundCommand = replace([NSTextView class], @selector(doCommandBySelector:), doCommand);
}
@end
