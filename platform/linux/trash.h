// The trash that file managers show and empty, as freedesktop.org describes it. No state; any
// thread, and not the main one: a file may have to be copied to another disk.
#pragma once

#include <string>

namespace marbelot {

// Moves the file (a link itself, not what it leads to) into the trash of its own file system, or
// else into the one in the home folder. False when it stays where it is; it is never lost.
bool moveToTrash(const std::string& given);

}  // namespace marbelot
