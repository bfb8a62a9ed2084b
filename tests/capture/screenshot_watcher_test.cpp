// The watcher over real files, with a clock that the test moves.

#include "capture/screenshot_watcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "platform/memory/memory_platform.h"
#include "tests/support/png.h"
#include "tests/support/screenshot_mark.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

class ScreenshotWatcherTest : public testing::Test {
 protected:
  ScreenshotWatcherTest() { std::filesystem::create_directory(folder_); }

  // What is in the folder by now is surely older, whatever the ticks of file times are.
  void start() {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    watcher_ = std::make_unique<ScreenshotWatcher>(
        desktop_.platform, folder_, [this](const std::string& name) { copied_.push_back(name); },
        [this] { return text::now() + clockIsOff_; });
    watcher_->start();
  }
  void startAndList() {
    start();
    desktop_.queue.drain();
  }
  std::string save(const std::string& name, const std::string& bytes = *png(640)) {
    writeFile(folder_ + "/" + name, bytes);
    return folder_ + "/" + name;
  }
  void event() {
    desktop_.folderEvents.fire();
    desktop_.queue.drain();
  }
  int clipboardWidth() {
    const auto image = desktop_.pasteboard.contents().image;
    return image ? image->width() : 0;
  }

  TemporaryHome home_;
  const std::string folder_ = home_ / "Shots";
  memory::MemoryPlatform desktop_;
  std::vector<std::string> copied_;
  double clockIsOff_ = 0;  // seconds
  std::unique_ptr<ScreenshotWatcher> watcher_;
};

using Names = std::vector<std::string>;

TEST_F(ScreenshotWatcherTest, CopiesNewScreenshotsOnceAndOldOnesNever) {
  const std::string before = save("Screenshot before.png");
  start();
  event();  // before the folder has been listed: waits for the list
  EXPECT_EQ(copied_, Names{});
  const std::string path = save("Screenshot 1.png");
  std::filesystem::last_write_time(before, std::filesystem::file_time_type::clock::now());
  event();
  event();
  EXPECT_EQ(copied_, Names{"Screenshot 1.png"});
  EXPECT_EQ(*desktop_.pasteboard.contents().image->bytes(), readFile(path));
  // Under another name it is another file.
  std::filesystem::rename(path, folder_ + "/Screenshot 2.png");
  event();
  EXPECT_EQ(copied_.back(), "Screenshot 2.png");
}

TEST_F(ScreenshotWatcherTest, AcceptsFiveExtensionsInAnyCase) {
  startAndList();
  for (const char* name :
       {"Screenshot.PNG", "Screenshot.jpg", "Screenshot.jpeg", "Screenshot.tiff", "Screenshot.heic",
        "Screenshot.gif", "Screenshot", "Screenshot.png.part"})
    save(name);
  event();
  std::sort(copied_.begin(), copied_.end());
  EXPECT_EQ(copied_, (Names{"Screenshot.PNG", "Screenshot.heic", "Screenshot.jpeg",
                            "Screenshot.jpg", "Screenshot.tiff"}));
}

TEST_F(ScreenshotWatcherTest, LeavesTheNewestOfABatchOnTheClipboard) {
  startAndList();
  for (int i = 0; i < 20; ++i) {
    // Older ones under later names, in whatever order the folder lists them.
    const std::string path =
        save("Screenshot " + std::to_string(i) + ".png", *png(static_cast<unsigned>(100 + i)));
    const auto age = std::chrono::seconds(i);
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - age);
  }
  event();
  EXPECT_EQ(copied_.size(), 20U);
  EXPECT_EQ(copied_.back(), "Screenshot 0.png");
  EXPECT_EQ(clipboardWidth(), 100);
}

TEST_F(ScreenshotWatcherTest, WaitsForTheMarkForThirtyOneTries) {
  startAndList();
  const std::string path = save("picture.png", *png(100));
  event();
  desktop_.queue.advance(1.47);
  EXPECT_EQ(copied_, Names{});
  markScreenshot(path);
  desktop_.queue.advance(0.05);
  EXPECT_EQ(copied_, Names{"picture.png"});

  const std::string late = save("late.png");
  event();
  desktop_.queue.advance(1.51);
  markScreenshot(late);
  desktop_.queue.advance(1);
  event();
  EXPECT_EQ(copied_, Names{"picture.png"}) << "a file is dropped for good after the last try";
}

