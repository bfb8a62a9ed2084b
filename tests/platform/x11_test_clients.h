// A private X server, and other programs on it: one that copies, and one that pastes.
#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "tests/platform/other_programs.h"

namespace marbelot {

class PrivateServer {
 public:
  // `screen` is its width, height and depth.
  explicit PrivateServer(const std::string& screen = "320x240x24");
  // ":N"; empty when the server could not be started.
  const std::string& display() const { return display_; }
  void signal(int number) const { process_.signal(number); }

 private:
  PrivateProcess process_;
  std::string display_;
};

class X11Owner : public TestOwner {
 public:
  X11Owner(const std::string& display, Data data, Manners manners);
  X11Owner(const std::string& display, Data data) : X11Owner(display, std::move(data), {}) {}
};

// A desktop's clipboard manager: when a program leaves, it fetches the types named to it.
class TestManager {
 public:
  // One that is `deaf` never answers.
  explicit TestManager(std::string display, bool deaf = false);
  ~TestManager();
  // What it was asked to keep, by type; empty before.
  std::map<std::string, std::string> kept();

 private:
  void run(bool deaf);

  const std::string display_;
  std::atomic<bool> ready_ = false;
  std::mutex mutex_;
  std::map<std::string, std::string> kept_;
  int quit_;
  std::thread thread_;
};

// What a paste of `type` gives; none when it is refused or takes over 20 seconds. A requestor that
// vanishes does so after the first part.
std::optional<std::string> paste(const std::string& display, const std::string& type,
                                 bool vanish = false);

}  // namespace marbelot
