// Time on the main run loop. Timers and run loop blocks rather than dispatch_after and the main
// dispatch queue: the queue runs nothing while one of its blocks is inside a modal alert or a
// menu, the run loop goes on in its common modes.
#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>

#include "platform/macos/services.h"

namespace marbelot {
namespace {

class RunningTimer {
 public:
  RunningTimer(double seconds, bool repeats, std::function<void()> work) {
    const auto shared = std::make_shared<const std::function<void()>>(std::move(work));
    timer_ = [NSTimer timerWithTimeInterval:seconds
                                    repeats:repeats
                                      block:^(NSTimer*) {
                                        // The work may drop the timer, and this block with it.
                                        const auto kept = shared;
                                        @autoreleasepool {
                                          (*kept)();
                                        }
                                      }];
    [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
  }
  ~RunningTimer() { [timer_ invalidate]; }
  RunningTimer(const RunningTimer&) = delete;
  RunningTimer& operator=(const RunningTimer&) = delete;

 private:
  NSTimer* timer_;
};

class RunLoopQueue final : public MainQueue {
 public:
  Task after(double seconds, std::function<void()> work) override {
    return Task(std::make_shared<RunningTimer>(seconds, false, std::move(work)));
  }

  Task every(double seconds, std::function<void()> work) override {
    return Task(std::make_shared<RunningTimer>(seconds, true, std::move(work)));
  }

  void post(std::function<void()> work) override {
    CFRunLoopRef loop = CFRunLoopGetMain();
    CFRunLoopPerformBlock(loop, kCFRunLoopCommonModes, ^{
      work();
    });
    CFRunLoopWakeUp(loop);
  }

  void background(std::function<void()> work) override {
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
      work();
    });
  }
};

}  // namespace

std::unique_ptr<MainQueue> makeMainQueue() { return std::make_unique<RunLoopQueue>(); }

}  // namespace marbelot
