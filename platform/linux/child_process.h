// Another program at work for this one, which waits for nothing meanwhile.
#pragma once

#include <sys/types.h>

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"

namespace marbelot {

// Main thread only.
class ChildProcess {
 public:
  struct Result {
    int status = -1;  // the exit status; -1 when a signal ended it
    // Memory files, to be read from the start.
    Descriptor output;
    Descriptor errors;
  };
  // Called once, when it has ended in whatever way; it may destroy the process.
  using Ended = std::function<void(Result)>;

  // Starts `arguments[0]`, which is looked for in PATH, with `input` to read. Null when it cannot
  // be started.
  static std::unique_ptr<ChildProcess> start(std::vector<std::string> arguments, Ended ended,
                                             std::string_view input = {});

  // One that has not ended is killed, and `ended` is not called.
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // At once; `ended` tells when it is gone.
  void kill();

 private:
  ChildProcess(pid_t process, Descriptor handle, Result result, Ended ended);
  int reap() const;

  const pid_t process_;
  const Descriptor handle_;  // readable when the process has ended
  Result result_;
  Ended ended_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

// What is in the memory file; empty when it holds more than `maximumBytes` or cannot be read.
std::string contents(const Descriptor& file, std::size_t maximumBytes);

}  // namespace marbelot
