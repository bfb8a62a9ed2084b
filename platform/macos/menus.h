// Shows menu data as an NSMenu: the status item's menu and the Dock's.
#pragma once

#import <AppKit/AppKit.h>

#include <functional>
#include <memory>
#include <optional>

#include "platform/geometry.h"
#include "platform/menu.h"

// Keeps one NSMenu in step with a tree. The NSMenu stays the same object when the tree is edited or
// replaced; each level is filled when the system is about to show it. Retain the renderer as long
// as its menu is used: the menu and its items refer to it weakly.
@interface MarbelotMenuRenderer : NSObject <NSMenuDelegate>
@property(nonatomic, readonly) NSMenu* menu;

// The delegate is not owned.
- (void)showTree:(std::shared_ptr<marbelot::Menu>)tree delegate:(marbelot::MenuDelegate*)delegate;
// Brings what is open in step with the tree after an edit.
- (void)refresh;
// The frame of the menu or submenu in which an item is highlighted, in screen coordinates; none
// while it is closed.
- (std::optional<marbelot::Rect>)openFrame;

// Fills all levels at once, for a menu that is shown once, and for the Dock, which takes a
// copy.
- (void)fillWithTree:(std::shared_ptr<marbelot::Menu>)tree
              chosen:(std::function<void(const marbelot::MenuItem&)>)chosen;
@end
