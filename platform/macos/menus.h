// Shows menu data as an NSMenu: the status item's menu and the Dock's.
#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <memory>
#include <optional>

#include "platform/geometry.h"
#include "platform/menu.h"

// Keeps one NSMenu in step with a tree. The NSMenu stays the same object when the tree is edited or
// replaced, so that a menu that is open shows the new state. Retain it as long as its menu is used:
// the menu and its items refer to it weakly.
@interface MarbelotMenuRenderer : NSObject <NSMenuDelegate>
@property(nonatomic, readonly) NSMenu* menu;

// `chosen` is told of choices when there is no delegate; the delegate is not owned.
- (void)showTree:(std::shared_ptr<marbelot::Menu>)tree
        delegate:(marbelot::MenuDelegate*)delegate
          chosen:(std::function<void(const marbelot::MenuItem&)>)chosen;
// Brings the NSMenu in step with the tree after an edit.
- (void)refresh;
// The frame of the menu or submenu in which an item is highlighted, in screen coordinates; none
// while it is closed.
- (std::optional<marbelot::Rect>)openFrame;
@end
