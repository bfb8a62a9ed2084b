// What is on the web, through a process of its own.
#pragma once

#include <string>

#include "updates/fetch.h"

namespace marbelot {

// Runs marbelot-fetch for each address.
Fetch webFetch(MainQueue& queue);

// The version of the running system, as "6.1.0".
std::string systemVersion();

}  // namespace marbelot
