// What becomes of a folder that the kernel refuses to watch, under its own limits.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>

#include "platform/linux/inotify_folder_events.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

// Those of a user namespace of the test's own; main() knows.
bool hasOwnLimits = false;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

class RefusedWatchesTest : public testing::Test {
 protected:
  ~RefusedWatchesTest() override { setFiles(files_.rlim_cur); }

  void watch() {
    stream_ = events_.watch(folder_, [this] { ++calls_; });
    ASSERT_TRUE(stream_);
  }
  bool wait(const std::function<bool()>& done) {
    QElapsedTimer clock;
    clock.start();
    while (!done() && clock.elapsed() < 20000)
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return done();
  }
  void expectLooks() {
    EXPECT_TRUE(stream_->isRefused());
    calls_ = 0;
    EXPECT_TRUE(wait([&] { return calls_ > 0; })) << "though nothing happens";
  }
  void expectEventsAgain() {
    calls_ = 0;
    EXPECT_TRUE(wait([&] { return !stream_->isRefused(); }));
    EXPECT_EQ(calls_, 1) << "for what happened meanwhile";
    writeFile(folder_ + "/new.png", "x");
    QCoreApplication::processEvents();
    EXPECT_GT(calls_, 1) << "at once";
  }
  static void limit(const char* name, int most) {
    std::ofstream(std::string("/proc/sys/user/max_inotify_") + name) << most << std::flush;
  }
  void setFiles(rlim_t most) const {
    const rlimit changed{most, files_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &changed);
  }
  static rlimit filesLimit() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return limit;
  }

  const rlimit files_ = filesLimit();
  TemporaryHome home_;
  const std::string folder_ = home_.path();
  InotifyFolderEvents events_;
  int calls_ = 0;
  std::unique_ptr<FolderStream> stream_;
};

TEST_F(RefusedWatchesTest, NoFileLeftForTheProcess) {
  const int next = dup(0);
  close(next);
  setFiles(static_cast<rlim_t>(next));
  watch();
  expectLooks();
  setFiles(files_.rlim_cur);
  expectEventsAgain();
}

TEST_F(RefusedWatchesTest, NoInstanceLeftForTheUser) {
  if (!hasOwnLimits) GTEST_SKIP() << "limits cannot be set here";
  limit("instances", 0);
  watch();
  expectLooks();
  limit("instances", 10);
  expectEventsAgain();
}

TEST_F(RefusedWatchesTest, NoWatchLeftForTheUser) {
  if (!hasOwnLimits) GTEST_SKIP() << "limits cannot be set here";
  limit("watches", 0);
  watch();
  expectLooks();
  limit("watches", 100);
  expectEventsAgain();

  // While it is being watched, others take the rest: the folder moves, and cannot be found again.
  limit("watches", 0);
  std::filesystem::rename(folder_, folder_ + ".old");
  EXPECT_TRUE(wait([&] { return stream_->isRefused(); }));
  std::filesystem::rename(folder_ + ".old", folder_);
  expectLooks();
  limit("watches", 100);
  expectEventsAgain();
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  // Before there are threads. The limits of the machine stay as they are.
  marbelot::hasOwnLimits =
      unshare(CLONE_NEWUSER) == 0 && std::ofstream("/proc/sys/user/max_inotify_watches").is_open();
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
