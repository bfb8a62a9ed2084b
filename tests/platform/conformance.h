// What the seam promises is asked of every backend that can run here, by the same cases: each
// backend has a file that puts it on a desktop of its own and instantiates the suite.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "platform/platform.h"

namespace marbelot {

// A desktop with the backend on it.
class TestDesktop {
 public:
  virtual ~TestDesktop() = default;
  virtual Platform& platform() = 0;
  // Lets time pass until `done`, as long as a test can be expected to take; tells what `done` says.
  virtual bool wait(const std::function<bool()>& done) = 0;
};

using DesktopMaker = std::unique_ptr<TestDesktop> (*)();

class Conformance : public testing::TestWithParam<DesktopMaker> {
 protected:
  std::unique_ptr<TestDesktop> desktop = GetParam()();
  Platform& platform = desktop->platform();

  bool wait(const std::function<bool()>& done) { return desktop->wait(done); }
  // Lets what was going to happen happen.
  void settle(double seconds = 0.1) {
    bool passed = false;
    const Task pause = platform.queue.after(seconds, [&] { passed = true; });
    EXPECT_TRUE(wait([&] { return passed; }));
  }
};

}  // namespace marbelot
