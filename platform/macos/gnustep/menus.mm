// Menus that tell their delegates what the user does in them, and the status item's place in the
// menu bar, which GNUstep does not have: a small window in the corner of the screen.
#import <AppKit/AppKit.h>

#include <cstdio>
#include <cstdlib>

#import "platform/macos/gnustep/gaps.h"

namespace {

char hiddenKey, buttonKey, windowKey;

constexpr CGFloat barHeight = 24;
constexpr CGFloat itemWidth = 40;

// GNUstep asks the delegate at every change of an item, macOS before it shows the menu.
void (*updateWithDelegate)(id, SEL);
void updateMenu(NSMenu* self, SEL name) {
  id<NSMenuDelegate> const delegate = self.delegate;
  self.delegate = nil;
  updateWithDelegate(self, name);
  self.delegate = delegate;
}

// For tests, which see the menus only as pictures.
bool describesMenus() { return getenv("MARBELOT_DESCRIBE_MENUS") != nullptr; }

// Each item that is shown, and where its middle is on the screen, from the top left.
void describe(NSMenu* menu) {
  NSMenuView* const view = menu.menuRepresentation;
  const CGFloat top = NSMaxY(NSScreen.mainScreen.frame);
  for (NSInteger i = 0; i < menu.numberOfItems; ++i) {
    NSMenuItem* const item = [menu itemAtIndex:i];
    if (item.isHidden || item.isSeparatorItem) continue;
    const NSRect rect = [view convertRect:[view rectOfItemAtIndex:i] toView:nil];
    const NSRect place = [view.window convertRectToScreen:rect];
    std::fprintf(stderr, "menu item %.0f %.0f %s %s\n", NSMidX(place), top - NSMidY(place),
                 item.isEnabled ? "+" : "-", item.title.UTF8String);
  }
}

void keepOnScreen(NSWindow* window) {
  const NSRect screen = NSScreen.mainScreen.frame;
  const NSRect frame = window.frame;
  const CGFloat highest = NSMaxY(screen) - barHeight - NSHeight(frame);
  [window setFrameOrigin:NSMakePoint(MIN(NSMinX(frame), NSMaxX(screen) - NSWidth(frame)),
                                     MIN(MAX(NSMinY(frame), NSMinY(screen)), highest))];
}

void (*displayUntold)(id, SEL);
void displayTransient(NSMenu* self, SEL name) {
  id<NSMenuDelegate> const delegate = self.delegate;
  if ([delegate respondsToSelector:@selector(menuNeedsUpdate:)]) [delegate menuNeedsUpdate:self];
  if ([delegate respondsToSelector:@selector(menuWillOpen:)]) [delegate menuWillOpen:self];
  displayUntold(self, name);
  keepOnScreen([self.menuRepresentation window]);
  if (describesMenus()) describe(self);
}

void (*closeUntold)(id, SEL);
void closeTransient(NSMenu* self, SEL name) {
  closeUntold(self, name);
  id<NSMenuDelegate> const delegate = self.delegate;
  if ([delegate respondsToSelector:@selector(menuDidClose:)]) [delegate menuDidClose:self];
}

void (*highlightUntold)(id, SEL, NSInteger);
void highlight(NSMenuView* self, SEL name, NSInteger index) {
  const bool changes = index != self.highlightedItemIndex;
  highlightUntold(self, name, index);
  if (!changes) return;
  NSMenuItem* const item = index < 0 ? nil : [self.menu itemAtIndex:index];
  id<NSMenuDelegate> const delegate = self.menu.delegate;
  if ([delegate respondsToSelector:@selector(menu:willHighlightItem:)])
    [delegate menu:self.menu willHighlightItem:item];
  if (describesMenus() && item != nil) std::fprintf(stderr, "menu at %s\n", item.title.UTF8String);
}

// The call lasts until the menu is closed.
BOOL popUpMenu(NSMenu* self, SEL, NSMenuItem*, NSPoint, NSView*) {
  NSMenuView* const view = self.menuRepresentation;
  [self displayTransient];
  [view mouseDown:NSApp.currentEvent];
  if (self.isTransient) [self closeTransient];
  return YES;
}

// Beside its item, on the side where there is room.
NSPoint (*locationInBar)(id, SEL, NSMenu*);
NSPoint locationForSubmenu(NSMenuView* self, SEL name, NSMenu* submenu) {
  if (self.isHorizontal) return locationInBar(self, name, submenu);
  const NSInteger index = [self.menu indexOfItemWithSubmenu:submenu];
  const NSRect inWindow = [self convertRect:[self rectOfItemAtIndex:index] toView:nil];
  const NSRect item = [self.window convertRectToScreen:inWindow];
  const NSSize size = static_cast<NSView*>(submenu.menuRepresentation).window.frame.size;
  const NSRect menu = self.window.frame;
  const bool fits = NSMaxX(menu) + size.width <= NSMaxX(NSScreen.mainScreen.frame);
  return NSMakePoint(fits ? NSMaxX(menu) : NSMinX(menu) - size.width, NSMaxY(item) - size.height);
}

CGFloat (*heightOfShown)(id, SEL, NSInteger);
CGFloat heightOfItem(NSMenuView* self, SEL name, NSInteger index) {
  return [self.menu itemAtIndex:index].isHidden ? 0 : heightOfShown(self, name, index);
}

id systemStatusBar(id, SEL) {
  static NSStatusBar* const bar = [[NSStatusBar alloc] init];
  return bar;
}

}  // namespace

