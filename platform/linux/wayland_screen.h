// Who may see the screen of a Wayland desktop.
#pragma once

#include <optional>

namespace marbelot {

// Whether the compositor shows the screen to any program, as grim needs it. False as well when
// there is none to be asked, and none when it does not answer. Waits for the compositor: not for
// the main thread.
std::optional<bool> waylandShowsScreen();

}  // namespace marbelot
