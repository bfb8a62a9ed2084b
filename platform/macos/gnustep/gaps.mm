// What GNUstep lacks of macOS, as far as the backend uses it: enough to run the backend on Linux as
// it is. Each piece does what the system's does, in the simplest way, or says what it leaves out.
#import <AppKit/AppKit.h>
#include <CoreServices/CoreServices.h>
#include <dispatch/dispatch.h>
#include <fcntl.h>
#include <objc/runtime.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stdio.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

// Some of what the headers of the gaps declare GNUstep has, only undeclared; the backend's use of
// it is checked against them all the same.
#pragma clang diagnostic ignored "-Wincomplete-implementation"

namespace {

// GNUstep has no common modes: what is meant for them goes into each of the three.
NSArray<NSString*>* commonModes() {
  return @[ NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode ];
}

// Puts `replacement` in the place of a method, and gives what stood there.
template <class Function>
Function replace(Class owner, SEL name, Function replacement) {
  Method const method = class_getInstanceMethod(owner, name);
  return reinterpret_cast<Function>(
      method_setImplementation(method, reinterpret_cast<IMP>(replacement)));
}

void attach(id object, const void* key, id value) {
  objc_setAssociatedObject(object, key, value, OBJC_ASSOCIATION_RETAIN);
}

}  // namespace

// --- Run loops and queues --------------------------------------------------------------------

@interface GapBlock : NSObject
@property(copy) void (^block)(void);
- (void)call;
@end

@implementation GapBlock
- (void)call {
  self.block();
}
@end

namespace {

void onMainThread(void (^block)(void)) {
  @autoreleasepool {
    GapBlock* const caller = [[GapBlock alloc] init];
    caller.block = block;
    [caller performSelectorOnMainThread:@selector(call)
                             withObject:nil
                          waitUntilDone:NO
                                  modes:commonModes()];
  }
}

void (*addTimerForMode)(id, SEL, NSTimer*, NSString*);
void addTimer(id self, SEL name, NSTimer* timer, NSString* mode) {
  NSArray<NSString*>* const modes =
      [mode isEqualToString:NSRunLoopCommonModes] ? commonModes() : @[ mode ];
  for (NSString* each in modes) addTimerForMode(self, name, timer, each);
}

void (*performAfterDelay)(id, SEL, SEL, id, NSTimeInterval, NSArray*);
void performLater(id self, SEL name, SEL what, id with, NSTimeInterval delay, NSArray* modes) {
  const bool common = [modes containsObject:NSRunLoopCommonModes];
  performAfterDelay(self, name, what, with, delay, common ? commonModes() : modes);
}

}  // namespace

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFRunLoopMode kCFRunLoopCommonModes = (__bridge CFRunLoopMode) @"kCFRunLoopCommonModes";

// Here, too, a flag is a number of a class of its own.
CFTypeID CFBooleanGetTypeID(void) { return 1; }
CFTypeID CFGetTypeID(CFTypeRef ref) {
  return [NSStringFromClass([(__bridge id)ref class]) hasPrefix:@"NSBool"] ? 1 : 0;
}

CFRunLoopRef CFRunLoopGetMain(void) { return nullptr; }
void CFRunLoopPerformBlock(CFRunLoopRef, CFTypeRef, void (^block)(void)) { onMainThread(block); }
void CFRunLoopWakeUp(CFRunLoopRef) {}

dispatch_queue_t dispatch_get_main_queue(void) { return nil; }
dispatch_queue_t dispatch_get_global_queue(intptr_t, uintptr_t) {
  return (dispatch_queue_t)NSNull.null;
}
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block) {
  if (queue == nil) {
    onMainThread(block);
    return;
  }
  [NSThread detachNewThreadWithBlock:^{
    @autoreleasepool {
      block();
    }
  }];
}

}  // extern "C"

// --- FSEvents: of one folder, by inotify -----------------------------------------------------

struct __FSEventStream {
  FSEventStreamCallback callback;
  FSEventStreamContext context;
  std::string path;
  int notify = -1;
  int stop = -1;
  std::thread thread;
  // False once the stream was stopped: what is on its way to the main thread then says nothing.
  std::shared_ptr<std::atomic<bool>> live = std::make_shared<std::atomic<bool>>(true);

  void pass() {
    const auto stillLive = live;
    onMainThread(^{
      if (*stillLive) callback(this, context.info, 1, nullptr, nullptr, nullptr);
    });
  }
  void run() {
    pollfd waits[] = {{notify, POLLIN, 0}, {stop, POLLIN, 0}};
    char events[4096];
    while (poll(waits, 2, -1) >= 0 && waits[1].revents == 0)
      if (read(notify, events, sizeof events) > 0) pass();
  }
};

