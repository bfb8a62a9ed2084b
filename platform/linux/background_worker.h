// Work that takes time, such as that of codecs, on a thread of its own, so that it holds up nobody
// who copies or pastes.
#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/descriptor.h"

namespace marbelot {

// One job after the other, each with a ticket by which its result is known again.
template <class Result>
class BackgroundWorker {
 public:
  // Ends early when the descriptor becomes readable.
  using Job = std::function<Result(int cancel)>;
  using Finished = std::vector<std::pair<std::uint64_t, Result>>;

  // `finished` is called on the worker's thread when take() has something new.
  explicit BackgroundWorker(std::function<void()> finished)
      : shared_(std::make_shared<Shared>(std::move(finished))) {}
  // Cancels a running job. One that does not end – a file on a network that hangs – is left behind.
  ~BackgroundWorker() {
    std::unique_lock lock(shared_->mutex);
    shared_->quit = true;
    ::eventfd_write(shared_->cancel.get(), 1);
    shared_->wake.notify_all();
    if (!thread_.joinable()) return;
    shared_->wake.wait_for(lock, std::chrono::seconds(1), [&] { return shared_->ended; });
    const bool ended = shared_->ended;
    lock.unlock();
    ended ? thread_.join() : thread_.detach();
  }

  void start(std::uint64_t ticket, Job job) {
    const std::lock_guard lock(shared_->mutex);
    shared_->jobs.emplace_back(ticket, std::move(job));
    if (!thread_.joinable()) thread_ = std::thread([shared = shared_] { run(*shared); });
    shared_->wake.notify_all();
  }

  Finished take() {
    const std::lock_guard lock(shared_->mutex);
    return std::exchange(shared_->results, {});
  }

 private:
  struct Shared {
    explicit Shared(std::function<void()> whenFinished)
        : finished(std::move(whenFinished)), cancel(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    const std::function<void()> finished;
    const Descriptor cancel;
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::pair<std::uint64_t, Job>> jobs;
    Finished results;
    bool quit = false;
    bool ended = false;
  };

  static void run(Shared& shared) {
    std::unique_lock lock(shared.mutex);
    for (;;) {
      shared.wake.wait(lock, [&] { return shared.quit || !shared.jobs.empty(); });
      if (shared.quit) break;
      const auto [ticket, job] = std::move(shared.jobs.front());
      shared.jobs.pop_front();
      lock.unlock();
      Result result = job(shared.cancel.get());
      lock.lock();
      if (shared.quit) break;  // whom it would be told to may be gone
      shared.results.emplace_back(ticket, std::move(result));
      shared.finished();
    }
    shared.ended = true;
    shared.wake.notify_all();
  }

  const std::shared_ptr<Shared> shared_;
  std::thread thread_;  // started by the first job
};

}  // namespace marbelot
