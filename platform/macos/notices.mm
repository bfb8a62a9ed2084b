// User notifications. The newer centre asks the user for leave first and refuses programs that are
// not signed; this one is quiet and enough.
#import <Foundation/Foundation.h>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

#pragma clang diagnostic ignored "-Wdeprecated-declarations"

// Without it notices are kept back while the program's own window is in front.
@interface MarbelotNoticePresenter : NSObject <NSUserNotificationCenterDelegate>
@end

@implementation MarbelotNoticePresenter
- (BOOL)userNotificationCenter:(NSUserNotificationCenter*)center
     shouldPresentNotification:(NSUserNotification*)notification {
  return YES;
}
@end

namespace marbelot {
namespace {

class UserNotices final : public Notices {
 public:
  UserNotices() { NSUserNotificationCenter.defaultUserNotificationCenter.delegate = presenter_; }
  // The centre does not retain its delegate, and outlives it.
  ~UserNotices() override {
    NSUserNotificationCenter* const center = NSUserNotificationCenter.defaultUserNotificationCenter;
    if (center.delegate == presenter_) center.delegate = nil;
  }
  UserNotices(const UserNotices&) = delete;
  UserNotices& operator=(const UserNotices&) = delete;

  void post(const std::string& title, const std::string& text) override {
    @autoreleasepool {
      NSUserNotification* notification = [[NSUserNotification alloc] init];
      notification.title = nsString(title);
      notification.informativeText = nsString(text);
      [NSUserNotificationCenter.defaultUserNotificationCenter deliverNotification:notification];
    }
  }

 private:
  MarbelotNoticePresenter* presenter_ = [[MarbelotNoticePresenter alloc] init];
};

}  // namespace

std::unique_ptr<Notices> makeNotices() { return std::make_unique<UserNotices>(); }

}  // namespace marbelot
