// How much work code does, whatever else the machine is doing meanwhile.
#pragma once

#include <cstdint>

namespace marbelot {

// Steps taken so far by the rooms that the test links as marbelot_ROOM_counted: stretches of code
// between two branches, and the bytes that the C library looked at to find one for them.
std::uint64_t workDone();

}  // namespace marbelot
