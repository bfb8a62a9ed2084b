// The clipboard of a Wayland desktop.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/clipboard_thread.h"

namespace marbelot {

// An empty name means the display of the environment; `otherwise` is returned when there is none.
// It is also what is served when it turns out that the compositor lets no program but the one in
// front have the clipboard, which is XWayland's then; null for nothing. Until the compositor has
// answered, writes wait.
// At the end an own write is left to a process of its own, which has it until it is replaced.
std::unique_ptr<ClipboardConnection> connectWaylandClipboard(
    const std::string& display, std::unique_ptr<ClipboardConnection> otherwise);

}  // namespace marbelot
