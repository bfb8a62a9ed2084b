// The way into the program on every system.
#pragma once

#include <functional>
#include <memory>

#include "platform/platform.h"

namespace marbelot {

// Makes the platform of this system, calls `launch` once the event loop has started (keeping what
// it returns alive), runs the loop until the application terminates, returns the exit status (0).
int runApplication(int argc, char** argv, std::function<std::shared_ptr<void>(Platform&)> launch);

}  // namespace marbelot
