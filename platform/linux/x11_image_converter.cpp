#include "platform/linux/x11_image_converter.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/linux/imaging.h"

namespace marbelot {

X11ImageConverter::X11ImageConverter(std::function<void()> finished)
    : finished_(std::move(finished)), cancel_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

X11ImageConverter::~X11ImageConverter() {
  {
    const std::lock_guard lock(mutex_);
    quit_ = true;
  }
  ::eventfd_write(cancel_, 1);
  wake_.notify_one();
  if (thread_.joinable()) thread_.join();
  ::close(cancel_);
}

void X11ImageConverter::start(std::uint64_t ticket, Image image, std::string_view encoding) {
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back({ticket, std::move(image), encoding});
  }
  if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
  wake_.notify_one();
}

std::vector<X11ImageConverter::Result> X11ImageConverter::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(results_, {});
}

void X11ImageConverter::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return quit_ || !jobs_.empty(); });
    if (quit_) return;
    const Job job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    SharedBytes bytes = convertedBytes(job.image, job.encoding, cancel_);
    lock.lock();
    results_.push_back({job.ticket, std::move(bytes)});
    lock.unlock();
    finished_();
    lock.lock();
  }
}

}  // namespace marbelot
