#import <AppKit/AppKit.h>
#include <unistd.h>

#include <cstdio>

#include "platform/backend.h"
#include "tests/platform/conformance.h"

namespace marbelot {
namespace {

Platform* running = nullptr;  // the application's, made once for all cases

class AppKitDesktop : public TestDesktop {
 public:
  Platform& platform() override { return *running; }
  bool wait(const std::function<bool()>& done) override {
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:20];
    while (!done() && limit.timeIntervalSinceNow > 0) {
      @autoreleasepool {
        NSEvent* const event =
            [NSApp nextEventMatchingMask:NSEventMaskAny
                               untilDate:[NSDate dateWithTimeIntervalSinceNow:0.02]
                                  inMode:NSDefaultRunLoopMode
                                 dequeue:YES];
        if (event != nil) [NSApp sendEvent:event];
        [NSApp updateWindows];
      }
    }
    return done();
  }
};

std::unique_ptr<TestDesktop> makeDesktop() { return std::make_unique<AppKitDesktop>(); }

INSTANTIATE_TEST_SUITE_P(AppKit, Conformance, testing::Values(&makeDesktop));

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return marbelot::runApplication(argc, argv,
                                  [](marbelot::Platform& platform) -> std::shared_ptr<void> {
                                    marbelot::running = &platform;
                                    // From the event loop, which must run first.
                                    auto run = std::make_shared<marbelot::Task>();
                                    *run = platform.queue.after(0, [] {
                                      const int status = RUN_ALL_TESTS();
                                      std::fflush(stdout);
                                      _exit(status);
                                    });
                                    return run;
                                  });
}
