// The system's screenshot tool, and the programs and windows that the window server knows.
#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>
#include <unistd.h>

#include <memory>
#include <utility>
#include <vector>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

constexpr int iconSide = 32;  // pixels: twice a menu's points

// Tools that were told to end and may still have their selection on the screen, and the captures
// that wait for them to be gone.
struct EndingTools {
  int count = 0;
  std::vector<std::function<void()>> waiting;
};

void end(NSTask* task, const std::shared_ptr<EndingTools>& ending) {
  ++ending->count;
  const std::shared_ptr<EndingTools> held = ending;
  __block id observer = [NSNotificationCenter.defaultCenter
      addObserverForName:NSTaskDidTerminateNotification
                  object:task
                   queue:nil
              usingBlock:^(NSNotification*) {
                [NSNotificationCenter.defaultCenter removeObserver:observer];
                observer = nil;
                if (--held->count > 0) return;
                const auto waiting = std::exchange(held->waiting, {});
                for (const auto& start : waiting) start();
              }];
  [task terminate];
}

// The tool at work. Dropped while it runs, it is ended and tells nobody.
class RunningTool {
 public:
  RunningTool(NSArray<NSString*>* arguments, std::shared_ptr<EndingTools> ending,
              std::function<void()> ended)
      : ending_(std::move(ending)) {
    task_ = [[NSTask alloc] init];
    task_.launchPath = @"/usr/sbin/screencapture";
    task_.arguments = arguments;
    const auto told = std::make_shared<const std::function<void()>>(std::move(ended));
    // It may end before this returns; that is heard of later all the same.
    observer_ =
        [NSNotificationCenter.defaultCenter addObserverForName:NSTaskDidTerminateNotification
                                                        object:task_
                                                         queue:nil
                                                    usingBlock:^(NSNotification*) {
                                                      // Whoever is told may drop the tool, and this
                                                      // block with it.
                                                      const auto kept = told;
                                                      (*kept)();
                                                    }];
  }
  ~RunningTool() {
    [NSNotificationCenter.defaultCenter removeObserver:observer_];
    if (started_ && task_.isRunning) end(task_, ending_);
  }
  RunningTool(const RunningTool&) = delete;
  RunningTool& operator=(const RunningTool&) = delete;

  bool start() {
    @try {
      [task_ launch];
      started_ = true;
    } @catch (NSException*) {
      return false;
    }
    return true;
  }

 private:
  const std::shared_ptr<EndingTools> ending_;
  NSTask* task_;
  id observer_;
  bool started_ = false;
};

// Without the user's leave a picture shows the desktop and none of its windows, or there is none.
// Asks for it; the system itself puts the question only once.
std::string problemOfLeave() {
  if (CGPreflightScreenCaptureAccess()) return {};
  CGRequestScreenCaptureAccess();
  return "Windows can't be captured: allow Marbelot under Privacy & Security, Screen Recording, "
         "and reopen it";
}

// Drawn at the size that menus need: an application's icon is large.
std::optional<Image> smallIcon(NSImage* icon) {
  auto bitmap = Bitmap::makeClear(iconSide, iconSide);
  NSRect rect = NSMakeRect(0, 0, iconSide, iconSide);
  CGImageRef const picture = [icon CGImageForProposedRect:&rect context:nil hints:nil];
  if (!bitmap || picture == nullptr) return std::nullopt;
  CGColorSpaceRef const colors = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
  CGContextRef const context =
      CGBitmapContextCreate(bitmap->data(), iconSide, iconSide, 8, bitmap->bytesPerRow(), colors,
                            kCGImageAlphaPremultipliedLast);
  CGColorSpaceRelease(colors);
  if (context == nullptr) return std::nullopt;
  CGContextDrawImage(context, NSMakeRect(0, 0, iconSide, iconSide), picture);
  CGContextRelease(context);
  return Image::fromPixels(std::make_shared<const Bitmap>(*std::move(bitmap)));
}

class SystemScreenCapture final : public ScreenCapture {
 public:
  explicit SystemScreenCapture(MainQueue& queue) : queue_(queue) {}

  Task capture(const std::vector<std::string>& arguments, const std::string& path,
               std::function<void()> /*taken: the tool does not tell*/,
               std::function<void(const std::string&)> finished) override {
    @autoreleasepool {
      NSMutableArray<NSString*>* const words = [NSMutableArray array];
      for (const std::string& argument : arguments) [words addObject:nsString(argument)];
      [words addObject:nsPath(path)];
      const auto tool =
          std::make_shared<RunningTool>(words, ending_, [finished] { finished(problemOfLeave()); });
      if (ending_->count > 0) {
        ending_->waiting.emplace_back([waiting = std::weak_ptr(tool), finished] {
          const auto still = waiting.lock();
          if (still && !still->start()) finished("");
        });
        return Task(tool);
      }
      if (tool->start()) return Task(tool);
    }
    return queue_.after(0, [finished = std::move(finished)] { finished(""); });
  }

  std::vector<RunningApplication> runningApplications() override {
    std::vector<RunningApplication> applications;
    @autoreleasepool {
      for (NSRunningApplication* other in NSWorkspace.sharedWorkspace.runningApplications) {
        if (other.activationPolicy != NSApplicationActivationPolicyRegular ||
            other.processIdentifier == getpid())
          continue;
        NSString* const name = other.localizedName;
        applications.push_back({other.processIdentifier, name != nil ? utf8(name) : std::string(),
                                smallIcon(other.icon)});
      }
    }
    return applications;
  }

  void activate(std::int64_t pid) override {
    @autoreleasepool {
      NSRunningApplication* const other =
          [NSRunningApplication runningApplicationWithProcessIdentifier:static_cast<pid_t>(pid)];
      if (other == nil) return;
      // Newer systems let nobody come before the active program to which it does not give way.
      if (@available(macOS 14, *)) {
        if (NSApp.isActive) {
          [NSApp yieldActivationToApplication:other];
          [other activateFromApplication:NSRunningApplication.currentApplication
                                 options:NSApplicationActivateAllWindows];
          return;
        }
      }
      [other activateWithOptions:NSApplicationActivateAllWindows];
    }
  }

  std::optional<std::int64_t> frontWindow(std::int64_t pid) override {
    @autoreleasepool {
      NSArray<NSDictionary*>* const windows =
          (__bridge_transfer NSArray<NSDictionary*>*)CGWindowListCopyWindowInfo(
              kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements,
              kCGNullWindowID);
      // From the front to the back.
      for (NSDictionary* window in windows) {
        const auto number = [&](CFStringRef key) -> std::optional<std::int64_t> {
          NSNumber* const value = window[(__bridge NSString*)key];
          if (![value isKindOfClass:[NSNumber class]]) return std::nullopt;
          return [value longLongValue];
        };
        if (number(kCGWindowOwnerPID) == pid && number(kCGWindowLayer) == 0)
          return number(kCGWindowNumber);
      }
    }
    return std::nullopt;
  }

 private:
  MainQueue& queue_;
  const std::shared_ptr<EndingTools> ending_ = std::make_shared<EndingTools>();
};

}  // namespace

std::unique_ptr<ScreenCapture> makeScreenCapture(MainQueue& queue) {
  return std::make_unique<SystemScreenCapture>(queue);
}

}  // namespace marbelot
