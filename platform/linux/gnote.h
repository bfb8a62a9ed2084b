// Notes in Gnote, over the session bus.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/value.h"

namespace marbelot {

// Makes a new note of the text, named by its first line, and shows it; the bus starts Gnote where
// it does not run. Tells what went wrong, in a word for the user (empty: nobody knows); none when
// the note is there. The session bus is connected.
void addGnote(const SharedText& text,
              const std::function<void(const std::optional<std::string>& problem)>& done);

}  // namespace marbelot
