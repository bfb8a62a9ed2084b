// The one door into a system's backend.
#pragma once

#include <functional>
#include <memory>

#include "platform/platform.h"

namespace marbelot {

// Makes the platform of this system, calls `launch` once the event loop has started (keeping what
// it returns alive), runs the loop until the application terminates, and returns the exit status.
int runApplication(int argc, char** argv, std::function<std::shared_ptr<void>(Platform&)> launch);

}  // namespace marbelot
