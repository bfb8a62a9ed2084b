// Time and threads. There is one main thread; everything that is not said to be otherwise runs
// there.
#pragma once

#include <functional>
#include <memory>
#include <utility>

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

}  // namespace marbelot
