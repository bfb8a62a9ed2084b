// Keys seen on their way, and windows that follow the mouse.
#import <AppKit/AppKit.h>

#import "platform/macos/gnustep/gaps.h"

// --- Monitors --------------------------------------------------------------------------------

@interface GapMonitor : NSObject
@property NSUInteger mask;
@property(copy) NSEvent* (^handler)(NSEvent*);  // nil in one of other programs' events
@end

@implementation GapMonitor
@end

namespace {

NSMutableArray<GapMonitor*>* monitors() {
  static NSMutableArray<GapMonitor*>* const all = [NSMutableArray array];
  return all;
}

void (*sendUnseen)(id, SEL, NSEvent*);
void sendEvent(NSApplication* self, SEL name, NSEvent* event) {
  NSArray<GapMonitor*>* const present = [monitors() copy];
  for (GapMonitor* monitor in present) {
    if (event == nil) return;
    const bool wanted = (monitor.mask & NSEventMaskFromType(event.type)) != 0;
    if (wanted && monitor.handler != nil && [monitors() containsObject:monitor])
      event = monitor.handler(event);
  }
  if (event != nil) sendUnseen(self, name, event);
}

}  // namespace

@implementation NSEvent (MarbelotGaps)
+ (id)addLocalMonitorForEventsMatchingMask:(NSUInteger)mask handler:(NSEvent* (^)(NSEvent*))block {
  GapMonitor* const monitor = [[GapMonitor alloc] init];
  monitor.mask = mask;
  monitor.handler = block;
  [monitors() addObject:monitor];
  return monitor;
}
// Of other programs' keys nothing is told, as where the user has not trusted this one with them.
+ (id)addGlobalMonitorForEventsMatchingMask:(NSUInteger)mask handler:(void (^)(NSEvent*))block {
  return [[GapMonitor alloc] init];
}
+ (void)removeMonitor:(id)monitor {
  [monitors() removeObjectIdenticalTo:monitor];
}
@end

// --- Windows that follow the mouse -----------------------------------------------------------

@implementation NSWindow (MarbelotDrags)
- (void)performWindowDragWithEvent:(NSEvent*)event {
  const NSPoint grip = event.locationInWindow;
  constexpr NSUInteger moves = NSLeftMouseDraggedMask | NSLeftMouseUpMask;
  while (true) {
    NSEvent* const next = [self nextEventMatchingMask:moves];
    if (next == nil || next.type == NSLeftMouseUp) return;
    const NSPoint at = NSEvent.mouseLocation;
    [self setFrameOrigin:NSMakePoint(at.x - grip.x, at.y - grip.y)];
  }
}
@end

// --- The methods that GNUstep has, but otherwise ---------------------------------------------

@interface EventReplacements : NSObject
@end

@implementation EventReplacements
+ (void)load {
  sendUnseen =
      replace([NSApplication class], @selector(sendEvent:), (void (*)(id, SEL, NSEvent*))sendEvent);
}
@end
