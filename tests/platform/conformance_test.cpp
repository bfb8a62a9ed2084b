// What the seam promises, asked of every backend that can run here.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <array>
#include <filesystem>
#include <fstream>

#include "platform/linux/inotify_folder_events.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/user_defaults.h"
#include "platform/linux/x11_pasteboard.h"
#include "platform/memory/memory_platform.h"
#include "tests/platform/x11_test_clients.h"
#include "tests/support/png.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

struct MemoryBackend {
  MemoryBackend() { desktop.pasteboard.announces = true; }
  memory::MemoryPlatform desktop;
  MainQueue& queue = desktop.queue;
  Pasteboard& pasteboard = desktop.pasteboard;
  FolderEvents& folders = desktop.folderEvents;
  UserDefaults& defaults = desktop.defaults;
  // Lets time pass until `done`, as long as a test can be expected to take.
  bool wait(const std::function<bool()>& done) {
    for (int i = 0; i < 100 && !done(); ++i) {
      desktop.folderEvents.fire();
      desktop.queue.advance(0.01);
    }
    return done();
  }
};

struct LinuxBackend {
  LinuxBackend() : clipboard(qtQueue, server.display()) {}
  TemporaryHome home;
  PrivateServer server;
  QtMainQueue qtQueue;
  X11Pasteboard clipboard;
  InotifyFolderEvents inotify;
  JsonDefaults json{home / "settings.json", [](const std::function<void()>& work) { work(); }};
  MainQueue& queue = qtQueue;
  Pasteboard& pasteboard = clipboard;
  FolderEvents& folders = inotify;
  UserDefaults& defaults = json;
  bool wait(const std::function<bool()>& done) {
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < 20000) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return done();
  }
};

template <class Backend>
class Conformance : public testing::Test {
 protected:
  Backend backend;
};
using Backends = testing::Types<MemoryBackend, LinuxBackend>;
TYPED_TEST_SUITE(Conformance, Backends);

TYPED_TEST(Conformance, TimersRunInOrderAndEndWithTheirHandles) {
  std::string order;
  auto& queue = this->backend.queue;
  Task late = queue.after(0.5, [&] { order += 'c'; });
  Task never = queue.after(0.01, [&] { order += 'x'; });
  never.cancel();
  Task soon = queue.after(0, [&] { order += 'a'; });
  Task between = queue.after(0.03, [&] { order += 'b'; });
  int ticks = 0;
  Task ticking;
  ticking = queue.every(0.02, [&] {
    if (++ticks == 5) ticking.cancel();  // by the very work that it runs
  });
  EXPECT_TRUE(this->backend.wait([&] { return ticks == 5 && order.size() == 3; }));
  EXPECT_EQ(order, "abc");
  Task after = queue.after(0.1, [&] { order += 'd'; });
  EXPECT_TRUE(this->backend.wait([&] { return order.size() == 4; }));
  EXPECT_EQ(ticks, 5);
}

TYPED_TEST(Conformance, BackgroundWorkHandsItsResultBackOnlyWhileWanted) {
  int result = 0;
  bool unwanted = false;
  auto& queue = this->backend.queue;
  Task wanted = queue.inBackground([] { return 7; }, [&](int value) { result = value; });
  Task dropped = queue.inBackground([] { return 1; }, [&](int) { unwanted = true; });
  dropped.cancel();
  EXPECT_TRUE(this->backend.wait([&] { return result == 7; }));
  bool later = false;
  queue.post([&] { later = true; });
  EXPECT_TRUE(this->backend.wait([&] { return later; }));
  EXPECT_FALSE(unwanted);
}

TYPED_TEST(Conformance, DefaultsGiveBackWhatWasSet) {
  auto& defaults = this->backend.defaults;
  defaults.registerDefaults({{"registered", true}});
  EXPECT_TRUE(defaults.boolFor("registered"));
  EXPECT_FALSE(defaults.boolFor("absent"));
  defaults.set("registered", false);
  EXPECT_FALSE(defaults.boolFor("registered"));
  defaults.set("list", Value::List{"a", true, "b"});
  const auto listed = defaults.textListFor("list");
  ASSERT_EQ(listed.size(), 2U);
  EXPECT_EQ(*listed[1], "b");
  EXPECT_EQ(defaults.textFor("list"), nullptr);
}

