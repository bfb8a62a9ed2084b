// Who may see the screen of a Wayland desktop.
#pragma once

namespace marbelot {

// Whether the compositor shows the screen to any program, as grim needs it. False as well when
// there is none to be asked. Waits for the compositor: not for the main thread.
bool waylandShowsScreen();

}  // namespace marbelot
