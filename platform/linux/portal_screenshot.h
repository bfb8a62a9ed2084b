// A picture of the screen by the desktop's portal, where the compositor shows it to nobody else.
#pragma once

#include <functional>
#include <string>

#include "platform/linux/portal_request.h"

namespace marbelot {

// One request. Main thread only; there is a session bus.
class PortalScreenshot {
 public:
  struct Answer {
    std::string file;     // made for us; empty when there is no picture
    std::string problem;  // one line for the user when there is something to do about it
  };

  // `interactive`: the desktop lets the user choose what to take. `answered` is called once, not
  // before this returns, and may destroy the request. One that is not answered yet is withdrawn at
  // the end.
  PortalScreenshot(bool interactive, std::function<void(const Answer&)> answered);

 private:
  PortalRequest request_;
};

}  // namespace marbelot