TEST_F(ScreenshotWatcherTest, ReadsNoFileThatIsBeingWritten) {
  startAndList();
  const std::string whole = *png(320, 5000);
  const std::string path = folder_ + "/Screenshot slow.png";
  const int writer = open(path.c_str(), O_WRONLY | O_CREAT, 0600);
  for (std::size_t half = 0; half < 2; ++half) {
    const std::size_t size = whole.size() / 2;
    ASSERT_EQ(write(writer, whole.data() + half * size, size), static_cast<ssize_t>(size));
    event();
    desktop_.queue.advance(4);  // longer than all tries for a file that nobody writes
    EXPECT_EQ(clipboardWidth(), 0);
  }
  ASSERT_EQ(write(writer, whole.data() + whole.size() / 2 * 2, whole.size() % 2),
            static_cast<ssize_t>(whole.size() % 2));
  close(writer);
  event();  // its closing: no need to wait for the next try
  EXPECT_EQ(clipboardWidth(), 320);
}

// The kernel announces a file's closing before it stops counting the writer.
TEST_F(ScreenshotWatcherTest, NoticesThatAFileIsDoneAlsoAfterItsClosingWasAnnounced) {
  startAndList();
  const std::string path = save("Screenshot.png", *png(320));
  const int writer = open(path.c_str(), O_WRONLY);
  event();
  desktop_.queue.advance(10);
  event();
  EXPECT_EQ(copied_, Names{});
  close(writer);
  desktop_.queue.advance(0.05);
  EXPECT_EQ(copied_, Names{"Screenshot.png"});
}

TEST_F(ScreenshotWatcherTest, LeavesTheDesktopASecondToTakeAwayWhatItSavedForUs) {
  start();
  desktop_.queue.drain();
  watcher_->isCapturing = [] { return true; };
  const int writer = open(save("Screenshot.png").c_str(), O_WRONLY);
  event();
  desktop_.queue.advance(1.5);
  close(writer);
  event();
  desktop_.queue.advance(0.9);
  EXPECT_EQ(copied_, Names{});
  desktop_.queue.advance(0.2);
  EXPECT_EQ(copied_, Names{"Screenshot.png"});
}

TEST_F(ScreenshotWatcherTest, CopiesWhatIsSavedBeforeTheFolderHasBeenListed) {
  save("Screenshot before.png");
  start();
  save("Screenshot after.png");  // of which no event may have told
  desktop_.queue.drain();
  EXPECT_EQ(copied_, Names{"Screenshot after.png"});
}

TEST_F(ScreenshotWatcherTest, TellsOfNoScreenshotThatTheClipboardDoesNotTake) {
  startAndList();
  desktop_.pasteboard.refuses = true;
  save("Screenshot lost.png");
  event();
  desktop_.pasteboard.refuses = false;
  save("Screenshot taken.png");
  event();
  EXPECT_EQ(copied_, Names{"Screenshot taken.png"});
}

TEST_F(ScreenshotWatcherTest, CopiesNothingThatIsDatedAfterTheMomentOfLooking) {
  save("Screenshot before.png");
  clockIsOff_ = -3600;  // it has not been set yet, as after a start without a battery
  startAndList();
  clockIsOff_ = 0;
  event();
  EXPECT_EQ(copied_, Names{});
  save("Screenshot after.png");
  event();
  EXPECT_EQ(copied_, Names{"Screenshot after.png"});

  // A folder of a server that is ahead, mounted late.
  std::filesystem::rename(folder_, home_ / "server");
  event();
  writeFile(home_ / "server/Screenshot 2.png", *png(640));
  std::filesystem::last_write_time(
      home_ / "server/Screenshot 2.png",
      std::filesystem::file_time_type::clock::now() + std::chrono::seconds(5));
  std::filesystem::rename(home_ / "server", folder_);
  event();
  EXPECT_EQ(copied_.size(), 1U);
}

TEST_F(ScreenshotWatcherTest, TheClockMayBeSetBetweenStartAndListing) {
  for (const double step : {-7200.0, 7200.0}) {
    clockIsOff_ = step;
    save("Screenshot before.png");
    copied_.clear();
    start();
    const std::string name = "Screenshot while starting " + std::to_string(step) + ".png";
    save(name);
    clockIsOff_ = 0;
    desktop_.queue.drain();
    EXPECT_EQ(copied_, Names{name});
  }
}