extern "C" {

FSEventStreamRef FSEventStreamCreate(CFAllocatorRef, FSEventStreamCallback callback,
                                     FSEventStreamContext* context, CFArrayRef paths,
                                     FSEventStreamEventId, CFTimeInterval,
                                     FSEventStreamCreateFlags) {
  NSString* const path = [(__bridge NSArray*)paths firstObject];
  return new __FSEventStream{callback, *context, path.fileSystemRepresentation};
}

void FSEventStreamSetDispatchQueue(FSEventStreamRef, dispatch_queue_t) {}

Boolean FSEventStreamStart(FSEventStreamRef stream) {
  stream->notify = inotify_init1(IN_CLOEXEC);
  stream->stop = eventfd(0, EFD_CLOEXEC);
  inotify_add_watch(stream->notify, stream->path.c_str(),
                    IN_CREATE | IN_MODIFY | IN_ATTRIB | IN_CLOSE_WRITE | IN_MOVE | IN_DELETE);
  stream->thread = std::thread([stream] { stream->run(); });
  return 1;
}

void FSEventStreamStop(FSEventStreamRef stream) {
  *stream->live = false;
  eventfd_write(stream->stop, 1);
  stream->thread.join();
}

void FSEventStreamInvalidate(FSEventStreamRef) {}

void FSEventStreamRelease(FSEventStreamRef stream) {
  close(stream->notify);
  close(stream->stop);
  delete stream;
}

// --- Files -----------------------------------------------------------------------------------

int renamex_np(const char* from, const char* to, unsigned) {
  constexpr unsigned noReplace = 1;
  return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, noReplace));
}

// Extended attributes of a program's own stand in the name space "user" here.
ssize_t macos_getxattr(const char* path, const char* name, void* value, size_t size, uint32_t,
                       int) {
  return syscall(SYS_getxattr, path, ("user." + std::string(name)).c_str(), value, size);
}
int macos_setxattr(const char* path, const char* name, const void* value, size_t size, uint32_t,
                   int) {
  const std::string own = "user." + std::string(name);
  return static_cast<int>(syscall(SYS_setxattr, path, own.c_str(), value, size, 0));
}

// GNUstep takes the home folder from the password file; a test's must not be the user's own.
NSString* NSHomeDirectory(void) { return @(getenv("HOME")); }

}  // extern "C"

// --- Foundation ------------------------------------------------------------------------------

// Nothing is detected: GNUstep has no detector.
@implementation NSDataDetector
+ (NSDataDetector*)dataDetectorWithTypes:(NSTextCheckingTypes)types error:(NSError**)error {
  return nil;
}
@end

@implementation NSFileManager (MarbelotGaps)
- (BOOL)trashItemAtURL:(NSURL*)url resultingItemURL:(NSURL**)trashed error:(NSError**)error {
  NSString* const trash = [NSHomeDirectory() stringByAppendingPathComponent:@".Trash"];
  [self createDirectoryAtPath:trash withIntermediateDirectories:YES attributes:nil error:nil];
  return [self moveItemAtPath:url.path
                       toPath:[trash stringByAppendingPathComponent:url.lastPathComponent]
                        error:error];
}
@end

@implementation NSUserDefaults (MarbelotGaps)
- (instancetype)initWithSuiteName:(NSString*)name {
  self = [self init];
  [self addSuiteNamed:name];
  return self;
}
@end

// --- Alerts ----------------------------------------------------------------------------------

static char accessoryKey, hiddenKey, buttonKey, identifierKey;

@interface NSAlert (GNUstepPrivate)
- (void)_setupPanel;
@end

namespace {

// The system's alert has its window from the start, GNUstep's only while it runs.
id (*madeAlertWindow)(id, SEL);
id alertWindow(NSAlert* self, SEL name) {
  if (madeAlertWindow(self, name) == nil) [self _setupPanel];
  return madeAlertWindow(self, name);
}

NSInteger runAlert(NSAlert* self, SEL) {
  NSWindow* const window = [self window];
  const NSInteger response = [NSApp runModalForWindow:window];
  [window orderOut:self];
  return response;
}

}  // namespace