@interface NSMenu (GNUstepPrivate)
- (BOOL)isTransient;
- (void)displayTransient;
- (void)closeTransient;
@end

@implementation NSMenuItem (MarbelotGaps)
- (BOOL)isHidden {
  return [objc_getAssociatedObject(self, &hiddenKey) boolValue];
}
- (void)setHidden:(BOOL)hidden {
  if (hidden == self.isHidden) return;
  attach(self, &hiddenKey, @(hidden));
  [static_cast<NSMenuView*>(self.menu.menuRepresentation) setNeedsSizing:YES];
}
@end

@implementation NSStatusItem (MarbelotGaps)
- (NSStatusBarButton*)button {
  NSStatusBarButton* button = objc_getAssociatedObject(self, &buttonKey);
  if (button != nil) return button;
  const NSRect inside = NSMakeRect(0, 0, itemWidth, barHeight);
  button = [[NSStatusBarButton alloc] initWithFrame:inside];
  button.bordered = NO;
  button.target = self;
  button.action = @selector(gapOpenMenu);
  [button sendActionOn:NSLeftMouseDownMask];
  attach(self, &buttonKey, button);
  NSWindow* const window = [[NSWindow alloc] initWithContentRect:inside
                                                       styleMask:NSBorderlessWindowMask
                                                         backing:NSBackingStoreBuffered
                                                           defer:NO];
  window.releasedWhenClosed = NO;
  window.level = NSStatusWindowLevel;
  window.contentView = button;
  const NSRect screen = NSScreen.mainScreen.frame;
  [window setFrameOrigin:NSMakePoint(NSMaxX(screen) - itemWidth, NSMaxY(screen) - barHeight)];
  [window orderFrontRegardless];
  attach(self, &windowKey, window);
  return button;
}
- (void)gapOpenMenu {
  [self.menu popUpMenuPositioningItem:nil atLocation:NSZeroPoint inView:self.button];
}
@end

@interface MenuReplacements : NSObject
@end

@implementation MenuReplacements
+ (void)load {
  updateWithDelegate = replace([NSMenu class], @selector(update), (void (*)(id, SEL))updateMenu);
  displayUntold =
      replace([NSMenu class], @selector(displayTransient), (void (*)(id, SEL))displayTransient);
  closeUntold =
      replace([NSMenu class], @selector(closeTransient), (void (*)(id, SEL))closeTransient);
  highlightUntold = replace([NSMenuView class], @selector(setHighlightedItemIndex:),
                            (void (*)(id, SEL, NSInteger))highlight);
  heightOfShown = replace([NSMenuView class], @selector(heightForItem:),
                          (CGFloat(*)(id, SEL, NSInteger))heightOfItem);
  locationInBar = replace([NSMenuView class], @selector(locationForSubmenu:),
                          (NSPoint(*)(id, SEL, NSMenu*))locationForSubmenu);
  replace([NSMenu class], @selector(popUpMenuPositioningItem:atLocation:inView:), popUpMenu);
  replace(object_getClass([NSStatusBar class]), @selector(systemStatusBar), systemStatusBar);
}
@end