TEST_F(ScreenshotWatcherTest, SkipsWhatCannotBeReadAndGoesOn) {
  startAndList();
  std::string claims = *png(60000);
  claims.replace(20, 4, std::string("\0\0\xEA\x60", 4));  // the height, 60000 too
  save("Screenshot empty.png", "");
  save("Screenshot huge.png", claims);
  save("Screenshot half.png", png(10, 3000)->substr(0, 2000));
  save("Screenshot \xff\xfe.png");
  std::filesystem::create_directory(folder_ + "/Screenshot folder.png");
  std::filesystem::create_symlink("Screenshot loop.png", folder_ + "/Screenshot loop.png");
  std::filesystem::create_symlink("gone.png", folder_ + "/Screenshot dangling.png");
  mkfifo((folder_ + "/Screenshot pipe.png").c_str(), 0600);
  event();
  desktop_.queue.advance(3);
  EXPECT_EQ(copied_, Names{"Screenshot \xff\xfe.png"});
  save("Screenshot good.png");
  event();
  EXPECT_EQ(copied_.size(), 2U);
}

TEST_F(ScreenshotWatcherTest, LetsAnUnreadableFileAndARefusedStreamPass) {
  startAndList();
  ASSERT_EQ(chmod(folder_.c_str(), 0755), 0);
  ASSERT_EQ(chmod(home_.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(save("Screenshot locked.png").c_str(), 0), 0);
  const bool root = geteuid() == 0;  // who may read everything
  ASSERT_TRUE(!root || seteuid(65534) == 0);
  event();
  desktop_.queue.advance(3);
  ASSERT_TRUE(!root || seteuid(0) == 0);
  EXPECT_EQ(copied_, Names{});
  save("Screenshot open.png");
  event();
  EXPECT_EQ(copied_, Names{"Screenshot open.png"});

  desktop_.folderEvents.refuses = true;
  start();
  save("Screenshot unseen.png");
  event();
  EXPECT_EQ(copied_.size(), 1U);
}

TEST_F(ScreenshotWatcherTest, MarksOfOtherToolsCount) {
  startAndList();
  std::string titled = *png(50);
  const std::string text = "tEXtSoftware";
  titled.insert(
      33, std::string("\0\0\0\x19", 4) + text + std::string(1, '\0') + "gnome-screenshot" + "crc!");
  save("untold.png", titled);
  save("2026-11-21-100000_1920x1080_scrot.png");
  save("Bildschirmfoto vom 2026-11-21 10-00-00.png");
  save("2026-11-21_10-00.png");
  save("holiday.png");
  event();
  desktop_.queue.advance(3);
  std::sort(copied_.begin(), copied_.end());
  EXPECT_EQ(copied_, (Names{"2026-11-21-100000_1920x1080_scrot.png", "2026-11-21_10-00.png",
                            "Bildschirmfoto vom 2026-11-21 10-00-00.png", "untold.png"}));
}

TEST_F(ScreenshotWatcherTest, CopiesNothingThatAFolderBringsAlong) {
  const auto olderFolder = [this](const std::string& name) {
    std::filesystem::create_directory(home_ / name);
    for (const char* file : {"1", "2", "3"}) {
      const std::string path = home_ / name + "/Screenshot " + name + file + ".png";
      writeFile(path, *png(10));
      std::filesystem::last_write_time(
          path, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    }
  };
  olderFolder("late");
  olderFolder("other");
  std::filesystem::remove(folder_);
  startAndList();
  std::filesystem::rename(home_ / "late", folder_);
  event();
  EXPECT_EQ(copied_, Names{}) << "of a folder that is mounted late";
  save("Screenshot new.png");
  event();
  EXPECT_EQ(copied_, Names{"Screenshot new.png"});

  std::filesystem::rename(folder_, home_ / "late");
  event();
  std::filesystem::rename(home_ / "late", folder_);
  event();
  EXPECT_EQ(copied_.size(), 1U) << "of a folder that was away";

  std::filesystem::rename(folder_, home_ / "late");
  std::filesystem::rename(home_ / "other", folder_);
  event();
  EXPECT_EQ(copied_.size(), 1U) << "of a folder in the place of another";
  save("Screenshot newer.png");
  event();
  EXPECT_EQ(copied_.back(), "Screenshot newer.png");
  EXPECT_EQ(copied_.size(), 2U);
}

TEST_F(ScreenshotWatcherTest, OutlivesItsFolderAndEndsQuietly) {
  startAndList();
  std::filesystem::remove_all(folder_);
  event();
  std::filesystem::create_directory(folder_);
  save("Screenshot again.png");
  event();
  EXPECT_EQ(copied_, Names{"Screenshot again.png"});
  save("unmarked.png");
  event();
  watcher_.reset();  // a try is still to come
  desktop_.queue.advance(3);
  event();
  EXPECT_EQ(copied_.size(), 1U);
}

}  // namespace
}  // namespace marbelot
