// The update framework that the bundle may hold. It is not linked: a build without it runs as well.
#import <AppKit/AppKit.h>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

// What is used of the framework, by its documented interface.
@protocol MarbelotSparkleUpdater <NSObject>
@property BOOL automaticallyChecksForUpdates;
@property NSTimeInterval updateCheckInterval;
- (void)checkForUpdates;
- (void)checkForUpdatesInBackground;
@end

@protocol MarbelotSparkleController <NSObject>
- (instancetype)initWithStartingUpdater:(BOOL)starting
                        updaterDelegate:(id)updaterDelegate
                     userDriverDelegate:(id)userDriverDelegate;
@property(readonly) id<MarbelotSparkleUpdater> updater;
@end

namespace marbelot {
namespace {

class SparkleUpdater final : public Updater {
 public:
  explicit SparkleUpdater(id<MarbelotSparkleController> controller) : controller_(controller) {}

  void checkForUpdates() override { [controller_.updater checkForUpdates]; }
  void checkForUpdatesInBackground() override { [controller_.updater checkForUpdatesInBackground]; }
  void setAutomaticallyChecksForUpdates(bool checks) override {
    controller_.updater.automaticallyChecksForUpdates = checks;
  }
  void setUpdateCheckInterval(double seconds) override {
    controller_.updater.updateCheckInterval = seconds;
  }

 private:
  id<MarbelotSparkleController> controller_;
};

// Where there is no framework, or no feed to give it.
class NoUpdater final : public Updater {
 public:
  explicit NoUpdater(Dialogs& dialogs) : dialogs_(dialogs) {}

  void checkForUpdates() override {
    Alert alert;
    alert.id = "update";
    alert.message = "Couldn’t check for updates";
    alert.informative =
        "This Marbelot was built without an address to ask for newer versions. It is kept up to "
        "date by whatever installed it.";
    alert.buttons = {"OK"};
    dialogs_.present(std::move(alert), [](const AlertAnswer&) {});
  }
  void checkForUpdatesInBackground() override {}
  void setAutomaticallyChecksForUpdates(bool) override {}
  void setUpdateCheckInterval(double) override {}

 private:
  Dialogs& dialogs_;
};

// Null when it is not there.
id<MarbelotSparkleController> startedController() {
  NSBundle* const program = NSBundle.mainBundle;
  NSString* const feed = [program objectForInfoDictionaryKey:@"SUFeedURL"];
  if (feed.length == 0) return nil;
  NSString* const path =
      [program.privateFrameworksPath stringByAppendingPathComponent:@"Sparkle.framework"];
  if (![[NSBundle bundleWithPath:path] load]) return nil;
  const Class controller = NSClassFromString(@"SPUStandardUpdaterController");
  if (controller == nil) return nil;
  return [(id<MarbelotSparkleController>)[controller alloc] initWithStartingUpdater:YES
                                                                    updaterDelegate:nil
                                                                 userDriverDelegate:nil];
}

class BundleUpdates final : public Updates {
 public:
  explicit BundleUpdates(Dialogs& dialogs) : dialogs_(dialogs) {}

  std::unique_ptr<Updater> startUpdater() override {
    @autoreleasepool {
      id<MarbelotSparkleController> const controller = startedController();
      if (controller == nil) return std::make_unique<NoUpdater>(dialogs_);
      return std::make_unique<SparkleUpdater>(controller);
    }
  }

 private:
  Dialogs& dialogs_;
};

}  // namespace

std::unique_ptr<Updates> makeUpdates(Dialogs& dialogs) {
  return std::make_unique<BundleUpdates>(dialogs);
}

}  // namespace marbelot
