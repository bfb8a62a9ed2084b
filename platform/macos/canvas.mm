#import "platform/macos/canvas.h"

#include "platform/macos/conversions.h"
#import "platform/macos/menus.h"
#import "platform/macos/views.h"

namespace marbelot {

NSColor* nsColor(const Color& color) {
  NSColor* plain = nil;
  switch (color.role) {
    case Color::Role::fixed:
      return [NSColor colorWithSRGBRed:color.red
                                 green:color.green
                                  blue:color.blue
                                 alpha:color.alpha];
    case Color::Role::label:
      plain = NSColor.labelColor;
      break;
    case Color::Role::secondaryLabel:
      plain = NSColor.secondaryLabelColor;
      break;
    case Color::Role::windowBackground:
      plain = NSColor.windowBackgroundColor;
      break;
    case Color::Role::accent:
      plain = NSColor.controlAccentColor;
      break;
  }
  return color.alpha == 1 ? plain : [plain colorWithAlphaComponent:color.alpha];
}

NSFont* nsFont(const Font& font) {
  const NSFontWeight weight = font.weight == Font::Weight::bold       ? NSFontWeightBold
                              : font.weight == Font::Weight::semibold ? NSFontWeightSemibold
                                                                      : NSFontWeightRegular;
  return font.monospaced ? [NSFont monospacedSystemFontOfSize:font.size weight:weight]
                         : [NSFont systemFontOfSize:font.size weight:weight];
}

double textWidth(const std::string& text, const Font& font) {
  return [nsString(text) sizeWithAttributes:@{NSFontAttributeName : nsFont(font)}].width;
}

KeyEvent keyEvent(NSEvent* event) {
  const NSEventModifierFlags modifiers = event.modifierFlags;
  KeyEvent made;
  made.code = static_cast<KeyCode>(event.keyCode);
  if (made.code == KeyCode::enter) made.code = KeyCode::returnKey;
  made.command = (modifiers & NSEventModifierFlagCommand) != 0;
  made.control = (modifiers & NSEventModifierFlagControl) != 0;
  made.option = (modifiers & NSEventModifierFlagOption) != 0;
  made.shift = (modifiers & NSEventModifierFlagShift) != 0;
  made.isRepeat = event.isARepeat;
  return made;
}

namespace {

class ViewPainter final : public Painter {
 public:
  ViewPainter(NSView* view, Pictures& pictures) : view_(view), pictures_(pictures) {}

  void fill(const Rect& rect, const Color& color, double cornerRadius) override {
    [nsColor(color) setFill];
    [[NSBezierPath bezierPathWithRoundedRect:nsRect(rect) xRadius:cornerRadius
                                     yRadius:cornerRadius] fill];
  }
  void fillBetween(const Rect& outer, const Rect& inner, const Color& color) override {
    NSBezierPath* const both = [NSBezierPath bezierPathWithRect:nsRect(outer)];
    [both appendBezierPathWithRect:nsRect(inner)];
    [both setWindingRule:NSWindingRuleEvenOdd];
    [nsColor(color) setFill];
    [both fill];
  }
  void stroke(const Rect& rect, const Color& color, double lineWidth,
              double cornerRadius) override {
    NSBezierPath* const edge = [NSBezierPath bezierPathWithRoundedRect:nsRect(rect)
                                                               xRadius:cornerRadius
                                                               yRadius:cornerRadius];
    [edge setLineWidth:lineWidth];
    [nsColor(color) setStroke];
    [edge stroke];
  }
  void draw(const Image& image, const Rect& rect) override {
    [NSGraphicsContext.currentContext setImageInterpolation:NSImageInterpolationHigh];
    [pictures_.ready(image, view_) drawInRect:nsRect(rect)
                                     fromRect:NSZeroRect
                                    operation:NSCompositingOperationSourceOver
                                     fraction:1];
  }
  void draw(const std::string& text, const Rect& rect, const Font& font, const Color& color,
            Alignment alignment) override {
    NSMutableParagraphStyle* const style = [[NSMutableParagraphStyle alloc] init];
    [style setAlignment:nsAlignment(alignment)];
    [style setLineBreakMode:NSLineBreakByTruncatingTail];
    NSDictionary* const attributes = @{
      NSFontAttributeName : nsFont(font),
      NSForegroundColorAttributeName : nsColor(color),
      NSParagraphStyleAttributeName : style,
    };
    NSString* const line = nsString(text);
    const CGFloat height = [line sizeWithAttributes:attributes].height;
    [line drawInRect:NSMakeRect(rect.x, rect.midY() - height / 2, rect.width, height)
        withAttributes:attributes];
  }
  bool drawSymbol(const std::string& name, const Rect& rect, const Color& color) override {
    NSImage* const symbol = tintedSymbol(nsString(name), nsColor(color), nil);
    if (symbol == nil) return false;
    const NSSize size = symbol.size;
    const double scale = std::min(rect.width / size.width, rect.height / size.height);
    const double width = size.width * scale, height = size.height * scale;
    [symbol drawInRect:NSMakeRect(rect.midX() - width / 2, rect.midY() - height / 2, width, height)
              fromRect:NSZeroRect
             operation:NSCompositingOperationSourceOver
              fraction:1];
    return true;
  }
  void clip(const Rect& rect) override { NSRectClip(nsRect(rect)); }
  double width(const std::string& text, const Font& font) const override {
    return textWidth(text, font);
  }

