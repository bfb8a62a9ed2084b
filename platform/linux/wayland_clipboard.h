// The clipboard of a Wayland desktop.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/clipboard_thread.h"

namespace marbelot {

// An empty name means the display of the environment. Null when there is none, or when its
// compositor lets no program but the one in front have the clipboard: then it is XWayland's.
// At the end an own write is left to a process of its own, which has it until it is replaced.
std::unique_ptr<ClipboardConnection> connectWaylandClipboard(const std::string& display = {});

}  // namespace marbelot
