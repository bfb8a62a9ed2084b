// Time and threads. There is one main thread; everything that is not said to be otherwise runs
// there.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <utility>

#include "platform/text.h"

namespace marbelot {

// Work that is still to come. Dropping or cancelling the handle means that it never runs; a closure
// that is given to the queue may therefore use its owner freely while the owner keeps the handle.
class Task {
 public:
  Task() = default;
  explicit Task(std::shared_ptr<void> token) : token_(std::move(token)) {}
  void cancel() { token_.reset(); }
  // Whether it holds work: done or not, but not cancelled.
  explicit operator bool() const { return token_ != nullptr; }

 private:
  std::shared_ptr<void> token_;
};

class MainQueue {
 public:
  virtual ~MainQueue() = default;

  // Runs `work` once, `seconds` from now; 0 means as soon as the present event is done.
  [[nodiscard]] virtual Task after(double seconds, std::function<void()> work) = 0;
  // Runs `work` every `seconds` until the handle is dropped.
  [[nodiscard]] virtual Task every(double seconds, std::function<void()> work) = 0;

  // The wall clock, seconds since 1970.
  virtual double now() const { return text::now(); }

  // From any thread: runs `work` on the main thread.
  virtual void post(std::function<void()> work) = 0;
  // Runs `work` on some other thread.
  virtual void background(std::function<void()> work) = 0;

  // Runs `work` on another thread and hands its result to `then` on the main thread, unless the
  // handle was dropped by then.
  template <class Work, class Then>
  [[nodiscard]] Task inBackground(Work work, Then then) {
    const auto token = std::make_shared<char>();
    background([this, alive = std::weak_ptr<char>(token), work = std::move(work),
                then = std::move(then)]() mutable {
      auto result = std::make_shared<decltype(work())>(work());
      post([alive, result, then = std::move(then)]() mutable {
        if (alive.lock()) then(std::move(*result));
      });
    });
    return Task(token);
  }
};

// Work that goes on side by side, each piece until it is done.
class Tasks {
 public:
  Tasks() = default;
  Tasks(const Tasks&) = delete;
  Tasks& operator=(const Tasks&) = delete;

  // As MainQueue::inBackground.
  template <class Work, class Then>
  void run(MainQueue& queue, Work work, Then then) {
    const auto at = running_.emplace(running_.end());
    const auto done = std::make_shared<std::promise<void>>();
    at->done = done->get_future();
    at->task = queue.inBackground(
        [done, work = std::move(work)]() mutable {
          auto result = work();
          done->set_value();
          return result;
        },
        [this, at, then = std::move(then)](auto&& result) mutable {
          running_.erase(at);
          then(std::forward<decltype(result)>(result));
        });
  }

  // At the end of the program: waits until all is done. Nobody is told then.
  void finish(std::chrono::steady_clock::time_point deadline) {
    for (Running& running : running_) running.done.wait_until(deadline);
    running_.clear();
  }

 private:
  struct Running {
    Task task;
    std::future<void> done;
  };
  std::list<Running> running_;
};

}  // namespace marbelot
