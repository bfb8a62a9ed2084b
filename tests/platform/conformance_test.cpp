// What the seam promises, asked of every backend that can run here.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>

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
  memory::MemoryPlatform desktop;
  MainQueue& queue = desktop.queue;
  Pasteboard& pasteboard = desktop.pasteboard;
  FolderEvents& folders = desktop.folderEvents;
  UserDefaults& defaults = desktop.defaults;
  // Lets time pass until `done`, a second at most.
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
    while (!done() && clock.elapsed() < 1000) {
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
  Task late = queue.after(0.06, [&] { order += 'c'; });
  Task never = queue.after(0.01, [&] { order += 'x'; });
  never.cancel();
  Task soon = queue.after(0, [&] { order += 'a'; });
  int ticks = 0;
  Task ticking;
  ticking = queue.every(0.02, [&] {
    if (++ticks == 2) order += 'b';
    if (ticks == 5) ticking.cancel();  // by the very work that it runs
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

TYPED_TEST(Conformance, ThePasteboardCountsAndTellsOwnWrites) {
  auto& pasteboard = this->backend.pasteboard;
  const std::int64_t start = pasteboard.changeCount();
  const std::int64_t first = pasteboard.write(share("one"));
  const std::int64_t second = pasteboard.write(*Image::fromBytes(png(30)));
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

TEST(FolderEvents, SurviveAnOverflowOfTheQueue) {
  LinuxBackend backend;
  int calls = 0;
  const auto stream = backend.folders.watch(backend.home.path(), [&] { ++calls; });
  // More events than the kernel keeps (/proc/sys/fs/inotify/max_queued_events, 16384 at first).
  for (int i = 0; i < 12000; ++i) writeFile(backend.home / std::to_string(i), "");
  EXPECT_TRUE(backend.wait([&] { return calls > 0; }));
  bool passed = false;
  const Task pause = backend.queue.after(0.1, [&] { passed = true; });
  backend.wait([&] { return passed; });
  calls = 0;
  writeFile(backend.home / "after.png", "x");
  EXPECT_TRUE(backend.wait([&] { return calls > 0; }));
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
