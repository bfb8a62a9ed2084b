// Run loops, folder streams, files and what Foundation lacks.
#import <AppKit/AppKit.h>
#include <CoreServices/CoreServices.h>
#include <dispatch/dispatch.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stdio.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#import "platform/macos/gnustep/gaps.h"

namespace {

// GNUstep has no common modes: what is meant for them goes into each of the three.
NSArray<NSString*>* commonModes() {
  return @[ NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode ];
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
  [self synchronize];  // which reads what there is
  [self addSuiteNamed:name];
  return self;
}
@end

// --- The methods that GNUstep has, but otherwise ---------------------------------------------

// An exception may be swallowed on its way, or end in another case; this says what is missing here.
namespace {
[[noreturn]] void reportUnknown(id self, SEL, SEL unknown) {
  const bool isClass = class_isMetaClass(object_getClass(self));
  std::fprintf(stderr, "GNUstep has no %c[%s %s]\n", isClass ? '+' : '-',
               class_getName(isClass ? static_cast<Class>(self) : object_getClass(self)),
               sel_getName(unknown));
  std::abort();
}
}  // namespace

@interface SystemReplacements : NSObject
@end

@implementation SystemReplacements
+ (void)load {
  addTimerForMode = replace([NSRunLoop class], @selector(addTimer:forMode:), addTimer);
  performAfterDelay = replace(
      [NSObject class], @selector(performSelector:withObject:afterDelay:inModes:), performLater);
  replace([NSObject class], @selector(doesNotRecognizeSelector:), reportUnknown);
  replace(object_getClass([NSObject class]), @selector(doesNotRecognizeSelector:), reportUnknown);
}
@end