@implementation NSAlert (MarbelotGaps)
- (void)setAccessoryView:(NSView*)view {
  attach(self, &accessoryKey, view);
}
- (NSView*)accessoryView {
  return objc_getAssociatedObject(self, &accessoryKey);
}
// Between the message and the buttons.
- (void)layout {
  NSView* const accessory = self.accessoryView;
  NSWindow* const window = [self window];
  if (accessory == nil || accessory.window == window) return;
  constexpr CGFloat gap = 8;
  CGFloat top = 0;
  for (NSButton* button in self.buttons) top = MAX(top, NSMaxY(button.frame));
  NSRect frame = window.frame;
  frame.size.height += NSHeight(accessory.frame) + gap;
  [window setFrame:frame display:NO];
  NSView* const content = window.contentView;
  const CGFloat left = (NSWidth(content.frame) - NSWidth(accessory.frame)) / 2;
  [accessory setFrameOrigin:NSMakePoint(left, top + gap)];
  [content addSubview:accessory];
}
@end

// --- Menus and the menu bar ------------------------------------------------------------------

namespace {

// On macOS the menu tells its delegate and lasts until it is closed; here it is shown, and the call
// returns at once.
BOOL popUpMenu(NSMenu* self, SEL, NSMenuItem*, NSPoint, NSView*) {
  id<NSMenuDelegate> const delegate = self.delegate;
  if ([delegate respondsToSelector:@selector(menuNeedsUpdate:)]) [delegate menuNeedsUpdate:self];
  if ([delegate respondsToSelector:@selector(menuWillOpen:)]) [delegate menuWillOpen:self];
  [self displayTransient];
  return YES;
}

// GNUstep has no menu bar to put items into.
id systemStatusBar(id, SEL) {
  static NSStatusBar* const bar = [[NSStatusBar alloc] init];
  return bar;
}

}  // namespace

@implementation NSMenuItem (MarbelotGaps)
- (BOOL)isHidden {
  return [objc_getAssociatedObject(self, &hiddenKey) boolValue];
}
- (void)setHidden:(BOOL)hidden {
  attach(self, &hiddenKey, @(hidden));
}
@end

@implementation NSStatusItem (MarbelotGaps)
- (NSStatusBarButton*)button {
  NSStatusBarButton* button = objc_getAssociatedObject(self, &buttonKey);
  if (button == nil) {
    button = [[NSStatusBarButton alloc] initWithFrame:NSMakeRect(0, 0, 24, 24)];
    attach(self, &buttonKey, button);
  }
  return button;
}
@end

// --- Images and the pasteboard ---------------------------------------------------------------

@implementation NSImage (MarbelotGaps)
+ (NSArray*)imageTypes {
  return @[ NSPasteboardTypePNG, NSPasteboardTypeTIFF, @"public.jpeg" ];
}
// Every name gives a blank image: the symbols are the system's own.
+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description {
  NSImage* const image = [[NSImage alloc] initWithSize:NSMakeSize(16, 16)];
  image.name = name;
  return image;
}
- (NSArray*)writableTypesForPasteboard:(NSPasteboard*)pasteboard {
  return @[ NSPasteboardTypeTIFF ];
}
- (id)pasteboardPropertyListForType:(NSString*)type {
  return [type isEqualToString:NSPasteboardTypeTIFF] ? self.TIFFRepresentation : nil;
}
@end

// Gives what was promised when somebody pastes it.
@interface GapPromise : NSObject
@property(strong) NSArray<id<NSPasteboardWriting>>* objects;
@end

@implementation GapPromise
- (void)pasteboard:(NSPasteboard*)pasteboard provideDataForType:(NSString*)type {
  for (id<NSPasteboardWriting> object in self.objects) {
    id const data = [object pasteboardPropertyListForType:type];
    if (data != nil) {
      [pasteboard setData:data forType:type];
      return;
    }
  }
}
@end

NSString* const NSPasteboardURLReadingFileURLsOnlyKey = @"NSPasteboardURLReadingFileURLsOnlyKey";

@implementation NSPasteboard (MarbelotGaps)
// Files only, and only the first.
- (NSArray*)readObjectsForClasses:(NSArray<Class>*)classes options:(NSDictionary*)options {
  NSURL* const url = [NSURL URLFromPasteboard:self];
  return url.isFileURL ? @[ url ] : @[];
}
- (NSInteger)clearContents {
  return [self declareTypes:@[] owner:nil];
}
@end

