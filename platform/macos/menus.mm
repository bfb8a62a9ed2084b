#import "platform/macos/menus.h"

#include <CoreGraphics/CoreGraphics.h>
#include <unistd.h>

#include <cstring>

#include "platform/macos/conversions.h"
#include "platform/text.h"

using marbelot::MenuItemRef;

// A menu item's represented object: the item of the tree that it stands for.
@interface MarbelotItemBox : NSObject {
 @public
  MenuItemRef item;
}
@end

@implementation MarbelotItemBox
@end

namespace {

// Nil where the pixels are not at hand.
NSImage* menuImage(const marbelot::Image& image) {
  const marbelot::SharedBitmap pixels = image.pixels();
  if (pixels == nullptr) return nil;
  NSBitmapImageRep* const copy = [[NSBitmapImageRep alloc]
      initWithBitmapDataPlanes:nullptr
                    pixelsWide:pixels->width()
                    pixelsHigh:pixels->height()
                 bitsPerSample:8
               samplesPerPixel:4
                      hasAlpha:YES
                      isPlanar:NO
                colorSpaceName:NSDeviceRGBColorSpace
                   bytesPerRow:pixels->width() * marbelot::Bitmap::pixelBytes
                  bitsPerPixel:32];
  if (copy == nil) return nil;
  const auto bytesPerRow = static_cast<std::size_t>(copy.bytesPerRow);
  for (int y = 0; y < pixels->height(); ++y)
    std::memcpy(copy.bitmapData + bytesPerRow * static_cast<std::size_t>(y), pixels->row(y),
                bytesPerRow);
  constexpr CGFloat points = 16;
  NSImage* const shown = [[NSImage alloc] initWithSize:NSMakeSize(points, points)];
  [shown addRepresentation:copy];
  return shown;
}

}  // namespace

@implementation MarbelotMenuRenderer {
  std::shared_ptr<marbelot::Menu> _tree;
  marbelot::MenuDelegate* _delegate;
  std::function<void(const marbelot::MenuItem&)> _chosen;
  NSMenu* __weak _highlightedIn;
  MenuItemRef _told;  // what is highlighted, as the delegate knows it
  NSHashTable<NSMenu*>* _open;
  BOOL _fillsAll;
}

- (instancetype)init {
  self = [super init];
  if (self != nil) {
    _menu = [self emptyMenu];
    _open = [NSHashTable hashTableWithOptions:NSPointerFunctionsWeakMemory |
                                              NSPointerFunctionsObjectPointerPersonality];
  }
  return self;
}

- (NSMenu*)emptyMenu {
  NSMenu* menu = [[NSMenu alloc] initWithTitle:@""];
  menu.autoenablesItems = NO;
  // Highlights are told to the delegate of the very menu that holds the item.
  menu.delegate = self;
  return menu;
}

- (void)showTree:(std::shared_ptr<marbelot::Menu>)tree delegate:(marbelot::MenuDelegate*)delegate {
  _tree = std::move(tree);
  _delegate = delegate;
  [self refresh];
}

- (void)fillWithTree:(std::shared_ptr<marbelot::Menu>)tree
              chosen:(std::function<void(const marbelot::MenuItem&)>)chosen {
  _tree = std::move(tree);
  _chosen = std::move(chosen);
  _fillsAll = YES;
  [self fill:_menu from:*_tree];
}

- (void)refresh {
  if (_tree != nullptr && [_open containsObject:_menu]) [self fill:_menu from:*_tree];
}

- (NSMenuItem*)addItem:(BOOL)separator to:(NSMenu*)menu at:(NSInteger)index {
  if (separator) {
    [menu insertItem:[NSMenuItem separatorItem] atIndex:index];
  } else {
    [menu insertItemWithTitle:@"" action:nullptr keyEquivalent:@"" atIndex:index];
  }
  return [menu itemAtIndex:index];
}

// Brings the item whose submenu is open to its new place, so that it stays in use. NO when the
// level must stay as it is.
- (BOOL)alignOpenIn:(NSMenu*)menu with:(const marbelot::Menu&)tree {
  NSInteger at = 0;
  while (at < menu.numberOfItems && ![self isOpen:[menu itemAtIndex:at]]) ++at;
  if (at == menu.numberOfItems) return YES;
  const MenuItemRef open = [self itemOf:[menu itemAtIndex:at]];
  const auto wanted = open != nullptr ? marbelot::indexOfOpen(tree, *open) : std::nullopt;
  if (!wanted) return NO;
  for (; at < static_cast<NSInteger>(*wanted); ++at) [self addItem:NO to:menu at:0];
  for (; at > static_cast<NSInteger>(*wanted); --at) [menu removeItemAtIndex:0];
  return YES;
}

- (BOOL)isOpen:(NSMenuItem*)shown {
  return shown.submenu != nil && [_open containsObject:shown.submenu];
}

// Edits in place: taking items away from an open menu would close the submenus that the user is in.
// The depth of the recursion is that of the menus.
- (void)fill:(NSMenu*)menu from:(const marbelot::Menu&)tree {
  if (![self alignOpenIn:menu with:tree]) return;
  const NSInteger wanted = static_cast<NSInteger>(tree.items.size());
  while (menu.numberOfItems > wanted) [menu removeItemAtIndex:menu.numberOfItems - 1];
  for (NSInteger index = 0; index < wanted; ++index) {
    const MenuItemRef& item = tree.items[static_cast<std::size_t>(index)];
    NSMenuItem* shown = index < menu.numberOfItems ? [menu itemAtIndex:index] : nil;
    if (shown == nil || shown.isSeparatorItem != item->separator) {
      if (shown != nil) [menu removeItemAtIndex:index];
      shown = [self addItem:item->separator to:menu at:index];
    }
    [self update:shown from:item];
  }
}

