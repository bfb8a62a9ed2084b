// The icons of programs, as their desktop entries name them.
#pragma once

#include <optional>
#include <string>

#include "platform/platform.h"

namespace marbelot {

// The icon with that name in the theme, or at that path, of a menu's size; none when there is no
// such icon. Main thread only. Reads files.
std::optional<Image> themedIcon(const std::string& name);

}  // namespace marbelot
