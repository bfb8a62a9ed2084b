// A main queue that runs only while the test pumps it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/main_queue.h"

namespace marbelot {

class TestQueue final : public MainQueue {
 public:
  Task after(double, std::function<void()>) override { return {}; }
  Task every(double, std::function<void()>) override { return {}; }
  void post(std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(work));
    wake_.notify_one();
  }
  void background(std::function<void()> work) override { std::thread(std::move(work)).detach(); }

  // Runs what is posted until `done` holds; false when that takes longer than the limit.
  bool pumpUntil(const std::function<bool()>& done,
                 std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
      if (done()) return true;
      std::unique_lock lock(mutex_);
      if (!wake_.wait_until(lock, deadline, [this] { return !posted_.empty(); })) {
        lock.unlock();
        return done();
      }
      const auto work = std::exchange(posted_, {});
      lock.unlock();
      for (const auto& each : work) each();
    }
  }
  // Waits until something is posted, and runs nothing; false when that takes over 20 seconds.
  bool awaitPost() {
    std::unique_lock lock(mutex_);
    return wake_.wait_for(lock, std::chrono::seconds(20), [this] { return !posted_.empty(); });
  }
  void pumpFor(std::chrono::milliseconds time) {
    pumpUntil([] { return false; }, time);
  }

 private:
  std::mutex mutex_;
  std::condition_variable wake_;
  std::vector<std::function<void()>> posted_;
};

}  // namespace marbelot