TYPED_TEST(Conformance, RegisteredDefaultsAddUpAndStandInForValuesOfAnotherType) {
  auto& defaults = this->backend.defaults;
  defaults.registerDefaults({{"flag", true}, {"text", "first"}});
  defaults.registerDefaults({{"list", Value::List{"a"}}, {"text", "second"}});
  EXPECT_TRUE(defaults.boolFor("flag"));
  EXPECT_EQ(*defaults.textFor("text"), "second");
  for (const char* key : {"flag", "text", "list", "other"})
    defaults.set(key, Value::Dictionary{{"a", 1}});
  std::vector<std::string> told;
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(defaults.boolFor("flag"));
    EXPECT_EQ(*defaults.textFor("text"), "second");
    EXPECT_EQ(defaults.textListFor("list").size(), 1U);
    EXPECT_TRUE(defaults.value("flag")->asDictionary()) << "and is left as it is";
    defaults.setProblemHandler([&](const std::string& problem) { told.push_back(problem); });
  }
  EXPECT_FALSE(defaults.boolFor("other"));
  ASSERT_EQ(told.size(), 2U) << "those of the start together, a later one when it is found";
  for (const char* key : {"flag", "text", "list"})
    EXPECT_NE(told[0].find(key), std::string::npos) << told[0];
  EXPECT_NE(told[1].find("other"), std::string::npos) << told[1];
  defaults.set("flag", false);
  EXPECT_FALSE(defaults.boolFor("flag"));
  defaults.setProblemHandler({});
}

TYPED_TEST(Conformance, ThePasteboardCountsAndTellsOwnWrites) {
  auto& pasteboard = this->backend.pasteboard;
  const std::int64_t start = pasteboard.changeCount();
  const std::int64_t first = pasteboard.write(share("one")).value();
  const std::int64_t second = pasteboard.write(*Image::fromBytes(png(30))).value();
  EXPECT_LT(start, first);
  EXPECT_LT(first, second);
  EXPECT_EQ(pasteboard.changeCount(), second);
  EXPECT_EQ(pasteboard.contents().image->width(), 30);
  EXPECT_EQ(pasteboard.contents().text, nullptr);
  const auto changes = pasteboard.changesSince(start);
  ASSERT_EQ(changes.size(), 2U);
  EXPECT_EQ(*changes[0].contents.text, "one");
  EXPECT_EQ(changes[1].count, second);
  EXPECT_TRUE(pasteboard.changesSince(second).empty());
}

TYPED_TEST(Conformance, WhatCanNoLongerBeReadReplacesNothing) {
  auto& pasteboard = this->backend.pasteboard;
  const TemporaryHome home;
  writeFile(home / "image.png", *png(30));
  const auto image = Image::fromFile(home / "image.png");
  ASSERT_TRUE(image);
  const std::int64_t kept = pasteboard.write(share("kept")).value();
  writeFile(home / "image.png", *png(31));
  EXPECT_FALSE(pasteboard.write(*image));
  writeFile(home / "image.png", "");
  EXPECT_FALSE(pasteboard.write(*image));
  EXPECT_EQ(pasteboard.changeCount(), kept);
  EXPECT_EQ(*pasteboard.contents().text, "kept");
}

TYPED_TEST(Conformance, OwnWritesAreAnnouncedOnceTheyAreDone) {
  auto& pasteboard = this->backend.pasteboard;
  ASSERT_TRUE(pasteboard.announcesChanges());
  int calls = 0;
  pasteboard.setChangeHandler([&] { ++calls; });
  const std::int64_t start = pasteboard.changeCount();
  const std::int64_t written = pasteboard.write(share("one")).value();
  EXPECT_EQ(calls, 0) << "whoever wrote may want to note the count first";
  EXPECT_TRUE(this->backend.wait([&] { return calls > 0; }));
  ASSERT_EQ(pasteboard.changesSince(start).size(), 1U);
  EXPECT_EQ(pasteboard.changeCount(), written);
  pasteboard.setChangeHandler({});
}

TYPED_TEST(Conformance, FolderEventsLastAsLongAsTheirStream) {
  const TemporaryHome home;
  int calls = 0;
  auto stream = this->backend.folders.watch(home.path(), [&] { ++calls; });
  ASSERT_TRUE(stream);
  writeFile(home / "file.png", "x");
  EXPECT_TRUE(this->backend.wait([&] { return calls > 0; }));
  stream.reset();
  calls = 0;
  writeFile(home / "other.png", "x");
  Task pause;
  bool passed = false;
  pause = this->backend.queue.after(0.1, [&] { passed = true; });
  this->backend.wait([&] { return passed; });
  EXPECT_EQ(calls, 0);
}

// What only a real file system can show.
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
