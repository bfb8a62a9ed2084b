// The system symbols that status items show, drawn here because no icon theme can be relied on.
#pragma once

#include <QIcon>
#include <string>

namespace marbelot {

// Null for a name that is not known.
QIcon symbolIcon(const std::string& name);

}  // namespace marbelot
