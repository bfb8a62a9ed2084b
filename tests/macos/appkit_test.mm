// What the macOS backend makes of AppKit, beside what every backend promises.
#import <AppKit/AppKit.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"
#include "tests/macos/replaced_method.h"
#include "tests/platform/conformance.h"

namespace marbelot {
namespace {

class AppKitTest : public testing::Test {
 protected:
  bool wait(const std::function<bool()>& done) { return desktop->wait(done); }

  std::unique_ptr<TestDesktop> desktop = desktops().at("AppKit")();
  Platform& platform = desktop->platform();
};

TEST_F(AppKitTest, AWriteThatThePasteboardRefusesIsNone) {
  BOOL (^const refuses)(id, id, id) = ^BOOL(id, id, id) {
    return NO;
  };
  {
    const ReplacedMethod refused([NSPasteboard class], @selector(setData:forType:), refuses);
    EXPECT_FALSE(platform.pasteboard.write(share("text")));
  }
  EXPECT_TRUE(platform.pasteboard.write(share("text")));
}

TEST_F(AppKitTest, APdfBesideATextIsNoImage) {
  NSPasteboard* const pasteboard = NSPasteboard.generalPasteboard;
  const std::int64_t before = platform.pasteboard.changeCount();
  [pasteboard declareTypes:@[ NSPasteboardTypeString, NSPasteboardTypePDF ] owner:nil];
  [pasteboard setString:@"a cell" forType:NSPasteboardTypeString];
  __block int drawn = 0;
  NSImage* (^const draws)(id, id) = ^NSImage*(id, id) {
    ++drawn;
    return nil;
  };
  const ReplacedMethod counted([NSImage class], @selector(initWithData:), draws);
  [pasteboard setData:[@"%PDF-1.4" dataUsingEncoding:NSUTF8StringEncoding]
              forType:NSPasteboardTypePDF];
  EXPECT_GT(platform.pasteboard.changeCount(), before);
  EXPECT_EQ(*platform.pasteboard.contents().text, "a cell");
  EXPECT_FALSE(platform.pasteboard.contents().image);
  EXPECT_EQ(drawn, 0);
}

TEST_F(AppKitTest, TheSystemsPreferencesHoldNoLargeText) {
  const std::filesystem::path folder = supportFolder() + "/Texts";
  const auto files = [&folder] {
    std::vector<std::filesystem::path> found;
    if (!std::filesystem::exists(folder)) return found;
    for (const auto& file : std::filesystem::directory_iterator(folder)) found.push_back(file);
    return found;
  };
  const std::string large(100'000, 'x');
  platform.defaults.set("large", Value::List{large, "small"});
  NSData* const stored = [NSPropertyListSerialization
      dataWithPropertyList:[NSUserDefaults.standardUserDefaults objectForKey:@"large"]
                    format:NSPropertyListXMLFormat_v1_0
                   options:0
                     error:nil];
  EXPECT_LT(stored.length, 1000U);
  ASSERT_EQ(files().size(), 1U);
  struct stat status {};
  ASSERT_EQ(stat(files()[0].c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  EXPECT_EQ(*platform.defaults.textListFor("large").at(0), large);
  platform.defaults.set("large", Value::List{"small"});
  EXPECT_TRUE(wait([&] { return files().empty(); }));
}

TEST_F(AppKitTest, ANoticeCentreIsLeftWithoutADelegateThatIsGone) {
  NSUserNotificationCenter* const center = NSUserNotificationCenter.defaultUserNotificationCenter;
  id<NSUserNotificationCenterDelegate> const former = center.delegate;
  makeNotices();
  EXPECT_EQ(center.delegate, nil);
  center.delegate = former;
  const auto first = makeNotices();
  auto second = makeNotices();
  id<NSUserNotificationCenterDelegate> const present = center.delegate;
  makeNotices().swap(second);
  EXPECT_NE(center.delegate, present);
  EXPECT_NE(center.delegate, nil) << "not taken from the one that is in use";
  center.delegate = former;
}

TEST_F(AppKitTest, ALargeTextIsMadeReadyWhileTheWindowGoesOn) {
  WindowDescription described;
  described.id = "large";
  described.contentSize = {200, 100};
  described.views = {{"text", {0, 0, 200, 100}, {}, TextArea{.editable = true}}};
  const auto window = platform.windows.create(described);
  std::string large;
  while (large.size() <= (1 << 20)) large += "der Größe nach\n";
  const SharedText text = share(large);
  __block int onMain = 0, elsewhere = 0;
  // Every conversion of what is not ASCII ends in it.
  using Init = id (*)(id, SEL, const unichar*, NSUInteger);
  static Init made;
  const SEL name = @selector(initWithCharacters:length:);
  made = reinterpret_cast<Init>(class_getMethodImplementation([[NSString alloc] class], name));
  id (^const noted)(id, const unichar*, NSUInteger) =
      ^id(id self, const unichar* units, NSUInteger length) {
        if (length > 900'000) ++(NSThread.isMainThread ? onMain : elsewhere);
        return made(self, @selector(initWithCharacters:length:), units, length);
      };
  const ReplacedMethod watched([[NSString alloc] class], name, noted);
  window->setText("text", text);
  EXPECT_EQ(window->text("text"), text) << "the very text, at once";
  ASSERT_TRUE(platform.pasteboard.write(text));
  EXPECT_EQ(platform.pasteboard.contents().text, text);
  bool shown = false;
  EXPECT_TRUE(wait([&] {
    for (NSWindow* each in NSApp.windows) {
      if (![each.identifier isEqualToString:@"large"]) continue;
      NSScrollView* const scroll = [[each.contentView subviews] firstObject];
      shown = [[scroll.documentView string] length] > 900'000;
    }
    return shown;
  }));
  EXPECT_EQ(onMain, 0);
  EXPECT_EQ(elsewhere, 1);
}

}  // namespace
}  // namespace marbelot
