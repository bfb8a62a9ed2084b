// What canvases draw with, and the view of one.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/canvas.h"
#import "platform/macos/pictures.h"

@interface MarbelotCanvas : NSView
// A click makes its panel the key window.
@property(nonatomic) BOOL wantsKeys;
- (instancetype)initWithDelegate:(marbelot::CanvasDelegate*)delegate
                        pictures:(marbelot::Pictures*)pictures;
// The delegate is told nothing any more.
- (void)detach;
@end

namespace marbelot {

NSColor* nsColor(const Color& color);
NSFont* nsFont(const Font& font);
double textWidth(const std::string& text, const Font& font);
KeyEvent keyEvent(NSEvent* event);

}  // namespace marbelot
