// Makes the views of windows and alerts from their descriptions.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/window.h"

namespace marbelot {

NSRect nsRect(const Rect& rect);

// What the description makes: `outer` has its frame and goes into a window; `inner` holds the text
// and takes the focus. They differ for a text, which sits in a scroll view.
struct MadeView {
  NSView* outer;
  NSView* inner;
};

// A button sends `pressed` to `target`, with the view's id as its identifier.
MadeView makeView(const View& view, id target, SEL pressed);

// The title or contents of `inner`. Undoing does not bring back what it was before, and what is
// copied from a `concealed` text is marked so.
void setViewText(NSView* inner, NSString* text, bool concealed);
// What is typed after asking is a step of its own for undoing.
NSString* viewText(NSView* inner);

}  // namespace marbelot
