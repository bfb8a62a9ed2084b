// The clipboard of an X11 desktop.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/clipboard_thread.h"

namespace marbelot {

// An empty `display` means the one of the environment. Connects at once, and not on the clipboard's
// thread, where it could meet the toolkit's own connecting; never fails, see DesktopPasteboard.
// At the end an own write is given to the desktop's clipboard manager, where there is one.
std::unique_ptr<ClipboardConnection> connectX11Clipboard(const std::string& display = {});

}  // namespace marbelot
