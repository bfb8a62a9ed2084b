// Which addresses may be asked for and handed to the browser. No state; any thread.
#pragma once

#include <string_view>

namespace marbelot {

// Whether nobody on the way can read or change what comes from there: "https:", or "http:" from
// this very machine. Addresses that programs read differently – with a user's name, blanks, control
// characters or backslashes in them – are not taken.
bool isSecureAddress(std::string_view address);

}  // namespace marbelot
