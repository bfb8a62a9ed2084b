// What the desktop's menu of programs says of them.
#pragma once

#include <string>

namespace marbelot {

// The name, in the user's language, of the program whose windows are of that class: from its menu
// entry, which has the class for a file name. The class itself when there is none. Reads files.
std::string applicationName(const std::string& windowClass);

}  // namespace marbelot
