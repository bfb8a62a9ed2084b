#import "platform/macos/views.h"

#include <dispatch/dispatch.h>

#include <algorithm>
#include <limits>
#include <optional>

#import "platform/macos/canvas.h"
#include "platform/macos/conversions.h"
#include "platform/undo_steps.h"

@interface MarbelotTextView : NSTextView
@property BOOL concealed;
@property BOOL takesText;  // editable, once all of it is there
- (void)showText:(marbelot::SharedText)text;
- (marbelot::SharedText)text;
@end

@implementation MarbelotTextView {
  marbelot::UndoSteps _steps;
  marbelot::SharedText _set;  // null when the user has changed it
}

// A large text is made ready in the background; the view is empty and not editable until then.
- (void)showText:(marbelot::SharedText)text {
  constexpr std::size_t large = 1 << 20;  // bytes
  // The steps that are recorded belong to the former text.
  [self breakUndoCoalescing];
  [self.undoManager removeAllActions];
  _set = text;
  if (text->size() < large) {
    self.string = marbelot::nsString(*text);
    self.editable = self.takesText;
    return;
  }
  self.string = @"";
  self.editable = NO;
  dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
    NSString* const ready = marbelot::nsString(*text);
    dispatch_async(dispatch_get_main_queue(), ^{
      if (self->_set != text) return;  // another one has taken its place
      self.string = ready;
      self.editable = self.takesText;
    });
  });
}

- (marbelot::SharedText)text {
  [self breakUndoCoalescing];
  if (_set == nullptr) _set = marbelot::share(marbelot::utf8(self.string));
  return _set;
}

- (void)didChangeText {
  [super didChangeText];
  _set = nullptr;
}

// AppKit would take back at once whatever was typed without moving the insertion point.
- (BOOL)shouldChangeTextInRange:(NSRange)range replacementString:(NSString*)text {
  if (![super shouldChangeTextInRange:range replacementString:text]) return NO;
  if (text == nil || self.hasMarkedText) return YES;  // no edit, or not yet
  const BOOL types = text.length == 1, erases = text.length == 0 && range.length == 1;
  if (self.selectedRange.length > 0 || [self.undoManager isUndoing] || [self.undoManager isRedoing])
    _steps.end();
  if (!types && !erases) {
    _steps.end();
    [self breakUndoCoalescing];
    return YES;
  }
  using Edit = marbelot::UndoSteps::Edit;
  const BOOL backward = range.location < self.selectedRange.location;
  const Edit edit = types ? Edit::insert : backward ? Edit::eraseBackward : Edit::eraseForward;
  const unichar character =
      types ? [text characterAtIndex:0] : [self.string characterAtIndex:range.location];
  NSCharacterSet* const blanks = NSCharacterSet.whitespaceAndNewlineCharacterSet;
  const auto now = static_cast<std::uint64_t>(NSProcessInfo.processInfo.systemUptime * 1000);
  if (_steps.begins(edit, [blanks characterIsMember:character], now)) [self breakUndoCoalescing];
  return YES;
}

// Also one that can only be read: keys select and copy.
- (BOOL)needsPanelToBecomeKey {
  return YES;
}

// For the pasteboard and for a drag alike.
- (BOOL)writeSelectionToPasteboard:(NSPasteboard*)pasteboard types:(NSArray<NSString*>*)types {
  if (![super writeSelectionToPasteboard:pasteboard types:types]) return NO;
  if (self.concealed) [pasteboard setString:@"" forType:@"org.nspasteboard.ConcealedType"];
  return YES;
}
@end

// A button of a bar.
@interface MarbelotBarButton : NSButton
@property(nonatomic, copy) NSColor* background;
@end

@implementation MarbelotBarButton
- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}

- (void)drawRect:(NSRect)dirty {
  constexpr CGFloat cornerRadius = 5;
  [self.background setFill];
  [[NSBezierPath bezierPathWithRoundedRect:self.bounds xRadius:cornerRadius
                                   yRadius:cornerRadius] fill];
  [super drawRect:dirty];
}
@end

// Draws a background; the mouse goes through to what is below.
@interface MarbelotContainer : NSView
@property(nonatomic, copy) NSColor* background;
@property(nonatomic) CGFloat cornerRadius;
@end

@implementation MarbelotContainer
- (void)drawRect:(NSRect)dirty {
  [self.background setFill];
  [[NSBezierPath bezierPathWithRoundedRect:self.bounds
                                   xRadius:self.cornerRadius
                                   yRadius:self.cornerRadius] fill];
}
@end

@interface MarbelotPicture : NSView
- (instancetype)initWithImage:(const marbelot::Image&)image pictures:(marbelot::Pictures*)pictures;
@end

@implementation MarbelotPicture {
  std::optional<marbelot::Image> _image;
  marbelot::Pictures* _pictures;
}

- (instancetype)initWithImage:(const marbelot::Image&)image pictures:(marbelot::Pictures*)pictures {
  self = [super initWithFrame:NSZeroRect];
  if (self != nil) {
    _image = image;
    _pictures = pictures;
  }
  return self;
}

