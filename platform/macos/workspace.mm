// The Finder, the settings and the applications that open things.
#import <AppKit/AppKit.h>

#include <mutex>

#include "platform/macos/conversions.h"
#include "platform/macos/drawn_image.h"
#include "platform/macos/notes_script.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

constexpr int iconPoints = 16;
constexpr int iconPixels = 2 * iconPoints;  // for a Retina display

std::optional<Image> iconOf(NSString* path) {
  NSImage* const icon = [NSWorkspace.sharedWorkspace iconForFile:path];
  icon.size = NSMakeSize(iconPixels, iconPixels);
  return drawnImage(icon);
}

// The name as the Finder shows it.
std::string nameOf(NSURL* bundle) {
  NSString* name = [NSFileManager.defaultManager displayNameAtPath:bundle.path];
  if ([name hasSuffix:@".app"]) name = name.stringByDeletingPathExtension;
  return utf8(name);
}

// Each name once, and this program never.
void addApplication(std::vector<LinkApplication>& to, NSURL* bundle, bool isDefault) {
  if ([bundle.path.stringByStandardizingPath
          isEqualToString:NSBundle.mainBundle.bundlePath.stringByStandardizingPath])
    return;
  const std::string name = nameOf(bundle);
  if (name == "Marbelot") return;
  for (const LinkApplication& known : to)
    if (known.name == name) return;
  to.push_back({bundle.path.fileSystemRepresentation, name, iconOf(bundle.path), isDefault});
}

// None when it was carried out, else the system's message, which may be empty. From any thread.
std::optional<std::string> problemOf(const std::string& script) {
  static std::mutex one;  // at a time: the system's scripts know nothing of threads
  const std::lock_guard lock(one);
  @autoreleasepool {
    NSDictionary* error = nil;
    NSAppleScript* const made = [[NSAppleScript alloc] initWithSource:nsString(script)];
    if ([made executeAndReturnError:&error] != nil) return std::nullopt;
    NSString* const message = error[NSAppleScriptErrorMessage];
    return message != nil ? utf8(message) : std::string();
  }
}

class SharedWorkspace final : public Workspace {
 public:
  explicit SharedWorkspace(MainQueue& queue) : queue_(queue) {}

  void openPath(const std::string& path) override {
    @autoreleasepool {
      [NSWorkspace.sharedWorkspace openURL:fileUrl(path)];
    }
  }

  using Workspace::openUrl;
  void openUrl(const std::string& url, const std::string& application) override {
    @autoreleasepool {
      NSURL* opened = [NSURL URLWithString:nsString(url)];
      if (opened == nil) return;
      if (application.empty()) {
        [NSWorkspace.sharedWorkspace openURL:opened];
      } else {
        [NSWorkspace.sharedWorkspace openURLs:@[ opened ]
                         withApplicationAtURL:fileUrl(application)
                                configuration:[NSWorkspaceOpenConfiguration configuration]
                            completionHandler:nil];
      }
    }
  }

  void findApplications(const std::string& url,
                        std::function<void(std::vector<LinkApplication>)> found) override {
    std::vector<LinkApplication> all;
    @autoreleasepool {
      NSURL* link = [NSURL URLWithString:nsString(url)];
      if (link != nil) {
        NSWorkspace* const workspace = NSWorkspace.sharedWorkspace;
        NSURL* const standard = [workspace URLForApplicationToOpenURL:link];
        if (standard != nil) addApplication(all, standard, true);
        for (NSURL* bundle in [workspace URLsForApplicationsToOpenURL:link])
          addApplication(all, bundle, false);
      }
    }
    found(std::move(all));
  }

  // Full disk access is granted to programs, not for folders.
  void openPrivacySettings(const std::string&, std::function<void(const std::string&)>) override {
    openUrl("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFilesAccess");
  }

  // Off the main thread: Notes takes its time to start, and the user is asked for leave at first.
  void addNote(const SharedText& text,
               std::function<void(const std::optional<std::string>&)> done) override {
    MainQueue& queue = queue_;
    queue_.background([&queue, text, done = std::move(done)] {
      queue.post([done, problem = problemOf(notesScript(*text))] { done(problem); });
    });
  }

  void reveal(const std::string& path) override {
    @autoreleasepool {
      [NSWorkspace.sharedWorkspace activateFileViewerSelectingURLs:@[ fileUrl(path) ]];
    }
  }

  Task trash(std::vector<std::string> paths, std::function<void()> done) override {
    return queue_.inBackground(
        [paths = std::move(paths)] {
          @autoreleasepool {
            bool all = true;
            for (const std::string& path : paths)
              all = [NSFileManager.defaultManager trashItemAtURL:fileUrl(path)
                                                resultingItemURL:nil
                                                           error:nil] &&
                    all;
            return all;
          }
        },
        [done = std::move(done)](bool) { done(); });
  }

 private:
  MainQueue& queue_;
};

}  // namespace

std::unique_ptr<Workspace> makeWorkspace(MainQueue& queue) {
  return std::make_unique<SharedWorkspace>(queue);
}

}  // namespace marbelot
