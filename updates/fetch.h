// What is on the web, however it is got.
#pragma once

#include <functional>
#include <string>

#include "platform/main_queue.h"
#include "platform/value.h"

namespace marbelot {

struct Fetched {
  SharedBytes bytes;    // null when it could not be had
  std::string problem;  // why, in a few words
};
// Gets what is at a secure address, within bounds of size and time, in the background. Nothing is
// called once the handle is dropped.
using Fetch = std::function<Task(const std::string& address, std::function<void(Fetched)> fetched)>;

}  // namespace marbelot