 private:
  NSView* const view_;
  Pictures& pictures_;
};

}  // namespace
}  // namespace marbelot

@implementation MarbelotCanvas {
  marbelot::CanvasDelegate* _delegate;
  marbelot::Pictures* _pictures;
  MarbelotMenuRenderer* _menu;
}

- (instancetype)initWithDelegate:(marbelot::CanvasDelegate*)delegate
                        pictures:(marbelot::Pictures*)pictures {
  self = [super initWithFrame:NSZeroRect];
  if (self != nil) {
    _delegate = delegate;
    _pictures = pictures;
  }
  return self;
}

- (void)detach {
  _delegate = nullptr;
}

- (void)drawRect:(NSRect)dirty {
  if (_delegate == nullptr) return;
  marbelot::ViewPainter painter(self, *_pictures);
  const NSSize size = self.bounds.size;
  _delegate->draw(painter, {size.width, size.height});
}

- (marbelot::Point)pointOf:(NSEvent*)event {
  const NSPoint point = [self convertPoint:event.locationInWindow fromView:nil];
  return {point.x, point.y};
}

- (marbelot::MouseEvent)mouse:(NSEvent*)event {
  return {[self pointOf:event], static_cast<int>(event.clickCount)};
}

- (NSView*)hitTest:(NSPoint)inSuperview {
  const NSPoint point = [self convertPoint:inSuperview fromView:self.superview];
  if (_delegate == nullptr || !NSPointInRect(point, self.bounds))
    return [super hitTest:inSuperview];
  const auto hit = _delegate->hitTest({point.x, point.y});
  if (!hit) return [super hitTest:inSuperview];
  NSView* const named = hit->empty() ? nil : marbelot::viewNamed(self, marbelot::nsString(*hit));
  return named != nil ? named : self;
}

// Else AppKit drags a window that its background moves, and sends neither mouseDown nor mouseUp.
- (BOOL)mouseDownCanMoveWindow {
  return NO;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}

- (BOOL)acceptsFirstResponder {
  return YES;
}

- (BOOL)needsPanelToBecomeKey {
  return self.wantsKeys;
}

- (void)mouseDown:(NSEvent*)event {
  if (_delegate != nullptr) _delegate->mouseDown([self mouse:event]);
}

- (void)mouseDragged:(NSEvent*)event {
  if (_delegate != nullptr) _delegate->mouseDragged([self mouse:event]);
}

- (void)mouseUp:(NSEvent*)event {
  if (_delegate != nullptr) _delegate->mouseUp([self mouse:event]);
}

- (NSMenu*)menuForEvent:(NSEvent*)event {
  std::shared_ptr<marbelot::Menu> tree =
      _delegate != nullptr ? _delegate->menuForEvent([self pointOf:event]) : nullptr;
  if (tree == nullptr) return nil;
  _menu = [[MarbelotMenuRenderer alloc] init];
  MarbelotCanvas* __weak const weakSelf = self;
  [_menu fillWithTree:std::move(tree)
               chosen:[weakSelf](const marbelot::MenuItem& item) {
                 MarbelotCanvas* const canvas = weakSelf;
                 if (canvas != nil && canvas->_delegate != nullptr)
                   canvas->_delegate->menuItemChosen(item);
               }];
  return _menu.menu;
}

- (void)keyDown:(NSEvent*)event {
  if (_delegate == nullptr || !_delegate->keyDown(marbelot::keyEvent(event))) [super keyDown:event];
}

// Sent to every view of the window, but meant for the one with the focus.
- (BOOL)performKeyEquivalent:(NSEvent*)event {
  if (_delegate != nullptr && self.window.firstResponder == self &&
      _delegate->performKeyEquivalent(marbelot::keyEvent(event)))
    return YES;
  return [super performKeyEquivalent:event];
}
@end
