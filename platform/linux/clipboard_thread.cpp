#include "platform/linux/clipboard_thread.h"

#include <signal.h>
#include <sys/eventfd.h>

#include <algorithm>

namespace marbelot {
namespace {

// A claim takes less than a millisecond, and whoever pastes right after it gets what we wrote. Of a
// busy server the main thread does not wait for longer than half a frame.
constexpr auto claimWait = std::chrono::milliseconds(8);
constexpr auto endLimit = std::chrono::seconds(5);

}  // namespace

int pollTimeout(ClipboardClock::time_point deadline) {
  if (deadline == ClipboardClock::time_point::max()) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - ClipboardClock::now());
  return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

ClipboardThread::ClipboardThread(std::unique_ptr<ClipboardConnection> connection,
                                 std::function<void()> wakeMain)
    : connection_(std::move(connection)),
      wakeMain_(std::move(wakeMain)),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  // No signal is handled there, and a broken connection must not end the process by SIGPIPE.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  thread_ = std::thread([this] { run(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ClipboardThread::~ClipboardThread() {
  {
    std::unique_lock lock(mutex_);
    quit_ = true;
    wake();
    claim_.wait_for(lock, endLimit, [&] { return ended_; });
  }
  connection_->interrupt();
  thread_.join();
}

void ClipboardThread::run() {
  connection_->serve(*this);
  const std::lock_guard lock(mutex_);
  ended_ = true;
  offer_.reset();
  claim_.notify_all();
}

void ClipboardThread::wake() { ::eventfd_write(wake_.get(), 1); }

bool ClipboardThread::write(ClipboardOffer offer, std::uint64_t number) {
  std::unique_lock lock(mutex_);
  if (ended_) return false;
  offer_ = {std::move(offer), number};
  wake();
  claim_.wait_for(lock, claimWait, [&] { return ended_ || claimed_ >= number; });
  return !ended_;
}

std::vector<ClipboardNews> ClipboardThread::takeNews() {
  const std::lock_guard lock(mutex_);
  return std::exchange(news_, {});
}

ClipboardThread::Commands ClipboardThread::commands() {
  eventfd_t ignored = 0;
  ::eventfd_read(wake_.get(), &ignored);
  const std::lock_guard lock(mutex_);
  return {quit_, std::exchange(offer_, std::nullopt)};
}

bool ClipboardThread::isEnding() {
  eventfd_t ignored = 0;
  ::eventfd_read(wake_.get(), &ignored);
  const std::lock_guard lock(mutex_);
  return quit_ && !offer_;
}

void ClipboardThread::claimed(std::uint64_t number) {
  const std::lock_guard lock(mutex_);
  claimed_ = number;
  claim_.notify_all();
}

void ClipboardThread::tell(PasteboardContents contents, const ClipboardAnnouncement& announcement) {
  bool first = false;
  {
    const std::lock_guard lock(mutex_);
    first = news_.empty();
    news_.push_back({std::move(contents), announcement});
    if (news_.size() > rememberedChanges) news_.erase(news_.begin());
  }
  if (first) wakeMain_();
}

}  // namespace marbelot