- (void)update:(NSMenuItem*)shown from:(const MenuItemRef&)item {
  shown.hidden = item->hidden;
  if (item->separator) return;
  MarbelotItemBox* box = [[MarbelotItemBox alloc] init];
  box->item = item;
  shown.representedObject = box;
  shown.title = marbelot::nsString(marbelot::text::shownTitle(item->title));
  shown.toolTip = item->toolTip.empty() ? nil : marbelot::nsString(item->toolTip);
  shown.image = item->image ? menuImage(*item->image) : nil;
  shown.enabled = item->enabled;
  shown.state = item->checked ? NSControlStateValueOn : NSControlStateValueOff;
  shown.keyEquivalent = marbelot::nsString(item->key);
  if (item->submenu != nullptr) {
    NSMenu* const submenu = shown.submenu != nil ? shown.submenu : [self emptyMenu];
    if (shown.submenu != submenu) shown.submenu = submenu;
    if (_fillsAll || [_open containsObject:submenu]) [self fill:submenu from:*item->submenu];
    return;
  }
  if (shown.submenu != nil) shown.submenu = nil;
  shown.target = self;
  shown.action = item->choosable() ? @selector(itemChosen:) : nullptr;
}

- (MenuItemRef)itemOf:(NSMenuItem*)shown {
  id box = shown.representedObject;
  if (![box isKindOfClass:[MarbelotItemBox class]]) return nullptr;
  return static_cast<MarbelotItemBox*>(box)->item;
}

// By identity: two menus with nothing in them may count as equal.
- (NSMenuItem*)parentOf:(NSMenu*)menu {
  for (NSMenuItem* item in menu.supermenu.itemArray)
    if (item.submenu == menu) return item;
  return nil;
}

- (void)itemChosen:(NSMenuItem*)sender {
  // A copy: the action may rebuild the tree.
  const MenuItemRef item = [self itemOf:sender];
  if (item == nullptr) return;
  if (_delegate != nullptr) {
    _delegate->menuItemChosen(*item);
  } else if (const auto chosen = _chosen) {
    chosen(*item);
  }
}

// The last moment at which items may come and go before the menu is shown.
- (void)menuNeedsUpdate:(NSMenu*)menu {
  if (_fillsAll || _tree == nullptr || [_open containsObject:menu]) return;
  if (menu == _menu) {
    if (_delegate != nullptr) _delegate->menuWillOpen();
    [self fill:menu from:*_tree];
    return;
  }
  const MenuItemRef item = [self itemOf:[self parentOf:menu]];
  if (item != nullptr && item->submenu != nullptr) [self fill:menu from:*item->submenu];
}

- (void)menuWillOpen:(NSMenu*)menu {
  [_open addObject:menu];
}

- (void)menu:(NSMenu*)menu willHighlightItem:(NSMenuItem*)shown {
  _highlightedIn = menu;
  [self tell:shown];
}

- (void)menuDidClose:(NSMenu*)menu {
  [_open removeObject:menu];
  if (menu == _menu) {
    [self tell:nil];
    if (_delegate != nullptr) _delegate->menuDidClose();
  } else if (NSMenu* const parent = menu.supermenu; parent != nil && menu == _highlightedIn) {
    // The keys go back to the item beside it, which has been highlighted all the time.
    _highlightedIn = parent;
    [self tell:[self parentOf:menu]];
  }
}

// The system says only which windows there are, the one that was opened last first.
- (std::optional<marbelot::Rect>)openFrame {
  if (![_open containsObject:_menu]) return std::nullopt;
  NSScreen* const first = NSScreen.screens.firstObject;
  const double top = first != nil ? NSMaxY(first.frame) : 0;
  NSArray* const windows = (__bridge_transfer NSArray*)CGWindowListCopyWindowInfo(
      kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID);
  for (NSDictionary* window in windows) {
    const int owner = [[window objectForKey:(__bridge NSString*)kCGWindowOwnerPID] intValue];
    const int level = [[window objectForKey:(__bridge NSString*)kCGWindowLayer] intValue];
    if (owner != getpid() || level != CGWindowLevelForKey(kCGPopUpMenuWindowLevelKey)) continue;
    NSDictionary* const bounds = [window objectForKey:(__bridge NSString*)kCGWindowBounds];
    const auto number = [bounds](NSString* key) { return [[bounds objectForKey:key] doubleValue]; };
    const double height = number(@"Height");
    return marbelot::Rect{number(@"X"), top - number(@"Y") - height, number(@"Width"), height};
  }
  return std::nullopt;
}

- (void)tell:(NSMenuItem*)shown {
  const MenuItemRef item = shown != nil && shown.isEnabled ? [self itemOf:shown] : nullptr;
  if (_delegate == nullptr || marbelot::sameItem(_told.get(), item.get())) return;
  _told = item;
  _delegate->menuWillHighlightItem(item.get());
}
@end