namespace {

bool isPromised(id<NSPasteboardWriting> object, NSString* type, NSPasteboard* pasteboard) {
  return [object respondsToSelector:@selector(writingOptionsForType:pasteboard:)] &&
         [object writingOptionsForType:type pasteboard:pasteboard] == NSPasteboardWritingPromised;
}

BOOL writeObjects(NSPasteboard* self, SEL, NSArray<id<NSPasteboardWriting>>* objects) {
  static GapPromise* promise;  // the pasteboard does not keep its owner
  promise = [[GapPromise alloc] init];
  promise.objects = objects;
  for (id<NSPasteboardWriting> object in objects) {
    NSArray<NSString*>* const types = [object writableTypesForPasteboard:self];
    [self addTypes:types owner:promise];
    for (NSString* type in types)
      if (!isPromised(object, type, self))
        [self setData:[object pasteboardPropertyListForType:type] forType:type];
  }
  return YES;
}

// On macOS nothing need be declared before it is set.
BOOL (*setDeclaredString)(id, SEL, NSString*, NSString*);
BOOL setString(NSPasteboard* self, SEL name, NSString* string, NSString* type) {
  if (![self.types containsObject:type]) [self addTypes:@[ type ] owner:nil];
  return setDeclaredString(self, name, string, type);
}

// What the pasteboard's server names are proxies, which fast enumeration cannot walk.
NSArray* (*remoteTypes)(id, SEL);
NSArray* localTypes(id self, SEL name) {
  NSArray* const remote = remoteTypes(self, name);
  NSMutableArray<NSString*>* const local = [NSMutableArray array];
  for (NSUInteger i = 0, count = remote.count; i < count; ++i)
    [local addObject:@([[remote objectAtIndex:i] UTF8String])];
  return local;
}

}  // namespace

// --- Views and windows -----------------------------------------------------------------------

@implementation NSApplication (MarbelotGaps)
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  return YES;
}
@end

@implementation NSControl (MarbelotGaps)
- (void)setLineBreakMode:(NSLineBreakMode)mode {
  [self.cell setLineBreakMode:mode];
}
- (NSLineBreakMode)lineBreakMode {
  return [self.cell lineBreakMode];
}
@end

@implementation NSFont (MarbelotGaps)
+ (NSFont*)monospacedSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
  return [NSFont userFixedPitchFontOfSize:size];
}
@end

// GNUstep's texts replace nothing by themselves.
@implementation NSTextView (MarbelotGaps)
- (BOOL)isAutomaticQuoteSubstitutionEnabled {
  return NO;
}
- (void)setAutomaticQuoteSubstitutionEnabled:(BOOL)enabled {
}
- (BOOL)isAutomaticDashSubstitutionEnabled {
  return NO;
}
- (void)setAutomaticDashSubstitutionEnabled:(BOOL)enabled {
}
- (BOOL)isAutomaticTextReplacementEnabled {
  return NO;
}
- (void)setAutomaticTextReplacementEnabled:(BOOL)enabled {
}
- (BOOL)isAutomaticSpellingCorrectionEnabled {
  return NO;
}
- (void)setAutomaticSpellingCorrectionEnabled:(BOOL)enabled {
}
@end

@implementation NSWindow (MarbelotGaps)
- (NSString*)identifier {
  return objc_getAssociatedObject(self, &identifierKey);
}
- (void)setIdentifier:(NSString*)identifier {
  attach(self, &identifierKey, [identifier copy]);
}
@end

// There is no Finder.
@implementation NSWorkspace (MarbelotGaps)
- (void)activateFileViewerSelectingURLs:(NSArray*)urls {
}
@end

// --- The methods that GNUstep has, but otherwise ---------------------------------------------

@interface GapReplacements : NSObject
@end

@implementation GapReplacements
+ (void)load {
  addTimerForMode = replace([NSRunLoop class], @selector(addTimer:forMode:), addTimer);
  performAfterDelay = replace(
      [NSObject class], @selector(performSelector:withObject:afterDelay:inModes:), performLater);
  madeAlertWindow = replace([NSAlert class], @selector(window), (id(*)(id, SEL))alertWindow);
  replace([NSAlert class], @selector(runModal), runAlert);
  replace([NSMenu class], @selector(popUpMenuPositioningItem:atLocation:inView:), popUpMenu);
  replace(object_getClass([NSStatusBar class]), @selector(systemStatusBar), systemStatusBar);
  replace([NSPasteboard class], @selector(writeObjects:), writeObjects);
  setDeclaredString = replace([NSPasteboard class], @selector(setString:forType:),
                              (BOOL(*)(id, SEL, NSString*, NSString*))setString);
  remoteTypes = replace([NSPasteboard class], @selector(types), localTypes);
}
@end
