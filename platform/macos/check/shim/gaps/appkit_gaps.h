// What GNUstep's AppKit lacks of the macOS one, or knows by its old name only. Declarations only,
// by the documented API.
#pragma once

// Newer releases know these by their present names.
#if GNUSTEP_GUI_MAJOR_VERSION == 0 && GNUSTEP_GUI_MINOR_VERSION < 31
enum : NSUInteger {
  NSEventModifierFlagShift = NSShiftKeyMask,
  NSEventModifierFlagControl = NSControlKeyMask,
  NSEventModifierFlagOption = NSAlternateKeyMask,
  NSEventModifierFlagCommand = NSCommandKeyMask,
};
typedef NSUInteger NSAutoresizingMaskOptions;
constexpr NSEventType NSEventTypeKeyDown = NSKeyDown;
constexpr NSWindingRule NSWindingRuleEvenOdd = NSEvenOddWindingRule;
#endif
constexpr NSUInteger NSEventMaskAny = NSAnyEventMask;
constexpr NSUInteger NSEventMaskKeyDown = NSKeyDownMask;
constexpr NSCompositingOperation NSCompositingOperationSourceAtop = NSCompositeSourceAtop;
constexpr NSCompositingOperation NSCompositingOperationSourceOver = NSCompositeSourceOver;
constexpr NSBezelStyle NSBezelStyleRounded = NSRoundedBezelStyle;
constexpr NSBitmapImageFileType NSBitmapImageFileTypePNG = NSPNGFileType;

@interface NSAlert (MarbelotGaps)
@property(strong) NSView *accessoryView;
- (void)layout;
@end

@interface NSApplication (MarbelotGaps)
@property NSApplicationPresentationOptions presentationOptions;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)yieldActivationToApplication:(NSRunningApplication *)application;
@end

@interface NSBitmapImageRep (MarbelotGaps)
- (instancetype)initWithCGImage:(CGImageRef)image;
@end

@interface NSButton (MarbelotGaps)
@property(copy) NSColor *contentTintColor;
@end

@interface NSColor (MarbelotGaps)
@property(class, readonly, strong) NSColor *controlAccentColor;
@end

@interface NSControl (MarbelotGaps)
@property NSLineBreakMode lineBreakMode;
@end

@interface NSEvent (MarbelotGaps)
+ (id)addGlobalMonitorForEventsMatchingMask:(NSUInteger)mask handler:(void (^)(NSEvent *))block;
+ (id)addLocalMonitorForEventsMatchingMask:(NSUInteger)mask
                                   handler:(NSEvent * (^)(NSEvent *))block;
+ (void)removeMonitor:(id)monitor;
@end

@interface NSFont (MarbelotGaps)
+ (NSFont *)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
+ (NSFont *)monospacedSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
@end

@interface NSImage (MarbelotGaps) <NSPasteboardWriting>
@property(class, readonly, copy) NSArray<NSString *> *imageTypes;
+ (instancetype)imageWithSystemSymbolName:(NSString *)name
                 accessibilityDescription:(NSString *)description;
- (void)setTemplate:(BOOL)isTemplate;
@end

@interface NSMenu (MarbelotGaps)
- (BOOL)popUpMenuPositioningItem:(NSMenuItem *)item
                      atLocation:(NSPoint)location
                          inView:(NSView *)view;
@end

@interface NSMenuItem (MarbelotGaps)
@property(getter=isHidden) BOOL hidden;
@end

extern NSString *const NSPasteboardURLReadingFileURLsOnlyKey;

@interface NSPasteboard (MarbelotGaps)
- (NSArray *)readObjectsForClasses:(NSArray<Class> *)classes options:(NSDictionary *)options;
- (NSInteger)clearContents;
- (BOOL)writeObjects:(NSArray<id<NSPasteboardWriting>> *)objects;
@end

@interface NSStatusItem (MarbelotGaps)
@property(readonly, strong) NSStatusBarButton *button;
@end

@interface NSTextField (MarbelotGaps)
+ (instancetype)labelWithString:(NSString *)string;
@end

@interface NSTextView (MarbelotGaps)
@property(getter=isAutomaticQuoteSubstitutionEnabled) BOOL automaticQuoteSubstitutionEnabled;
@property(getter=isAutomaticDashSubstitutionEnabled) BOOL automaticDashSubstitutionEnabled;
@property(getter=isAutomaticTextReplacementEnabled) BOOL automaticTextReplacementEnabled;
@property(getter=isAutomaticSpellingCorrectionEnabled) BOOL automaticSpellingCorrectionEnabled;
@end

@interface NSView (MarbelotGaps) <NSUserInterfaceItemIdentification>
@end

@interface NSWindow (MarbelotGaps) <NSUserInterfaceItemIdentification>
- (void)performWindowDragWithEvent:(NSEvent *)event;
@end

@interface NSRunningApplication (MarbelotGaps)
- (BOOL)activateFromApplication:(NSRunningApplication *)application
                        options:(NSApplicationActivationOptions)options;
@end

@interface NSWorkspaceOpenConfiguration : NSObject
+ (instancetype)configuration;
@end

@interface NSWorkspace (MarbelotGaps)
- (NSURL *)URLForApplicationToOpenURL:(NSURL *)url;
- (NSArray<NSURL *> *)URLsForApplicationsToOpenURL:(NSURL *)url;
- (void)openURLs:(NSArray<NSURL *> *)urls
    withApplicationAtURL:(NSURL *)application
           configuration:(NSWorkspaceOpenConfiguration *)configuration
       completionHandler:(void (^)(NSRunningApplication *, NSError *))handler;
- (void)activateFileViewerSelectingURLs:(NSArray<NSURL *> *)urls;
@end
