// macOS has no session bus: there, the menu bar is the way to the running program.

#include "tools/command.h"

namespace marbelot::ctl {

CommandGroup remoteCommands() { return {}; }

}  // namespace marbelot::ctl