- (void)drawRect:(NSRect)dirty {
  NSImage* const ready = _pictures != nullptr ? _pictures->ready(*_image, self) : nil;
  if (ready == nil) return;
  const NSSize size = self.bounds.size;
  const CGFloat scale =
      std::min({CGFloat{1}, size.width / _image->width(), size.height / _image->height()});
  const CGFloat width = _image->width() * scale, height = _image->height() * scale;
  [NSGraphicsContext.currentContext setImageInterpolation:NSImageInterpolationHigh];
  [ready drawInRect:NSMakeRect((size.width - width) / 2, (size.height - height) / 2, width, height)
           fromRect:NSZeroRect
          operation:NSCompositingOperationSourceOver
           fraction:1];
}
@end

namespace marbelot {
namespace {

NSAutoresizingMaskOptions autoresizing(const Resizing& resizing) {
  NSAutoresizingMaskOptions mask = NSViewNotSizable;
  if (resizing.width) mask |= NSViewWidthSizable;
  if (resizing.height) mask |= NSViewHeightSizable;
  if (resizing.leftMargin) mask |= NSViewMinXMargin;
  if (resizing.bottomMargin) mask |= NSViewMinYMargin;
  if (resizing.topMargin) mask |= NSViewMaxYMargin;
  return mask;
}

MadeView made(NSView* view) { return {view, view}; }

MadeView makeLabel(const Label& described) {
  NSTextField* const label = [NSTextField labelWithString:nsString(described.text)];
  label.font = nsFont(described.font);
  label.textColor = nsColor(described.color);
  [label setAlignment:nsAlignment(described.alignment)];
  label.lineBreakMode =
      described.multiline ? NSLineBreakByWordWrapping : NSLineBreakByTruncatingTail;
  if (described.multiline) [label.cell setWraps:YES];
  return made(label);
}

void dressFlat(MarbelotBarButton* button, const Button& described) {
  NSColor* const tint = nsColor(described.tint);
  button.bordered = NO;
  button.background = nsColor(described.background);
  button.attributedTitle =
      [[NSAttributedString alloc] initWithString:nsString(described.title)
                                      attributes:@{
                                        NSForegroundColorAttributeName : tint,
                                        NSFontAttributeName : nsFont(described.font)
                                      }];
}

MadeView makeButton(const Button& described, id target, SEL pressed) {
  NSButton* const button = described.flat ? [[MarbelotBarButton alloc] initWithFrame:NSZeroRect]
                                          : [[NSButton alloc] initWithFrame:NSZeroRect];
  button.title = nsString(described.title);
  button.font = nsFont(described.font);
  button.target = target;
  button.action = pressed;
  button.enabled = described.enabled;
  if (!described.toolTip.empty()) button.toolTip = nsString(described.toolTip);
  if (described.flat) {
    dressFlat(static_cast<MarbelotBarButton*>(button), described);
  } else {
    button.bezelStyle = NSBezelStyleRounded;
    if (described.small) [button.cell setControlSize:NSControlSizeSmall];
  }
  if (!described.symbol.empty()) {
    NSString* name = nsString(described.symbol);
    const std::string& said = described.spoken.empty() ? described.toolTip : described.spoken;
    NSString* const spoken = said.empty() ? nil : nsString(said);
    NSImage* symbol = [NSImage imageWithSystemSymbolName:name accessibilityDescription:spoken];
    if (symbol == nil && !described.otherSymbol.empty()) {
      name = nsString(described.otherSymbol);
      symbol = [NSImage imageWithSystemSymbolName:name accessibilityDescription:spoken];
    }
    button.image = symbol;
    // Not into the image: colours follow the system's appearance.
    button.contentTintColor = nsColor(described.tint);
    button.imagePosition = described.title.empty() ? NSImageOnly : NSImageLeft;
    button.alternateTitle = name;  // never shown by a button of this kind
  }
  if (described.defaultKey) {
    button.keyEquivalent = @"\r";
    button.toolTip = @"⌘↩";
  }
  return made(button);
}

MadeView makeText(const TextArea& area) {
  NSScrollView* scroll = [[NSScrollView alloc] initWithFrame:NSZeroRect];
  scroll.hasVerticalScroller = YES;
  scroll.borderType = area.bordered ? NSBezelBorder : NSNoBorder;

  const NSSize size = scroll.contentSize;
  MarbelotTextView* text =
      [[MarbelotTextView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height)];
  constexpr CGFloat kUnbounded = std::numeric_limits<float>::max();
  text.minSize = NSMakeSize(0, size.height);
  text.maxSize = NSMakeSize(kUnbounded, kUnbounded);
  text.verticallyResizable = YES;
  text.horizontallyResizable = NO;
  text.autoresizingMask = NSViewWidthSizable;
  text.textContainer.widthTracksTextView = YES;
  text.textContainerInset = NSMakeSize(area.inset.width, area.inset.height);

  text.font = nsFont(area.font);
  text.textColor = NSColor.textColor;
  text.richText = NO;
  text.takesText = area.editable;
  text.selectable = YES;
  text.allowsUndo = area.editable;
  // What is copied must be what was written.
  text.automaticQuoteSubstitutionEnabled = NO;
  text.automaticDashSubstitutionEnabled = NO;
  text.automaticTextReplacementEnabled = NO;
  text.automaticSpellingCorrectionEnabled = NO;
  text.smartInsertDeleteEnabled = NO;
  [text showText:share(area.text)];
  if (area.transparent) {
    scroll.drawsBackground = NO;
    text.drawsBackground = NO;
  }
  scroll.documentView = text;
  return {scroll, text};
}

}  // namespace

NSRect nsRect(const Rect& rect) { return NSMakeRect(rect.x, rect.y, rect.width, rect.height); }

NSTextAlignment nsAlignment(Alignment alignment) {
  return alignment == Alignment::centre  ? NSTextAlignmentCenter
         : alignment == Alignment::right ? NSTextAlignmentRight
                                         : NSTextAlignmentLeft;
}

NSImage* tintedSymbol(NSString* name, NSColor* tint, NSString* description) {
  NSImage* const symbol = [NSImage imageWithSystemSymbolName:name
                                    accessibilityDescription:description];
  if (symbol == nil) return nil;
  NSImage* const tinted = [symbol copy];
  [tinted setTemplate:NO];
  [tinted lockFocus];
  [tint set];
  NSRectFillUsingOperation(NSMakeRect(0, 0, tinted.size.width, tinted.size.height),
                           NSCompositingOperationSourceAtop);
  [tinted unlockFocus];
  return tinted;
}

MadeView makeView(const View& view, id target, SEL pressed, Pictures* pictures) {
  const std::vector<View>* held = nullptr;
  MadeView result{};
  if (const auto* label = std::get_if<Label>(&view.content)) {
    result = makeLabel(*label);
  } else if (const auto* button = std::get_if<Button>(&view.content)) {
    result = makeButton(*button, target, pressed);
  } else if (const auto* area = std::get_if<TextArea>(&view.content)) {
    result = makeText(*area);
  } else if (const auto* picture = std::get_if<Picture>(&view.content)) {
    result = made([[MarbelotPicture alloc] initWithImage:picture->image pictures:pictures]);
  } else if (const auto* container = std::get_if<Container>(&view.content)) {
    MarbelotContainer* const box = [[MarbelotContainer alloc] initWithFrame:NSZeroRect];
    box.background = nsColor(container->background);
    box.cornerRadius = container->cornerRadius;
    held = &container->views;
    result = made(box);
  } else if (const auto* canvas = std::get_if<Canvas>(&view.content)) {
    result = made([[MarbelotCanvas alloc]
        initWithDelegate:pictures != nullptr ? canvas->delegate : nullptr
                pictures:pictures]);
    held = &canvas->views;
  }
  // What it holds is laid out in its designed size, and follows its growth from there.
  result.outer.frame = nsRect(view.frame);
  if (held != nullptr)
    for (const View& inside : *held)
      [result.outer addSubview:makeView(inside, target, pressed, pictures).outer];
  result.outer.autoresizingMask = autoresizing(view.resizing);
  result.inner.identifier = nsString(view.id);
  return result;
}

NSView* viewNamed(NSView* view, NSString* identifier) {
  for (NSView* inside in view.subviews) {
    if ([inside.identifier isEqualToString:identifier]) return inside;
    NSView* const found = viewNamed(inside, identifier);
    if (found != nil) return found;
  }
  return nil;
}

void detachCanvases(NSView* view) {
  if ([view isKindOfClass:[MarbelotCanvas class]]) [static_cast<MarbelotCanvas*>(view) detach];
  for (NSView* inside in view.subviews) detachCanvases(inside);
}

void appendButtons(NSView* view, std::vector<ButtonInfo>& buttons) {
  for (NSView* inside in view.subviews) {
    if ([inside isKindOfClass:[NSButton class]]) {
      NSButton* const button = static_cast<NSButton*>(inside);
      NSString* const title = button.title.length > 0 ? button.title : button.alternateTitle;
      buttons.push_back({utf8(button.identifier), utf8(title), button.isEnabled != NO});
    } else {
      appendButtons(inside, buttons);
    }
  }
}

void setViewText(NSView* inner, const SharedText& text, bool concealed) {
  if ([inner isKindOfClass:[MarbelotTextView class]]) {
    MarbelotTextView* const view = static_cast<MarbelotTextView*>(inner);
    [view showText:text];
    view.concealed = concealed;
  } else if ([inner isKindOfClass:[NSButton class]]) {
    static_cast<NSButton*>(inner).title = nsString(*text);
  } else if ([inner isKindOfClass:[NSTextField class]]) {
    static_cast<NSTextField*>(inner).stringValue = nsString(*text);
  }
}

SharedText viewText(NSView* inner) {
  if ([inner isKindOfClass:[MarbelotTextView class]])
    return [static_cast<MarbelotTextView*>(inner) text];
  if ([inner isKindOfClass:[NSButton class]])
    return share(utf8(static_cast<NSButton*>(inner).title));
  if ([inner isKindOfClass:[NSTextField class]])
    return share(utf8(static_cast<NSTextField*>(inner).stringValue));
  return share({});
}

}  // namespace marbelot
