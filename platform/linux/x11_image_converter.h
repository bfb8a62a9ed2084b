// Converts images on a thread of its own, so that a paste in another format holds nobody up.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "platform/image.h"

namespace marbelot {

class X11ImageConverter {
 public:
  struct Result {
    std::uint64_t ticket = 0;
    SharedBytes bytes;  // null when it could not be converted
  };

  // `finished` is called on the converter's thread when take() has something new.
  explicit X11ImageConverter(std::function<void()> finished);
  // Ends a running conversion at once.
  ~X11ImageConverter();

  // `encoding` is one of `encodings`.
  void start(std::uint64_t ticket, Image image, std::string_view encoding);
  std::vector<Result> take();

 private:
  struct Job {
    std::uint64_t ticket;
    Image image;
    std::string_view encoding;
  };
  void run();

  std::function<void()> finished_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> jobs_;
  std::vector<Result> results_;
  bool quit_ = false;
  int cancel_;          // an eventfd, readable once the converter is being destroyed
  std::thread thread_;  // started by the first job
};

}  // namespace marbelot
