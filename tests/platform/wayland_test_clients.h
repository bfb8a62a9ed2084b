// A private Wayland desktop, and other programs on it: one that copies, with bad manners when
// asked, and one that pastes.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temporary_home.h"

namespace marbelot {

// The desktops to test on: the protocols' fake ones, or "present" when the environment says that
// the test runs on a real one (MARBELOT_TEST_DESKTOP).
std::vector<std::string> waylandDesktops();

class PrivateCompositor {
 public:
  explicit PrivateCompositor(const std::string& desktop);
  ~PrivateCompositor();
  PrivateCompositor(const PrivateCompositor&) = delete;
  PrivateCompositor& operator=(const PrivateCompositor&) = delete;

  // Empty for that of the environment.
  const std::string& display() const { return display_; }
  void kill();

 private:
  TemporaryHome home_;
  std::string display_;
  pid_t process_ = -1;
};

// Owns the clipboard from its construction until it is destroyed or replaced. Writes as a careless
// program does: it waits until what it writes is taken, and would die of a pipe that is closed.
class WaylandTestOwner {
 public:
  struct Manners {
    std::set<std::string> ignored;      // never written, until resume()
    std::size_t stallAfter = SIZE_MAX;  // bytes of each type, until resume()
  };
  using Data = std::map<std::string, std::string>;

  WaylandTestOwner(std::string display, Data data, Manners manners);
  WaylandTestOwner(std::string display, Data data)
      : WaylandTestOwner(std::move(display), std::move(data), Manners()) {}
  ~WaylandTestOwner();

  // Returns when somebody has asked for something; what is answered at all has been answered then.
  // False when nobody does within 20 seconds.
  bool awaitReader() const { return await(asked_); }
  // Returns when another one owns the clipboard; false when none does within 20 seconds.
  bool awaitSuccessor() const { return await(replaced_); }
  void resume();
  // Bytes, of all types.
  std::size_t written() const { return written_; }

 private:
  static bool await(const std::atomic<bool>& flag);
  void run(const std::string& display);

  const Data data_;
  const Manners manners_;
  std::atomic<bool> ready_ = false;
  std::atomic<bool> asked_ = false;
  std::atomic<bool> replaced_ = false;
  std::atomic<std::size_t> written_ = 0;
  int resume_;
  int quit_;
  std::thread thread_;
};

// What a paste of `type` gives; none when it is not offered or takes over 20 seconds.
std::optional<std::string> pasteFromWayland(const std::string& display, const std::string& type);

}  // namespace marbelot
