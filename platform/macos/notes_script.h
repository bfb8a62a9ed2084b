// The script that makes a note.
#pragma once

#include <string>
#include <string_view>

namespace marbelot {

// For the Notes application; the text's line breaks become the note's, and the text none of the
// script's own.
std::string notesScript(std::string_view text);

}  // namespace marbelot
