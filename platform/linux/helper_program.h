// Starting the programs that work for this one.
#pragma once

#include <sys/types.h>

#include <array>
#include <string>
#include <vector>

namespace marbelot {

// Where a program of ours is: beside this one, in the libexec folder of its installation, or
// wherever PATH finds it.
std::string helperPath(const std::string& name);

struct ProgramStart {
  static constexpr int nowhere = -1;  // reads nothing, and what is written is dropped

  std::vector<std::string> arguments;  // the first is looked for in PATH, unless it is a path
  // Its standard input, output and error output.
  std::array<int, 3> standard{0, 1, 2};
  std::string variable = {};      // "NAME=value", beside our environment or instead of ours
  bool outlivesTerminal = false;  // that we were started from
};

// The process, in which no signal is blocked and SIGPIPE ends it; -1 when it cannot be started.
pid_t startProgram(ProgramStart start);

}  // namespace marbelot
