#import "platform/macos/views.h"

#include <limits>

#include "platform/macos/conversions.h"
#include "platform/undo_steps.h"

@interface MarbelotTextView : NSTextView
@property BOOL concealed;
@end

@implementation MarbelotTextView {
  marbelot::UndoSteps _steps;
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

// For the pasteboard and for a drag alike.
- (BOOL)writeSelectionToPasteboard:(NSPasteboard*)pasteboard types:(NSArray<NSString*>*)types {
  if (![super writeSelectionToPasteboard:pasteboard types:types]) return NO;
  if (self.concealed) [pasteboard setString:@"" forType:@"org.nspasteboard.ConcealedType"];
  return YES;
}
@end

namespace marbelot {
namespace {

NSFont* nsFont(const Font& font) {
  return font.monospaced ? [NSFont monospacedSystemFontOfSize:font.size weight:NSFontWeightRegular]
                         : [NSFont systemFontOfSize:font.size];
}

NSAutoresizingMaskOptions autoresizing(const Resizing& resizing) {
  NSAutoresizingMaskOptions mask = NSViewNotSizable;
  if (resizing.width) mask |= NSViewWidthSizable;
  if (resizing.height) mask |= NSViewHeightSizable;
  if (resizing.leftMargin) mask |= NSViewMinXMargin;
  return mask;
}

MadeView makeLabel(const View& view) {
  NSTextField* label = [NSTextField labelWithString:nsString(view.text)];
  label.font = nsFont(view.font);
  label.textColor = view.secondary ? NSColor.secondaryLabelColor : NSColor.labelColor;
  label.lineBreakMode = NSLineBreakByTruncatingTail;
  return {label, label};
}

MadeView makeButton(const View& view, id target, SEL pressed) {
  NSButton* button = [[NSButton alloc] initWithFrame:nsRect(view.frame)];
  button.title = nsString(view.text);
  button.bezelStyle = NSBezelStyleRounded;
  button.font = nsFont(view.font);
  button.target = target;
  button.action = pressed;
  if (view.defaultKey) {
    button.keyEquivalent = @"\r";
    button.toolTip = @"⌘↩";
  }
  return {button, button};
}

MadeView makeText(const View& view) {
  NSScrollView* scroll = [[NSScrollView alloc] initWithFrame:nsRect(view.frame)];
  scroll.hasVerticalScroller = YES;
  scroll.borderType = view.bordered ? NSBezelBorder : NSNoBorder;

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
  text.textContainerInset = NSMakeSize(view.inset.width, view.inset.height);

  text.font = nsFont(view.font);
  text.richText = NO;
  text.editable = view.editable;
  text.selectable = YES;
  text.allowsUndo = view.editable;
  // What is copied must be what was written.
  text.automaticQuoteSubstitutionEnabled = NO;
  text.automaticDashSubstitutionEnabled = NO;
  text.automaticTextReplacementEnabled = NO;
  text.automaticSpellingCorrectionEnabled = NO;
  text.string = nsString(view.text);
  scroll.documentView = text;
  return {scroll, text};
}

}  // namespace

NSRect nsRect(const Rect& rect) { return NSMakeRect(rect.x, rect.y, rect.width, rect.height); }

MadeView makeView(const View& view, id target, SEL pressed) {
  MadeView made = view.kind == ViewKind::label    ? makeLabel(view)
                  : view.kind == ViewKind::button ? makeButton(view, target, pressed)
                                                  : makeText(view);
  made.outer.frame = nsRect(view.frame);
  made.outer.autoresizingMask = autoresizing(view.resizing);
  made.inner.identifier = nsString(view.id);
  return made;
}

void setViewText(NSView* inner, NSString* text, bool concealed) {
  if ([inner isKindOfClass:[MarbelotTextView class]]) {
    MarbelotTextView* const view = static_cast<MarbelotTextView*>(inner);
    // The steps that are recorded belong to the former text.
    [view breakUndoCoalescing];
    view.string = text;
    [view.undoManager removeAllActions];
    view.concealed = concealed;
  } else if ([inner isKindOfClass:[NSButton class]]) {
    static_cast<NSButton*>(inner).title = text;
  } else if ([inner isKindOfClass:[NSTextField class]]) {
    static_cast<NSTextField*>(inner).stringValue = text;
  }
}

NSString* viewText(NSView* inner) {
  if ([inner isKindOfClass:[NSTextView class]]) {
    [static_cast<NSTextView*>(inner) breakUndoCoalescing];
    return static_cast<NSTextView*>(inner).string;
  }
  if ([inner isKindOfClass:[NSButton class]]) return static_cast<NSButton*>(inner).title;
  if ([inner isKindOfClass:[NSTextField class]])
    return static_cast<NSTextField*>(inner).stringValue;
  return @"";
}

}  // namespace marbelot
