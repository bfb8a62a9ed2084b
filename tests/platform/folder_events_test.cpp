// What only a real file system can show of inotify.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <QCoreApplication>
#include <array>
#include <filesystem>
#include <fstream>

#include "platform/linux/inotify_folder_events.h"
#include "platform/linux/qt_main_queue.h"
#include "tests/platform/qt_wait.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

struct LinuxBackend {
  TemporaryHome home;
  QtMainQueue queue;
  InotifyFolderEvents folders;
  bool wait(const std::function<bool()>& done) { return waitWithQt(done); }
};

TEST(FolderEvents, FindsAFolderThatComesGoesAndComesAgain) {
  LinuxBackend backend;
  const std::string folder = backend.home / "not/yet/there";
  int calls = 0;
  const auto stream = backend.folders.watch(folder, [&] { ++calls; });
  for (int round = 0; round < 3; ++round) {
    calls = 0;
    std::filesystem::create_directories(folder);
    EXPECT_TRUE(backend.wait([&] { return calls > 0; }));
    calls = 0;
    writeFile(folder + "/file.png", "x");
    EXPECT_TRUE(backend.wait([&] { return calls > 0; })) << round;
    if (round == 1) {
      std::filesystem::rename(folder, backend.home / "moved");
      std::filesystem::remove_all(backend.home / "moved");
    } else {
      std::filesystem::remove_all(backend.home / "not");
    }
    bool passed = false;
    const Task pause = backend.queue.after(0.05, [&] { passed = true; });
    backend.wait([&] { return passed; });
  }
}

class FolderEventsTest : public testing::Test {
 protected:
  void watch(const std::string& folder) {
    folder_ = folder;
    stream_ = backend_.folders.watch(folder, [this] { ++calls_; });
  }
  void settle() {
    bool passed = false;
    const Task pause = backend_.queue.after(0.05, [&] { passed = true; });
    backend_.wait([&] { return passed; });
  }
  // Whether a change of the folder, and a new file in it after that, are told.
  void expectTold(const std::string& what, const std::function<void()>& change) {
    settle();
    calls_ = 0;
    change();
    EXPECT_TRUE(backend_.wait([&] { return calls_ > 0; })) << what;
    settle();
    calls_ = 0;
    writeFile(folder_ + "/" + what + ".png", "x");
    EXPECT_TRUE(backend_.wait([&] { return calls_ > 0; })) << "a file after: " << what;
  }

  LinuxBackend backend_;
  std::string folder_;
  int calls_ = 0;
  std::unique_ptr<FolderStream> stream_;
};

TEST_F(FolderEventsTest, FollowThePathToAnotherFolder) {
  const auto& home = backend_.home;
  namespace fs = std::filesystem;
  fs::create_directories(home / "disk/a/b/Shots");
  fs::create_directories(home / "disk/two/Shots");
  fs::create_symlink("disk/a", home / "link");
  watch(home / "link/b/Shots");
  expectTold("folder above moved", [&] {
    fs::rename(home / "disk/a/b", home / "disk/old");
    fs::create_directories(home / "disk/a/b/Shots");
  });
  expectTold("link pointed elsewhere at once", [&] {
    fs::create_directories(home / "disk/c/b/Shots");
    fs::create_symlink("disk/c", home / "new link");
    fs::rename(home / "new link", home / "link");
  });
  expectTold("link removed and made again", [&] {
    fs::remove(home / "link");
    settle();
    fs::create_directory_symlink(home / "disk/a", home / "link");
  });
  expectTold("target of the link moved", [&] {
    fs::rename(home / "disk/a", home / "disk/away");
    settle();
    fs::create_directories(home / "disk/a/b/Shots");
  });
  // What goes on beside the folder wakes nobody.
  settle();
  calls_ = 0;
  writeFile(home / "disk/a/b/beside.png", "x");
  writeFile(home / "beside.png", "x");
  settle();
  EXPECT_EQ(calls_, 0);
}

TEST_F(FolderEventsTest, FollowMounts) {
  if (geteuid() != 0 || unshare(CLONE_NEWNS) != 0 ||
      mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
    GTEST_SKIP() << "only root can mount";
  const std::string disk = backend_.home / "disk";
  std::filesystem::create_directories(disk + "/Shots");
  watch(disk + "/Shots");
  expectTold("mounted", [&] {
    ASSERT_EQ(mount("tmpfs", disk.c_str(), "tmpfs", 0, nullptr), 0);
    std::filesystem::create_directory(disk + "/Shots");
  });
  expectTold("unmounted", [&] { ASSERT_EQ(umount2(disk.c_str(), MNT_DETACH), 0); });
}

TEST_F(FolderEventsTest, FindWhatAFullQueueDidNotTell) {
  int most = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
  if (most > 20000) GTEST_SKIP() << "the queue holds " << most << " events";
  const auto fill = [most](const std::string& folder) {
    // To and fro: the kernel puts only events together that are alike.
    const std::array<std::string, 2> names = {folder + "/to", folder + "/fro"};
    writeFile(names[0], "");
    for (unsigned i = 0; i <= static_cast<unsigned>(most); ++i)
      std::filesystem::rename(names[i % 2], names[(i + 1) % 2]);
  };
  const std::string disk = backend_.home / "disk";
  watch(disk + "/Shots");
  expectTold("made while the queue was full", [&] {
    fill(backend_.home.path());
    writeFile(disk + "/Shots/first.png", "x");
  });
  expectTold("replaced while the queue was full", [&] {
    fill(disk + "/Shots");
    std::filesystem::rename(disk, backend_.home / "old");
    writeFile(disk + "/Shots/first.png", "x");
  });
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
