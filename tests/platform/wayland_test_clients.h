// A private Wayland desktop, and other programs on it: one that copies, and one that pastes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/descriptor.h"
#include "tests/platform/other_programs.h"
#include "tests/support/temporary_home.h"

namespace marbelot {

// The desktops to test on: the protocols' fake ones, or "present" when the environment says that
// the test runs on a real one (MARBELOT_TEST_DESKTOP).
std::vector<std::string> waylandDesktops();

class PrivateCompositor {
 public:
  explicit PrivateCompositor(const std::string& desktop);
  // Empty for that of the environment.
  const std::string& display() const { return display_; }
  void signal(int number) const { process_.signal(number); }

 private:
  TemporaryHome home_;
  std::string display_;
  PrivateProcess process_;
};

// Writes as a careless program does: it waits until what it writes is taken, and would die of a
// pipe that is closed.
class WaylandOwner : public TestOwner {
 public:
  WaylandOwner(const std::string& display, Data data, Manners manners);
  WaylandOwner(const std::string& display, Data data)
      : WaylandOwner(display, std::move(data), {}) {}
};

// Asks for `type` of what is on the clipboard, and goes, but for the end from which to read it.
Descriptor askWayland(const std::string& display, const std::string& type);
// What comes of that; none when it takes over 20 seconds.
std::optional<std::string> takePaste(const Descriptor& from);
// What a paste of `type` gives; none when it is not offered or takes over 20 seconds.
std::optional<std::string> pasteFromWayland(const std::string& display, const std::string& type);

}  // namespace marbelot
