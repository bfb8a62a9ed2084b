// A private X server, and other programs on it: one that copies, with bad manners when asked, and
// one that pastes.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

namespace marbelot {

class PrivateServer {
 public:
  // `screen` is its width, height and depth.
  explicit PrivateServer(const char* screen = "320x240x24");
  ~PrivateServer();
  // ":N"; empty when the server could not be started.
  const std::string& display() const { return display_; }
  void kill();

 private:
  pid_t process_ = -1;
  std::string display_;
};

// Owns the clipboard from its construction until it is destroyed or replaced.
class TestOwner {
 public:
  struct Manners {
    std::set<std::string> refused;  // offered, but not given
    std::set<std::string> ignored;  // never answered
    std::size_t partSize = std::size_t{1} << 18;
    std::size_t stallAfter = SIZE_MAX;  // bytes of a transfer in parts
    bool slow = false;                  // parts of one byte each, at leisure
    bool anything = false;              // gives its first type to whoever asks for another
  };
  using Data = std::map<std::string, std::string>;

  TestOwner(std::string display, Data data, Manners manners);
  TestOwner(std::string display, Data data) : TestOwner(std::move(display), std::move(data), {}) {}
  ~TestOwner();

  // Returns when somebody has asked for more than the list of types; what is answered at all has
  // been answered then. False when nobody does within 20 seconds.
  bool awaitReader() const { return await(asked_); }
  // Returns when another one owns the clipboard; false when none does within 20 seconds.
  bool awaitSuccessor() const { return await(replaced_); }
  // From now on it is neither silent nor slow, and goes on where it had stopped.
  void resume();
  // Whether somebody is being sent something in parts, and how many bytes have been sent so.
  bool sending() const { return sending_ > 0; }
  std::size_t sent() const { return sent_; }

 private:
  class Service;
  static bool await(const std::atomic<bool>& flag);
  void run(const std::string& display);

  const Data data_;
  const Manners manners_;
  std::atomic<bool> ready_ = false;
  std::atomic<bool> asked_ = false;
  std::atomic<bool> replaced_ = false;
  std::atomic<std::size_t> sending_ = 0;
  std::atomic<std::size_t> sent_ = 0;
  int resume_;
  int quit_;
  std::thread thread_;
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
