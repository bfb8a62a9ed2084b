// The Finder, the settings and the applications that open things.
#import <AppKit/AppKit.h>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

class SharedWorkspace final : public Workspace {
 public:
  void openPath(const std::string& path) override {
    @autoreleasepool {
      [NSWorkspace.sharedWorkspace openURL:fileUrl(path)];
    }
  }

  void openUrl(const std::string& url) override {
    @autoreleasepool {
      NSURL* opened = [NSURL URLWithString:nsString(url)];
      if (opened != nil) [NSWorkspace.sharedWorkspace openURL:opened];
    }
  }

  // Full disk access is granted to programs, not for folders.
  void openPrivacySettings(const std::string&, std::function<void(const std::string&)>) override {
    openUrl("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFilesAccess");
  }

  void reveal(const std::string& path) override {
    @autoreleasepool {
      [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ fileUrl(path) ]];
    }
  }

  bool trash(const std::string& path) override {
    @autoreleasepool {
      return [NSFileManager.defaultManager trashItemAtURL:fileUrl(path)
                                         resultingItemURL:nil
                                                    error:nil];
    }
  }
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace() { return std::make_unique<SharedWorkspace>(); }

}  // namespace marbelot
