// When the session bus may be used.
#pragma once

#include <functional>
#include <vector>

#include "platform/main_queue.h"

namespace marbelot {

// Connecting waits for as long as the bus leaves it without an answer, so that it is done in the
// background. Until it is done, nobody may ask Qt for the bus on the main thread.
class SessionBus {
 public:
  explicit SessionBus(MainQueue& queue);

  // False as well while it is not known.
  bool connected() const { return connected_; }
  // Calls `work` on the main thread once it is known whether there is a bus; at once when it is
  // known already, and never when the bus does not answer. Callers outlive this.
  void whenKnown(std::function<void()> work);

 private:
  bool known_ = false;
  bool connected_ = false;
  std::vector<std::function<void()>> waiting_;
  Task connecting_;
};

}  // namespace marbelot
