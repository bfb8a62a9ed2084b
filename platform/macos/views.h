// Makes the views of windows and alerts from their descriptions.
#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#import "platform/macos/pictures.h"
#include "platform/window.h"

namespace marbelot {

NSRect nsRect(const Rect& rect);
NSTextAlignment nsAlignment(Alignment alignment);
// Nil when the system has no symbol of that name.
NSImage* tintedSymbol(NSString* name, NSColor* tint, NSString* description);

// What the description makes: `outer` has its frame and goes into a window; `inner` holds the text
// and takes the focus. They differ for a text, which sits in a scroll view.
struct MadeView {
  NSView* outer;
  NSView* inner;
};

// A button sends `pressed` to `target`, with the view's id as its identifier. What the view holds
// is made with it. Without `pictures` pictures and canvases stay empty.
MadeView makeView(const View& view, id target, SEL pressed, Pictures* pictures);

// The inner view of that id within `view`, however deep; nil when there is none.
NSView* viewNamed(NSView* view, NSString* identifier);
// Canvases within it tell nobody any more.
void detachCanvases(NSView* view);
// The buttons within it.
void appendButtons(NSView* view, std::vector<ButtonInfo>& buttons);

// The title or contents of `inner`. Undoing does not bring back what it was before, and what is
// copied from a `concealed` text is marked so.
void setViewText(NSView* inner, const SharedText& text, bool concealed);
// The very text that was set, unless the user has changed it. What is typed after asking is a step
// of its own for undoing. Never null.
SharedText viewText(NSView* inner);

}  // namespace marbelot
