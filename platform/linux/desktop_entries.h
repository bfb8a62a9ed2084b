// What the desktop's menu of programs says of them.
#pragma once

#include <string>

namespace marbelot {

struct DesktopEntry {
  std::string name;  // in the user's language
  std::string icon;  // a name in the icon theme or a path; may be empty
};

// Of the program whose windows are of that class: its entry has the class for a file name. Without
// one the class itself is the name. Reads files.
DesktopEntry entryOfClass(const std::string& windowClass);

}  // namespace marbelot
