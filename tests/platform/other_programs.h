// Other programs on a private desktop: its server, and one that copies, with bad manners when
// asked.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <atomic>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace marbelot {

// A program that ends with the object, also when the test is killed.
class PrivateProcess {
 public:
  PrivateProcess() = default;
  ~PrivateProcess() { kill(); }
  PrivateProcess(const PrivateProcess&) = delete;
  PrivateProcess& operator=(const PrivateProcess&) = delete;

  // Returns the first line that it prints; empty when it cannot be started.
  std::string start(std::vector<std::string> command);
  void signal(int number) const { ::kill(process_, number); }
  void kill();

 private:
  pid_t process_ = -1;
};

// Owns the clipboard from its construction until it is destroyed or replaced.
class TestOwner {
 public:
  using Data = std::map<std::string, std::string>;  // by type
  struct Manners {
    std::set<std::string> ignored = {};  // never given, until resume()
    std::size_t stallAfter = SIZE_MAX;   // bytes of what is given in parts, until resume()
    // On X11 alone:
    std::set<std::string> refused = {};  // offered, but not given
    std::size_t partSize = std::size_t{1} << 18;
    bool slow = false;      // parts of one byte each, at leisure
    bool anything = false;  // gives its first type to whoever asks for another
  };
  // What its thread and the test tell each other.
  struct State {
    Data data;
    Manners manners;
    int resume, quit;  // events
    std::atomic<bool> ready = false, asked = false, replaced = false;
    std::atomic<std::size_t> given = 0;

    // Whether resume() has been called since.
    bool takeResume() const;
    bool isQuit() const;
    void tellReady();
  };

  ~TestOwner();
  TestOwner(const TestOwner&) = delete;
  TestOwner& operator=(const TestOwner&) = delete;

  // Returns when somebody has asked for more than the list of types; what is answered at all has
  // been answered then. False when nobody does within 20 seconds.
  bool awaitReader() const { return await(state_.asked); }
  // Returns when another one owns the clipboard; false when none does within 20 seconds.
  bool awaitSuccessor() const { return await(state_.replaced); }
  // From now on it is neither silent nor slow, and goes on where it had stopped.
  void resume();
  // Bytes that were taken of what is given in parts.
  std::size_t given() const { return state_.given; }

 protected:
  // `serve` runs on a thread until it is quit, and tells when it owns the clipboard.
  TestOwner(Data data, Manners manners, std::function<void(State&)> serve);

 private:
  static bool await(const std::atomic<bool>& flag);

  State state_;
  std::thread thread_;
};

}  // namespace marbelot
