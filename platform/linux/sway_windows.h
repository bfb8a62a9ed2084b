// The windows of all programs on a sway desktop, native and X11's, as sway tells of them: i3's
// protocol, sway-ipc(7). Each question is one to the compositor on this machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace marbelot {

struct SwayWindow {
  std::int64_t id = 0;
  std::int64_t pid = 0;
  std::string application;  // as its menu entry's file is named, or the class of X11's windows
  bool isShown = false;     // on the screen, though perhaps covered
  // In points of the layout, y down, without the title bar: "X,Y WxH", as slurp and grim take it.
  std::string place;
};

bool isSway();

// The one that had the focus last comes first; none when sway does not answer.
std::vector<SwayWindow> swayWindows();

// Gives one of the program's windows the focus, and shows its workspace.
void focusSwayWindows(std::int64_t pid);

}  // namespace marbelot
