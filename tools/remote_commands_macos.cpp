// macOS has no session bus: there, the menu bar is the way to the running program.

#include "tools/arguments.h"

namespace marbelot::ctl {

int runRemoteCommand(Arguments&, bool& known) {
  known = false;
  return wrongUsage;
}

}  // namespace marbelot::ctl
