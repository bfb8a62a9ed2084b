// Keys seen on their way to windows.
#import <AppKit/AppKit.h>

#import "platform/macos/canvas.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

// Ends the monitor with the handle. Null when the system refuses one.
Task taskOf(id monitor) {
  if (monitor == nil) return {};
  return Task(std::shared_ptr<void>(new char, [monitor](void* memory) {
    delete static_cast<char*>(memory);
    [NSEvent removeMonitor:monitor];
  }));
}

class EventMonitors final : public KeyMonitors {
 public:
  Task addLocal(std::function<bool(const KeyEvent&)> pressed) override {
    return taskOf([NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                        handler:^NSEvent*(NSEvent* event) {
                                                          return pressed(keyEvent(event)) ? nil
                                                                                          : event;
                                                        }]);
  }
  // Nothing comes before the user has trusted the program with the keys.
  Task addGlobal(std::function<void(const KeyEvent&)> pressed) override {
    return taskOf([NSEvent addGlobalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                         handler:^(NSEvent* event) {
                                                           pressed(keyEvent(event));
                                                         }]);
  }
};

}  // namespace

std::unique_ptr<KeyMonitors> makeKeyMonitors() { return std::make_unique<EventMonitors>(); }

}  // namespace marbelot
